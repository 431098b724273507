// The GUID text form: length and braces are checked, the rest is read by position.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "ZELSysTSConvertStringToGUID.h"

namespace {

const _GUID kBaseUnknown = {
    0x6DADD843, 0xBCD7, 0x4107, {0xB9, 0xE9, 0x72, 0x34, 0x2D, 0x73, 0x87, 0x84}};
const char kBaseUnknownText[] = "{6DADD843-BCD7-4107-B9E9-72342D738784}";

_GUID Sentinel() {
  _GUID g;
  std::memset(&g, 0xA5, sizeof g);
  return g;
}

TEST(GuidText, UpperLowerAndMixedCaseGiveTheSameGuid) {
  for (const char* text : {kBaseUnknownText, "{6dadd843-bcd7-4107-b9e9-72342d738784}",
                           "{6dAdD843-bCd7-4107-B9e9-72342D738784}"}) {
    _GUID g = Sentinel();
    EXPECT_EQ(0, ZELSysTSConvertStringToGUID(text, g)) << text;
    EXPECT_EQ(kBaseUnknown, g) << text;
  }
}

TEST(GuidText, FieldsLandInMemoryOrder) {
  _GUID g = Sentinel();
  ASSERT_EQ(0, ZELSysTSConvertStringToGUID("{00000000-0000-0000-C000-000000000046}", g));
  const unsigned char expected[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46};
  EXPECT_EQ(0, std::memcmp(expected, &g, 16));

  ASSERT_EQ(0, ZELSysTSConvertStringToGUID("{01234567-89ab-cdef-0123-456789abcdef}", g));
  EXPECT_EQ(0x01234567u, g.Data1);
  EXPECT_EQ(0x89ABu, g.Data2);
  EXPECT_EQ(0xCDEFu, g.Data3);
  const uint8_t data4[8] = {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF};
  EXPECT_EQ(0, std::memcmp(data4, g.Data4, 8));
}

TEST(GuidText, SeparatorPositionsAreNeverExamined) {
  for (const char* text : {"{6DADD843_BCD7_4107_B9E9_72342D738784}",
                           "{6DADD843}BCD7{4107\x01"
                           "B9E9\xFF"
                           "72342D738784}",
                           "{6DADD843GBCD7 4107zB9E9-72342D738784}"}) {
    _GUID g = Sentinel();
    EXPECT_EQ(0, ZELSysTSConvertStringToGUID(text, g)) << text;
    EXPECT_EQ(kBaseUnknown, g) << text;
  }
}

TEST(GuidText, NonDigitsAtDigitPositionsCountAsZero) {
  _GUID g = Sentinel();
  // 'G', '?', a byte above 127 and a blank, in four different fields.
  ASSERT_EQ(0, ZELSysTSConvertStringToGUID("{6DADD84G-BC?7-4107-B9E9-7234 D73878\xC3}", g));
  EXPECT_EQ(0x6DADD840u, g.Data1);
  EXPECT_EQ(0xBC07u, g.Data2);
  EXPECT_EQ(0x4107u, g.Data3);
  const uint8_t data4[8] = {0xB9, 0xE9, 0x72, 0x34, 0x0D, 0x73, 0x87, 0x80};
  EXPECT_EQ(0, std::memcmp(data4, g.Data4, 8));

  ASSERT_EQ(0, ZELSysTSConvertStringToGUID("{zzzzzzzz-zzzz-zzzz-zzzz-zzzzzzzzzzzz}", g));
  EXPECT_EQ(_GUID{}, g);
}

TEST(GuidText, RejectionLeavesTheGuidUntouched) {
  const std::string good = kBaseUnknownText;
  const std::string rejected[] = {
      good.substr(1, 36),  // no braces
      good + " ",          // 39 characters
      good + "\r",
      good.substr(0, 37),        // 37 characters
      "(" + good.substr(1),      // wrong opening
      good.substr(0, 37) + ")",  // wrong closing
      "",                        //
      "{}",                      //
      good + good,               //
  };
  for (const std::string& text : rejected) {
    _GUID g = Sentinel();
    EXPECT_EQ(1, ZELSysTSConvertStringToGUID(text.c_str(), g)) << text;
    EXPECT_EQ(Sentinel(), g) << text;
  }
  _GUID g = Sentinel();
  EXPECT_EQ(1, ZELSysTSConvertStringToGUID(nullptr, g));
  EXPECT_EQ(Sentinel(), g);
}

}  // namespace
