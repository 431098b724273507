// zelsysts-dict check, list and graph on real dictionaries and the real library zelimpl (which
// exports ZELSysTSCreateIBarMtFoo and registers the extension MtFooExt): exit statuses, and the
// meaning of the JSON they print.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>

#include "TestSupport.h"

namespace {

struct Output {
  int status;
  nlohmann::json json;  // null when the output is not JSON
  std::string out;
};

Output Tool(const std::string& args) {
  const std::string command = std::string(ZELSYSTS_DICT_TOOL) + " " + args + " 2>/dev/null";
  FILE* pipe = popen(command.c_str(), "r");
  std::string out;
  char buffer[4096];
  for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) out.append(buffer, n);
  const int status = pclose(pipe);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, nlohmann::json::parse(out, nullptr, false),
          out};
}

// The diagnostic of that code that involves file:line, or null.
const nlohmann::json* Find(const Output& run, const std::string& code, const std::string& file,
                           int line) {
  for (const auto& d : run.json["diagnostics"]) {
    for (const auto& at : d["at"]) {
      if (d["code"] == code && at["file"] == file && at["line"] == line) return &d;
    }
  }
  return nullptr;
}

TEST(DictToolTest, CheckNamesEveryBrokenLineAndWithLoadEveryBrokenLibrary) {
  zeltest::TempDir dir;
  const std::string a = dir.Write("a.dicts",
                                  "MtFoo IBar zelimpl\nMtFoo IBar libzelother\n"
                                  "MtFoo IMissing zelimpl\nMtGone IBar zelnosuch\n"
                                  "MtFoo IExt zelimpl EXTENDED_BY MtFooExt\n"
                                  "MtFoo IBaz zelimpl EXTENDED_BY MtNever\n");
  const std::string b = dir.Write("b.dicts", "MtFoo IBar zelimpl\nBad line\nAfter IBar zelimpl\n");
  const std::string c = dir.Write("c.iidts", "{1BA00001-2222-4000-9000-000000000000} IBar\r\n");
  const Output loaded = Tool("--json check --load " + dir.path());
  ASSERT_TRUE(loaded.json.is_object()) << loaded.out;
  EXPECT_EQ(loaded.status, 2);
  const struct {
    const char* code;
    std::string file;
    int line;
    const char* says;  // in the message or the loader's lines
  } expected[] = {
      {"pair-conflict", a, 1, "zelimpl (wins)"},
      {"pair-conflict", a, 2, "Problem allocating structure dico"},
      {"line-rejected", b, 2, "Problem reading dico : " /* path */},
      {"carriage-return", c, 1, "carriage return"},
      {"library-not-loaded", a, 4, "libzelnosuch.so"},
      {"function-missing", a, 3, "ZELSysTSCreateIMissingMtFoo"},
      {"extension-not-registered", a, 6, "MtNever"},
  };
  for (const auto& e : expected) {
    SCOPED_TRACE(std::string(e.code) + " " + e.file + ":" + std::to_string(e.line));
    const nlohmann::json* d = Find(loaded, e.code, e.file, e.line);
    ASSERT_NE(d, nullptr) << loaded.out;
    EXPECT_NE(d->dump().find(e.says), std::string::npos) << d->dump();
    EXPECT_EQ((*d)["severity"], "error");
  }
  EXPECT_EQ(Find(loaded, "extension-not-registered", a, 5), nullptr) << "MtFooExt registers";
  EXPECT_EQ(Find(loaded, "function-missing", a, 1), nullptr) << "zelimpl exports it";
  EXPECT_EQ(loaded.json["files"][1]["result"], "rejected");
  EXPECT_EQ(loaded.json["files"][1]["lines"], 2) << "line 3 of b.dicts was read";

  const Output unloaded = Tool("--json check " + dir.path());
  EXPECT_EQ(unloaded.status, 2);
  EXPECT_TRUE(Find(unloaded, "pair-conflict", a, 2) != nullptr) << unloaded.out;
  EXPECT_EQ(Find(unloaded, "library-not-loaded", a, 4), nullptr) << "loaded without --load";
}

