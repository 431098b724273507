// The loader: the path from the environment, the walk over the directories, which files are
// read and in which order, and that a load happens once. Every case runs in its own process.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <clocale>
#include <string>

#include "TestSupport.h"
#include "ZELSysTSConvertStringToGUID.h"
#include "dictionary/DicoStore.h"
#include "dictionaryfiles/ClsidTable.h"
#include "dictionaryfiles/DicoLoader.h"
#include "dictionaryfiles/IidTable.h"

namespace {

using zeltest::ScopedEnv;
using zeltest::StderrCapture;
using zeltest::TempDir;

const char kNoPath[] = "Error in reading dictionaries : ZELDictionaryPath is not defined.\n";
const char kIidText[] = "{0C1D2E3F-4A5B-6C7D-8E9F-A0B1C2D3E4F5}";
const char kClsidText[] = "{F5E4D3C2-B1A0-9F8E-7D6C-5B4A3F2E1D0C}";

_GUID Guid(const char* text) {
  _GUID g{};
  EXPECT_EQ(0, ZELSysTSConvertStringToGUID(text, g));
  return g;
}

const char* NameOfTestIid() {
  return IidTable::FindName(Guid(kIidText));
}

// Loads with the given path (and no fallback switch); returns what went to standard error.
std::string LoadWithPath(const std::string& path) {
  ScopedEnv env("ZELDictionaryPath", path.c_str());
  ScopedEnv noFallback("ZELDictionaryNoPathNoFallback", nullptr);
  StderrCapture err;
  DicoLoader::Load();
  return err.Take();
}

TEST(DicoLoader, AbsentPathIsReportedOnEveryCallUntilSet) {
  TempDir dir;
  dir.Write("v.iidts", std::string(kIidText) + " IVehicle\n");
  {
    ScopedEnv path("ZELDictionaryPath", nullptr);
    ScopedEnv noFallback("ZELDictionaryNoPathNoFallback", nullptr);
    StderrCapture err;
    DicoLoader::Load();
    DicoLoader::Load();
    EXPECT_EQ(std::string(kNoPath) + kNoPath, err.Take());
    EXPECT_FALSE(DicoLoader::IsLoaded());
  }
  EXPECT_EQ("", LoadWithPath(dir.path()));
  EXPECT_TRUE(DicoLoader::IsLoaded());
  EXPECT_STREQ("IVehicle", NameOfTestIid());
  EXPECT_TRUE(DicoStore::IsInitialized());
}

TEST(DicoLoader, NoFallbackSwitchWinsEvenWhenEmpty) {
  TempDir dir;
  dir.Write("v.iidts", std::string(kIidText) + " IVehicle\n");
  ScopedEnv path("ZELDictionaryPath", dir.path().c_str());
  ScopedEnv noFallback("ZELDictionaryNoPathNoFallback", "");
  StderrCapture err;
  DicoLoader::Load();
  EXPECT_EQ(kNoPath, err.Take());
  EXPECT_FALSE(DicoLoader::IsLoaded());
  EXPECT_EQ(nullptr, NameOfTestIid());
}

TEST(DicoLoader, PathWithoutDirectoriesLoadsNothingOnce) {
  for (const char* empty : {"", ":", "::"}) {
    // Only the first completes a walk; the later ones return at once.
    EXPECT_EQ("", LoadWithPath(empty)) << empty;
    EXPECT_TRUE(DicoLoader::IsLoaded());
  }
  TempDir dir;
  dir.Write("v.iidts", std::string(kIidText) + " IVehicle\n");
  EXPECT_EQ("", LoadWithPath(dir.path()));
  EXPECT_EQ(nullptr, NameOfTestIid());  // no later attempt
}

TEST(DicoLoader, MissingDirectoryIsPassedOverInSilence) {
  TempDir dir;
  dir.Write("v.iidts", std::string(kIidText) + " IVehicle\n");
  dir.Write("v.clsidts", std::string(kClsidText) + " Vehicle libVehicleImpl\n");
  dir.Write("v.dicts", "Vehicle IVehicle libVehicleImpl\n");
  EXPECT_EQ("", LoadWithPath(dir.path() + "/missing:" + dir.path()));
  EXPECT_STREQ("IVehicle", NameOfTestIid());
  const ClsidEntry* vehicle = ClsidTable::Find(Guid(kClsidText));
  ASSERT_NE(nullptr, vehicle);
  EXPECT_STREQ("libVehicleImpl", vehicle->library_name);
  const DicoEntry* entry = DicoStore::FindByNames("Vehicle", "IVehicle");
  ASSERT_NE(nullptr, entry);
  EXPECT_STREQ("VehicleImpl", entry->library_name);
}

TEST(DicoLoader, EarlierDirectoryHidesFilesOfTheSameName) {
  TempDir first;
  TempDir second;
  first.Write("a.iidts", "");  // empty, still hides
  ASSERT_EQ(0, symlink("/no/such/file", (first.path() + "/b.iidts").c_str()));  // unreadable
  second.Write("a.iidts", std::string(kIidText) + " IFromA\n");
  second.Write("b.iidts", std::string(kIidText) + " IFromB\n");
  second.Write("c.iidts", std::string(kClsidText) + " IFromC\n");
  const std::string err = LoadWithPath(first.path() + ":" + second.path());
  EXPECT_EQ(
      "Error : fopen on " + first.path() + "/b.iidts\n--> fopen(): No such file or directory\n",
      err);
  EXPECT_EQ(nullptr, NameOfTestIid());
  EXPECT_STREQ("IFromC", IidTable::FindName(Guid(kClsidText)));
}

TEST(DicoLoader, DirectoryNamedTwiceIsReadOnce) {
  TempDir dir;
  dir.Write("x.dicts", "Vehicle IVehicle VehicleImpl\nbroken line\n");
  EXPECT_EQ("Problem reading dico : " + dir.path() + "/x.dicts line 2\n",
            LoadWithPath(dir.path() + ":" + dir.path() + "/:" + dir.path()));
  // With a trailing "/" the path is another text, but the names were seen already.
  EXPECT_NE(nullptr, DicoStore::FindByNames("Vehicle", "IVehicle"));
}

TEST(DicoLoader, FilesAreReadInAlphasortOrderAcrossKinds) {
  ScopedEnv lcAll("LC_ALL", "C");
  ScopedEnv lcCollate("LC_COLLATE", "C");
  ASSERT_NE(nullptr, std::setlocale(LC_ALL, "C"));
  TempDir dir;
  // Each file rejects its first line, so the messages tell the order of reading.
  dir.Write("c.clsidts", "one\n");
  dir.Write("a.iidts", "one two three\n");
  dir.Write("B.dicts", "one two three four\n");
  const std::string d = dir.path();
  EXPECT_EQ("Problem reading dico : " + d + "/B.dicts line 1\n" + "Error in IId dictionary " + d +
                "/a.iidts line 1\n" + "Problem reading dico name " + d + "/c.clsidts line 1\n",
            LoadWithPath(d));
}

TEST(DicoLoader, OnlyDictionaryEndingsAreRead) {
  TempDir dir;
  for (const char* ignored : {".dicts", ".iidts", ".clsidts", "x.DICTS", "x.dicts.bak",
                              "x.clsidts~", "x.iidts.orig", "README"}) {
    dir.Write(ignored, "broken\n");
  }
  dir.Write("x.dicts", "Vehicle IVehicle VehicleImpl\n");
  dir.Write("x.iidts", std::string(kIidText) + " IVehicle\n");
  dir.Write("x.clsidts", std::string(kClsidText) + " Vehicle\n");
  EXPECT_EQ("", LoadWithPath(dir.path()));
  EXPECT_NE(nullptr, DicoStore::FindByNames("Vehicle", "IVehicle"));
  EXPECT_STREQ("IVehicle", NameOfTestIid());
  EXPECT_NE(nullptr, ClsidTable::Find(Guid(kClsidText)));
}

TEST(DicoLoader, TrailingSlashGivesADoubleSlashInThePath) {
  TempDir dir;
  dir.Write("x.iidts", "# header\n\n" + std::string(kIidText) + " IVehicle extra\n");
  EXPECT_EQ("Error in IId dictionary " + dir.path() + "//x.iidts line 3\n",
            LoadWithPath(dir.path() + "/"));
}

TEST(DicoLoader, ARejectedLineStopsOnlyItsOwnFile) {
  TempDir dir;
  dir.Write("a.dicts",
            "# one\n"
            "A I1 Lib\n"
            "A I2 Lib ITFLEAF\n"
            "A I3 Lib\n");
  dir.Write("b.dicts", "B I1 Lib\nB I2 Lib EXTENDED_BY Ext\n");
  EXPECT_EQ("Problem reading dico : " + dir.path() + "/a.dicts line 3\n", LoadWithPath(dir.path()));
  EXPECT_NE(nullptr, DicoStore::FindByNames("A", "I1"));
  EXPECT_EQ(nullptr, DicoStore::FindByNames("A", "I2"));
  EXPECT_EQ(nullptr, DicoStore::FindByNames("A", "I3"));
  EXPECT_NE(nullptr, DicoStore::FindByNames("B", "I1"));
  const DicoEntry* ext = DicoStore::FindByNames("B", "I2");
  ASSERT_NE(nullptr, ext);
  EXPECT_STREQ("Ext", ext->extended_by);
}

TEST(DicoLoader, SevenFieldsAndCarriageReturns) {
  TempDir dir;
  dir.Write("a.dicts", "C I Lib ITFLEAF ILeaf EXTENDED_BY Ext\r\nC J Lib\r\n");
  dir.Write("a.iidts", std::string(kIidText) + " IVehicle\r\n");
  EXPECT_EQ("", LoadWithPath(dir.path()));
  const DicoEntry* leaf = DicoStore::FindByNames("C", "I");
  ASSERT_NE(nullptr, leaf);
  EXPECT_STREQ("ILeaf", leaf->itf_leaf);
  EXPECT_EQ(nullptr, leaf->extended_by);  // the second pair was dropped with the sixth field
  EXPECT_STREQ("Lib\r", DicoStore::FindByNames("C", "J")->library_name);
  EXPECT_STREQ("IVehicle\r", NameOfTestIid());
}

TEST(DicoLoader, OddFilesDoNotStopTheWalk) {
  TempDir dir;
  ASSERT_EQ(0, mkfifo((dir.path() + "/a.dicts").c_str(), 0600));
  dir.MakeDir("b.iidts");
  dir.Write("c.clsidts", std::string("\x01\xff\0garbage\n", 11) + kClsidText + " Vehicle\n");
  dir.Write("d.iidts", std::string(kIidText) + " IVehicle\n");
  if (geteuid() != 0) {
    const std::string locked = dir.Write("e.dicts", "X Y Z\n");
    ASSERT_EQ(0, chmod(locked.c_str(), 0));
  }
  const std::string err = LoadWithPath(dir.path());
  // c.clsidts: line 1 is a one-field line ("\x01\xff") and stops that file.
  std::string expected = "Problem reading dico name " + dir.path() + "/c.clsidts line 1\n";
  if (geteuid() != 0) {
    expected += "Error : fopen on " + dir.path() + "/e.dicts\n--> fopen(): Permission denied\n";
  }
  EXPECT_EQ(expected, err);
  EXPECT_TRUE(DicoLoader::IsLoaded());
  EXPECT_STREQ("IVehicle", NameOfTestIid());
  EXPECT_EQ(nullptr, ClsidTable::Find(Guid(kClsidText)));
}

}  // namespace
