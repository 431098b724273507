// explain: a found interface, a missing library, a missing function, a leaf, an extension.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "TestSupport.h"
#include "ToolRun.h"

namespace {

// Interface n, the function found (or null), and a step that tells why (outcome, message part).
struct ExplainCase {
  int itf;
  const char *function, *step, *outcome, *message;
};

TEST(Explain, ReportsEachStepAndTheResult) {
  zeltest::TempDir dir;
  const char* const names[] = {"IBar", "IRefused", "IMissingLib", "INoFunc", "IExt"};
  std::string iidts;
  int n = 0;
  for (const char* name : names)
    iidts += "{1BA0000" + std::to_string(++n) + "-2222-4000-9000-000000000000} " + name + "\n";
  dir.Write("m.iidts", iidts);
  dir.Write("m.dicts",
            "MtFoo IBar zelimpl\nMtFoo IRefused zelimpl ITFLEAF MtFoo\n"
            "MtFoo IMissingLib zelimpl_no_such_library\nMtFoo INoFunc zelimpl\n"
            "MtFoo IExt zelimpl EXTENDED_BY MtFooExt\n");
  const ExplainCase cases[] = {
      {1, "ZELSysTSCreateIBarMtFoo", "function", "found", "in zelimpl"},
      {2, nullptr, "leaf", "unrelated", "does not derive"},
      {3, nullptr, "function", "missing", "cannot open shared object file"},
      {4, nullptr, "function", "missing", "undefined symbol: ZELSysTSCreateINoFuncMtFoo"},
      {5, "ZELSysTSCreateIExtMtFooExt", "extension", "extends", "extension of MtFoo"},
  };
  for (const ExplainCase& c : cases) {
    const std::string iid = "{1BA0000" + std::to_string(c.itf) + "-2222-4000-9000-000000000000}";
    // Odd cases name the interface, even ones give its identifier.
    const std::string itf = c.itf % 2 != 0 ? names[c.itf - 1] : "'" + iid + "'";
    int status = -1;
    const std::string out = RunTool("--json explain MtFoo " + itf + " " + dir.path(), &status);
    EXPECT_EQ(status, c.function != nullptr ? 0 : 2) << iid;
    const nlohmann::json doc = nlohmann::json::parse(out);
    EXPECT_EQ(doc["result"]["function"], c.function ? nlohmann::json(c.function) : nullptr);
    bool told = false;
    for (const auto& step : doc["steps"])
      told = told || (step["step"] == c.step && step["outcome"] == c.outcome &&
                      step["message"].get<std::string>().find(c.message) != std::string::npos);
    EXPECT_TRUE(told) << out;
    EXPECT_EQ(doc["steps"].back()["outcome"], c.function != nullptr ? "found" : "absent");
  }
}

}  // namespace