// A comment longer than the reader's buffer whose tail is a live entry, and a NUL that cuts a
// line: both pass the loader in silence.
TEST(DictToolTest, CheckTellsALongLinesTailAndANulByte) {
  zeltest::TempDir dir;
  const std::string comment = "# " + std::string(2045, 'x');  // fills the 2047-byte buffer
  const std::string d =
      dir.Write("d.dicts", comment + "TailClass ITail zelimpl\n" +
                               std::string("MtFoo IBar zelimpl\0 IMore zelimpl\n", 34));
  const Output run = Tool("--json check " + dir.path());
  ASSERT_TRUE(run.json.is_object()) << run.out;
  const nlohmann::json* longLine = Find(run, "long-line", d, 2);
  ASSERT_NE(longLine, nullptr) << run.out;
  EXPECT_EQ((*longLine)["severity"], "error") << "its tail became an entry";
  const nlohmann::json* nul = Find(run, "nul-byte", d, 3);
  ASSERT_NE(nul, nullptr) << run.out;
  EXPECT_NE(nul->dump().find("MtFoo IBar zelimpl"), std::string::npos) << nul->dump();
  EXPECT_EQ(run.status, 2);
}

TEST(DictToolTest, CheckExitsZeroOneOrTwoAndNeverHangsOnOddFiles) {
  const char* iid = "{1BA00001-2222-4000-9000-000000000000} IBar";
  const struct {
    std::string iidts;
    bool fifo;  // a fifo named like a dictionary file: left unread, a warning
    int status;
  } cases[] = {
      {iid + std::string("\n"), false, 0},
      {iid + std::string("\n"), true, 1},
      {"", false, 1},                         // IBar has no IID: a warning
      {iid + std::string(" x\n"), false, 2},  // a rejected line
  };
  for (const auto& c : cases) {
    zeltest::TempDir dir;
    dir.Write("x.dicts", "MtFoo IBar zelimpl\n");
    dir.Write("x.iidts", c.iidts);
    if (c.fifo) {
      ASSERT_EQ(mkfifo((dir.path() + "/fifo.dicts").c_str(), 0600), 0);
    }
    const Output run = Tool("--json check --load " + dir.path());
    EXPECT_EQ(run.status, c.status) << run.out;
    EXPECT_EQ(Find(run, "not-regular-file", dir.path() + "/fifo.dicts", 0) != nullptr, c.fifo);
  }
  EXPECT_EQ(Tool("check --lod").status, 64);
  EXPECT_EQ(Tool("graph --format png").status, 64);
}

TEST(DictToolTest, ListAndGraphShowWhoOffersWhatWithOddNamesKeptValid) {
  zeltest::TempDir dir;
  const std::string a =
      dir.Write("a.dicts",
                "MtFoo IBar zelimpl ITFLEAF IBarLeaf\n"
                "MtFoo IExt zelimpl EXTENDED_BY MtFooExt\nCaf\xE9 IBar zelimpl\n");
  const Output list = Tool("--json list classes " + dir.path());
  ASSERT_EQ(list.status, 0) << list.out;
  ASSERT_TRUE(list.json.is_object()) << list.out;
  const auto& foo = list.json["classes"][0];
  EXPECT_EQ(foo["name"], "MtFoo");
  EXPECT_EQ(foo["interfaces"][0]["function"], "ZELSysTSCreateIBarLeafMtFoo");
  EXPECT_EQ(foo["interfaces"][1]["at"][0]["line"], 2);
  EXPECT_EQ(list.json["classes"][1]["name"], "Caf\u00e9");

  const Output graph = Tool("--json graph " + dir.path());
  ASSERT_TRUE(graph.json.is_object()) << graph.out;
  int leaf = 0, extension = 0;
  for (const auto& e : graph.json["edges"]) {
    leaf += e["kind"] == "itf_leaf" && e["from"] == "i:IBar" && e["to"] == "i:IBarLeaf";
    extension += e["kind"] == "extended_by" && e["from"] == "c:MtFoo" && e["to"] == "c:MtFooExt";
  }
  EXPECT_EQ(leaf, 1);
  EXPECT_EQ(extension, 1);
  const Output dot = Tool("graph " + dir.path());
  EXPECT_NE(dot.out.find("\"i:IBar\" -> \"l:zelimpl\""), std::string::npos) << dot.out;
  EXPECT_NE(dot.out.find("Caf\\\\xE9"), std::string::npos) << "escaped in the label";
}

}  // namespace
