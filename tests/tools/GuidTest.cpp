// guid: text, C initialiser and kit literal both ways; the fault in a bad text; new GUIDs.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "ToolRun.h"

namespace {

const char kText[] = "{6DADD843-BCD7-4107-B9E9-72342D738784}";

nlohmann::json Guid(const std::string& input, int status) {
  int exit = -1;
  const std::string out = RunTool("--json guid '" + input + "'", &exit);
  EXPECT_EQ(exit, status) << input;
  return nlohmann::json::parse(out);
}

TEST(Guid, FormsConvertBothWays) {
  for (const char* input : {kText, "{6dadd843-bcd7-4107-b9e9-72342d738784}",
                            "{0x6DADD843, 0xBCD7, 0x4107, {0xB9, 0xE9, 0x72, 0x34, 0x2D, 0x73, "
                            "0x87, 0x84}}"}) {
    const nlohmann::json forms = Guid(input, 0)["guid"];
    EXPECT_EQ(forms["text"], kText);
    EXPECT_EQ(forms["kit_literal"], std::string("ZELSysTSGuid(\"") + kText + "\")");
    EXPECT_EQ(Guid(forms["c_initializer"], 0)["guid"]["text"], kText);
  }
}

TEST(Guid, BadTextGetsTheCharacterAtFault) {
  const nlohmann::json lenient = Guid("{6DADD843-BCD7-4107-B9E9-72342D73878G}", 1);
  EXPECT_EQ(lenient["guid"]["text"], "{6DADD843-BCD7-4107-B9E9-72342D738780}");
  const nlohmann::json& problem = lenient["problems"][0];
  EXPECT_TRUE(problem["character"] == 37 &&
              problem["message"].dump().find("hexadecimal digit") != std::string::npos)
      << lenient;
  const nlohmann::json rejected = Guid("(6DADD843-BCD7-4107-B9E9-72342D738784}", 2);
  EXPECT_TRUE(rejected["guid"].is_null() && rejected["problems"][0]["character"] == 1);
}

TEST(Guid, NewGuidsAreDistinctVersion4) {
  int exit = -1;
  const nlohmann::json made = nlohmann::json::parse(RunTool("--json guid --new 2", &exit))["guids"];
  ASSERT_EQ(made.size(), 2u);
  EXPECT_NE(made[0]["text"], made[1]["text"]);
  for (const auto& guid : made) {
    const std::string text = guid["text"];
    EXPECT_TRUE(text[15] == '4' && std::string("89AB").find(text[20]) != std::string::npos);
    EXPECT_EQ(Guid(text, 0)["guid"]["text"], text);
  }
}

}  // namespace
