// The loader: the path from the environment, the walk over its directories, which files are read
// and in which order, and that a load happens once. Every case runs in its own process.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <clocale>
#include <string>

#include "TestSupport.h"
#include "ZELSysTSConvertStringToGUID.h"
#include "dictionary/ClsidTable.h"
#include "dictionary/DicoStore.h"
#include "dictionary/IidTable.h"
#include "dictionaryfiles/DicoLoader.h"

namespace {

using zeltest::ScopedEnv;
using zeltest::StderrCapture;
using zeltest::TempDir;

const char kNoPath[] = "Error in reading dictionaries : ZELDictionaryPath is not defined.\n";
const std::string kIid = "{0C1D2E3F-4A5B-6C7D-8E9F-A0B1C2D3E4F5}";
const std::string kClsid = "{F5E4D3C2-B1A0-9F8E-7D6C-5B4A3F2E1D0C}";

_GUID Guid(const std::string& text) {
  _GUID g{};
  EXPECT_EQ(0, ZELSysTSConvertStringToGUID(text.c_str(), g));
  return g;
}

std::string NameOf(const std::string& iid) {
  const char* name = IidTable::FindName(Guid(iid));
  return name != nullptr ? name : "(none)";
}

// "library leaf extended_by" of a store entry, "-" for a null name; "none" for no entry.
std::string Describe(const DicoEntry* e) {
  if (e == nullptr) return "none";
  auto text = [](const char* t) { return std::string(t != nullptr ? t : "-"); };
  return text(e->library_name) + " " + text(e->itf_leaf) + " " + text(e->extended_by);
}

// Loads with the two variables so set (null: absent); returns what went to standard error.
std::string Load(const char* path, const char* noFallback = nullptr) {
  ScopedEnv env("ZELDictionaryPath", path);
  ScopedEnv fallback("ZELDictionaryNoPathNoFallback", noFallback);
  StderrCapture err;
  DicoLoader::Load();
  return err.Take();
}

TEST(DicoLoader, AbsentPathOrNoFallbackSwitchIsReportedOnEveryCallUntilLoaded) {
  TempDir dir;
  dir.Write("v.iidts", kIid + " IVehicle\n");
  EXPECT_EQ(kNoPath, Load(nullptr));
  EXPECT_EQ(kNoPath, Load(nullptr));
  EXPECT_EQ(kNoPath, Load(dir.path().c_str(), ""));  // the switch wins, even when empty
  EXPECT_FALSE(DicoLoader::IsLoaded());
  EXPECT_EQ("(none)", NameOf(kIid));
  EXPECT_EQ("", Load(dir.path().c_str()));
  EXPECT_TRUE(DicoLoader::IsLoaded());
  EXPECT_EQ("IVehicle", NameOf(kIid));
}

// "" and ":" name no directory: the load completes in silence, and no later call reads again.
class EmptyPath : public ::testing::TestWithParam<const char*> {};

TEST_P(EmptyPath, LoadsNothingOnce) {
  EXPECT_EQ("", Load(GetParam()));
  EXPECT_TRUE(DicoLoader::IsLoaded());
  TempDir dir;
  dir.Write("v.iidts", kIid + " IVehicle\n");
  EXPECT_EQ("", Load(dir.path().c_str()));
  EXPECT_EQ("(none)", NameOf(kIid));
}

INSTANTIATE_TEST_SUITE_P(DicoLoader, EmptyPath, ::testing::Values("", ":"));

TEST(DicoLoader, EarlierDirectoriesHideLaterFilesOfTheSameName) {
  TempDir first;
  TempDir second;
  first.Write("a.iidts", "");  // empty, still hides
  ASSERT_EQ(0, symlink("/no/such/file", (first.path() + "/b.iidts").c_str()));
  second.Write("a.iidts", kIid + " IFromA\n");
  second.Write("b.iidts", kIid + " IFromB\n");
  second.Write("c.iidts", kClsid + " IFromC\n");
  // A missing directory is passed over; "first/" gives a double slash in the paths of its files;
  // the same directory named again reads nothing more (one fopen message, not two).
  EXPECT_EQ(
      "Error : fopen on " + first.path() + "//b.iidts\n--> fopen(): No such file or directory\n",
      Load((first.path() + "/missing:" + first.path() + "/:" + second.path() + ":" + first.path())
               .c_str()));
  EXPECT_EQ("(none)", NameOf(kIid));
  EXPECT_EQ("IFromC", NameOf(kClsid));
}

TEST(DicoLoader, FilesAreReadInAlphasortOrderAcrossKinds) {
  ScopedEnv lcAll("LC_ALL", "C");
  ASSERT_NE(nullptr, std::setlocale(LC_ALL, "C"));
  TempDir dir;
  // Each file rejects its first line, so the messages tell the order of reading.
  dir.Write("c.clsidts", "one\n");
  dir.Write("a.iidts", "one two three\n");
  dir.Write("B.dicts", "one two three four\n");
  const std::string d = dir.path();
  EXPECT_EQ("Problem reading dico : " + d + "/B.dicts line 1\nError in IId dictionary " + d +
                "/a.iidts line 1\nProblem reading dico name " + d + "/c.clsidts line 1\n",
            Load(d.c_str()));
}

// Every regular file with a dictionary ending is read, each up to its first rejected line; the
// fields reach the tables as the line was split.
TEST(DicoLoader, ReadsEachDictionaryFileUpToItsFirstRejectedLine) {
  TempDir dir;
  for (const char* ignored :
       {".dicts", ".iidts", ".clsidts", "x.DICTS", "x.dicts.bak", "x.clsidts~", "README"}) {
    dir.Write(ignored, "broken\n");
  }
  ASSERT_EQ(0, mkfifo((dir.path() + "/f.dicts").c_str(), 0600));  // would block a plain fopen
  dir.MakeDir("d.iidts");
  dir.Write("a.dicts", "# one\nA I1 libLib\nA I2 Lib ITFLEAF\nA I3 Lib\n");
  dir.Write("b.dicts", "C I Lib ITFLEAF ILeaf EXTENDED_BY Ext\r\nC J Lib\r\n");
  dir.Write("x.iidts", kIid + " IVehicle\r\n");
  dir.Write("x.clsidts", kClsid + " Vehicle libVehicleImpl\n");
  EXPECT_EQ("Problem reading dico : " + dir.path() + "/a.dicts line 3\n", Load(dir.path().c_str()));
  EXPECT_EQ("Lib - -", Describe(DicoStore::FindByNames("A", "I1")));
  EXPECT_EQ("none", Describe(DicoStore::FindByNames("A", "I2")));
  EXPECT_EQ("none", Describe(DicoStore::FindByNames("A", "I3")));
  // Seven fields come as five: the second pair is dropped.
  EXPECT_EQ("Lib ILeaf -", Describe(DicoStore::FindByNames("C", "I")));
  EXPECT_EQ("Lib\r - -", Describe(DicoStore::FindByNames("C", "J")));
  EXPECT_EQ("IVehicle\r", NameOf(kIid));
  const ClsidEntry* vehicle = ClsidTable::Find(Guid(kClsid));
  ASSERT_NE(nullptr, vehicle);
  EXPECT_STREQ("libVehicleImpl", vehicle->library_name);
}

}  // namespace
