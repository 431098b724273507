// A dictionary file (separators, long lines, files not to read), GUID text, the readers' verdicts
// and messages; the loader (path, file order, one load per process) and the queries that run it.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "ZELSysTSObjectModeler.h"
#include "dictionary/DicoStore.h"
#include "dictionary/IidTable.h"
#include "dictionaryfiles/DicoLoader.h"
#include "dictionaryfiles/DictionaryFile.h"
#include "dictionaryfiles/DictionaryReaders.h"
#include "meta/ZELSysTSMetaClassBase.h"

// GUID texts as literals, so that expected messages read byte for byte.
#define GUID_A "{0C1D2E3F-4A5B-6C7D-8E9F-A0B1C2D3E4F5}"
#define GUID_B "{F5E4D3C2-B1A0-9F8E-7D6C-5B4A3F2E1D0C}"

namespace {

constexpr _GUID kIid = {
    0x0C1D2E3F, 0x4A5B, 0x6C7D, {0x8E, 0x9F, 0xA0, 0xB1, 0xC2, 0xD3, 0xE4, 0xF5}};
constexpr _GUID kClsid = ZELSysTSGuid(GUID_B);

using Lines = std::vector<std::string>;

// Records each line handed over as "<number>:<field>|<field>...".
struct RecordingReader final : ZELSysTSDictionaryReader {
  HRESULT ProcessLine(char* fields[5], int count, const char*, int line) override {
    lines.push_back(std::to_string(line) + ":");
    for (int i = 0; i < count; ++i) lines.back() += (i > 0 ? "|" : "") + std::string(fields[i]);
    return S_OK;
  }
  Lines lines;
};

// What a reader sees of content written as a file.
Lines ReadAll(const std::string& content) {
  zeltest::TempDir dir;
  RecordingReader reader;
  EXPECT_EQ(S_OK, ReadDictionaryFile(dir.Write("x.dicts", content).c_str(), &reader));
  return reader.lines;
}

// Comments, fields, line ends and NULs are left to the fuzz replay, whose corpus reaches no \v
// and no long line.
TEST(DictionaryFile, OnlyTabSpaceAndLineFeedSeparateAndLongLinesComeInPieces) {
  EXPECT_EQ((Lines{"1:D\vE\fF|G", "2:last|line"}), ReadAll("D\vE\fF G\nlast line"));
  // A line longer than the buffer comes in pieces that each count as a line.
  const std::string a(2047, 'a'), b(953, 'b');
  EXPECT_EQ((Lines{"1:" + a, "2:" + b, "3:" + a, "5:next"}),
            ReadAll(a + b + "\n" + a + "\nnext\n"));
}

TEST(DictionaryFile, OnlyRegularFilesAreReadAndAMissingOneIsReported) {
  zeltest::TempDir dir;
  const std::string fifo = dir.path() + "/p.dicts";
  ASSERT_EQ(0, mkfifo(fifo.c_str(), 0600));  // a plain fopen would block on it
  ASSERT_EQ(0, mkdir((dir.path() + "/d.dicts").c_str(), 0700));
  RecordingReader reader;
  EXPECT_EQ(
      "Error : fopen on /no/such/x.dicts\n--> fopen(): No such file or directory\n",
      zeltest::StderrOf([&] {
        EXPECT_EQ(E_FAIL, ReadDictionaryFile("/no/such/x.dicts", &reader));
        EXPECT_EQ(E_FAIL, ReadDictionaryFile(fifo.c_str(), nullptr));
        for (const std::string& path : {fifo, dir.path() + "/d.dicts", std::string("/dev/zero")})
          EXPECT_EQ(S_OK, ReadDictionaryFile(path.c_str(), &reader)) << path;
      }));
  EXPECT_EQ(Lines{}, reader.lines);
}

// Only the length and the braces are checked; the separators are never read and any other byte
// at a digit position counts as 0. A rejected text leaves the GUID as it was.
TEST(GuidText, LengthAndBracesAreCheckedDigitsReadLeniently) {
  for (const char* text : {GUID_A, "{0c1d2E3f-4a5b-6C7D-8e9f-a0b1c2d3e4f5}",
                           "{0C1D2E3F_4A5B}6C7D\0018E9F\377A0B1C2D3E4F5}"}) {
    _GUID g{};
    EXPECT_TRUE(ZELSysTSConvertStringToGUID(text, g) == 0 && g == kIid) << text;
  }
  _GUID g{};
  EXPECT_EQ(0, ZELSysTSConvertStringToGUID("{0C1D2E3G-4A?B-6C7D-8E9F-A0B1 2D3E4F\303}", g));
  EXPECT_EQ((_GUID{0x0C1D2E30, 0x4A0B, 0x6C7D, {0x8E, 0x9F, 0xA0, 0xB1, 0x02, 0xD3, 0xE4, 0xF0}}),
            g);
  for (const char* text :
       {"0C1D2E3F-4A5B-6C7D-8E9F-A0B1C2D3E4F5", "{0C1D2E3F-4A5B-6C7D-8E9F-A0B1C2D3E4F5",
        "(0C1D2E3F-4A5B-6C7D-8E9F-A0B1C2D3E4F5}", "{0C1D2E3F-4A5B-6C7D-8E9F-A0B1C2D3E4F5)",
        GUID_A " ", static_cast<const char*>(nullptr)}) {
    g = kIid;
    EXPECT_TRUE(ZELSysTSConvertStringToGUID(text, g) == 1 && g == kIid) << (text ? text : "null");
  }
}

// Rows run in order against the same tables, so later rows meet what earlier rows entered. Each
// line is handed over split on spaces, as line 7 of "/d/x".
TEST(Readers, EachLineShapeGivesItsVerdictAndMessagesByteForByte) {
#define AT " /d/x line 7\n"
#define CANNOT_ADD(what) "Error in dictionary" AT "Can not add " what "\n"
#define IID_KNOWN_AS(name) \
  "The iid is already defined with interface name '" name "'\nCheck dictionaries.\n\n"
  ZELSysTSDicReader dic;
  ZELSysTSIidReader iid;
  ZELSysTSClsidReader cls;
  const struct {
    ZELSysTSDictionaryReader* reader;
    std::string line;
    HRESULT result;
    std::string err;
  } rows[] = {
      {&dic, "Bad IBad", E_FAIL, "Problem reading dico :" AT},
      {&dic, "Bad IBad Lib ITFLEAF", E_FAIL, "Problem reading dico :" AT},
      {&dic, "Bad IBad Lib itfleaf L", E_FAIL, "Problem reading dico :" AT},
      {&dic, "Vehicle IVehicle libVehicleImpl", S_OK, ""},
      // The store refuses with its own message; the line is not rejected.
      {&dic, "Vehicle IVehicle OtherImpl", S_OK, "Problem allocating structure dico\n"},
      {&iid, GUID_A " IVehicle #x", E_FAIL, "Error in IId dictionary" AT},
      {&iid, "{0C1D2E3F-4A5B-6C7D-8E9F-A0B1C2D3E4F5 IVehicle", E_FAIL,
       "Error in dictionary" AT "Invalid iid :{0C1D2E3F-4A5B-6C7D-8E9F-A0B1C2D3E4F5\n\n"},
      {&iid, GUID_A " IVehicle", S_OK, ""},
      {&iid, GUID_A " IVehicle", S_OK, ""},
      {&iid, GUID_B " IVehicle", E_FAIL,
       CANNOT_ADD("interface '" GUID_B
                  " IVehicle'") "The interface name is already defined with another iid\n"},
      {&iid, GUID_B " IOther", S_OK, ""},
      {&iid, GUID_A " ITruck", E_FAIL,
       CANNOT_ADD("interface '" GUID_A " ITruck'") IID_KNOWN_AS("IVehicle")},
      // Both conflicts at once: the IID's name is the one reported.
      {&iid, GUID_A " IOther", E_FAIL,
       CANNOT_ADD("interface '" GUID_A " IOther'") IID_KNOWN_AS("IVehicle")},
      {&cls, GUID_A " Vehicle Lib x", E_FAIL, "Problem reading dico name" AT},
      {&cls, GUID_A "x Vehicle", E_FAIL, "Problem converting CLSID in" AT},
      {&cls, GUID_A " Vehicle", S_OK, ""},
      {&cls, GUID_B " Truck libTruckImpl", S_OK, ""},
      {&cls, GUID_A " Car", E_FAIL, CANNOT_ADD("class 'Car " GUID_A " (null)'")},
      {&cls, GUID_B " Truck TruckImpl", E_FAIL, CANNOT_ADD("class 'Truck " GUID_B " TruckImpl'")},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.line);
    std::string text = row.line;  // the readers get writable fields
    char* fields[5] = {};
    int count = 0;
    for (char* p = std::strtok(text.data(), " "); p != nullptr; p = std::strtok(nullptr, " "))
      fields[count++] = p;
    EXPECT_EQ(row.err, zeltest::StderrOf([&] {
                EXPECT_EQ(row.result, row.reader->ProcessLine(fields, count, "/d/x", 7));
              }));
  }
}

std::string NameOf(const _GUID& guid) {
  const char* name = IidTable::FindName(guid);
  return name != nullptr ? name : "(none)";
}
// "library leaf extended_by" of the record for the names ("-" for a null field), or "none".
std::string Record(const char* cls, const char* itf) {
  const DicoEntry* e = DicoStore::FindByNames(cls, itf);
  auto text = [](const char* t) { return std::string(t != nullptr ? t : "-"); };
  if (e == nullptr) return "none";
  return text(e->library_name) + " " + text(e->itf_leaf) + " " + text(e->extended_by);
}
// Loads with the two variables so set (null: absent); returns what went to standard error.
std::string Load(const char* path, const char* noFallback = nullptr) {
  zeltest::ScopedEnv env("ZELDictionaryPath", path),
      fallback("ZELDictionaryNoPathNoFallback", noFallback);
  return zeltest::StderrOf(&DicoLoader::Load);
}

// Unset, or the switch set (even empty): said on every call. Set but empty: loaded, never read.
TEST(DicoLoader, WithoutAPathEveryCallSaysSoUntilOneLoads) {
  const std::string noPath = "Error in reading dictionaries : ZELDictionaryPath is not defined.\n";
  zeltest::TempDir dir;
  dir.Write("v.iidts", GUID_A " IVehicle\n");
  EXPECT_EQ((Lines{Load(nullptr), Load(dir.path().c_str(), "")}), (Lines{noPath, noPath}));
  EXPECT_FALSE(DicoLoader::IsLoaded());
  EXPECT_EQ((Lines{Load(""), Load(dir.path().c_str())}), (Lines{"", ""}));
  EXPECT_EQ("(none)", NameOf(kIid));
}

TEST(DicoLoader, EarlierDirectoriesHideLaterFilesOfTheSameName) {
  zeltest::TempDir first, second;
  first.Write("a.iidts", "");  // empty, still hides
  ASSERT_EQ(0, symlink("/no/such/file", (first.path() + "/b.iidts").c_str()));
  second.Write("a.iidts", GUID_A " IFromA\n");
  second.Write("b.iidts", GUID_A " IFromB\n");
  second.Write("c.iidts", GUID_B " IFromC\n");
  // A missing directory is passed over; the same directory named again reads nothing more.
  const std::string f = first.path();
  EXPECT_EQ("Error : fopen on " + f + "/b.iidts\n--> fopen(): No such file or directory\n",
            Load((f + "/missing:" + f + ":" + second.path() + ":" + f).c_str()));
  EXPECT_EQ("(none) IFromC", NameOf(kIid) + " " + NameOf(kClsid));
}

TEST(DicoLoader, FilesAreReadInAlphasortOrderAcrossKinds) {
  zeltest::DictionaryPath dir;
  // Each file rejects its first line, so the messages tell the order of reading.
  dir.Write("c.clsidts", "one\n");
  dir.Write("a.iidts", "one two three\n");
  dir.Write("B.dicts", "one two three four\n");
  const std::string d = dir.path();
  EXPECT_EQ("Problem reading dico : " + d + "/B.dicts line 1\nError in IId dictionary " + d +
                "/a.iidts line 1\nProblem reading dico name " + d + "/c.clsidts line 1\n",
            zeltest::StderrOf(&DicoLoader::Load));
}

// A rejected line ends its file only; the fields reach the tables as the line was split.
TEST(DicoLoader, ARejectedLineStopsItsFileOnly) {
  zeltest::DictionaryPath dir;
  dir.Write("a.dicts", "A I1 libLib\nA I2 Lib ITFLEAF\nA I3 Lib\n");
  dir.Write("b.dicts", "C I Lib ITFLEAF Leaf EXTENDED_BY Ext\r\nC J Lib EXTENDED_BY Ext\r\n");
  dir.Write("x.iidts", GUID_A " IVehicle\r\n");
  EXPECT_EQ("Problem reading dico : " + dir.path() + "/a.dicts line 2\n",
            zeltest::StderrOf(&DicoLoader::Load));
  EXPECT_EQ("Lib - - | none", Record("A", "I1") + " | " + Record("A", "I3"));
  EXPECT_EQ("Lib Leaf - | Lib - Ext\r", Record("C", "I") + " | " + Record("C", "J"));
  EXPECT_EQ("IVehicle\r", NameOf(kIid));
}

struct DicoStoreQueries : ::testing::Test, zeltest::DictionaryPath {
  void SetUp() override {
    Write("v.dicts", "Vehicle IVehicle libVehicleImpl\n");
    Write("v.iidts", GUID_A " IFromFile\n" GUID_B " IFileOnly\n");
  }
};

TEST_F(DicoStoreQueries, OnlyLoadFlagOneHasLookupByGuidsReadTheFiles) {
  for (int16_t flag : {0, 2, -1})
    EXPECT_FALSE(DicoStore::LookupByNames("Vehicle", "IVehicle", flag) ||
                 DicoStore::LookupByGuids(&kIid, &kIid, flag));
  EXPECT_FALSE(DicoStore::LookupByNames(nullptr, "IVehicle", 1) || DicoLoader::IsLoaded());
  EXPECT_EQ(nullptr, DicoStore::LookupByGuids(&kIid, &kIid, 1));
  EXPECT_NE(nullptr, DicoStore::FindByNames("Vehicle", "IVehicle"));
}

TEST_F(DicoStoreQueries, LookupByNamesReadsTheFilesAndNameOfGuidPrefersAMetaObject) {
  EXPECT_NE(nullptr, DicoStore::LookupByNames("Vehicle", "IVehicle", 1));
  static ZELSysTSMetaClassBase gadget(&kIid, "Gadget", nullptr);
  ASSERT_NE(nullptr, DicoStore::Register(&kIid, &CLSID_ZELSysTSMetaClass, "Gadget", "MetaObject",
                                         nullptr, &gadget));
  EXPECT_STREQ("Gadget", DicoStore::NameOfGuid(&kIid));  // the file names it IFromFile
  EXPECT_STREQ("IFileOnly", DicoStore::NameOfGuid(&kClsid));
}

}  // namespace
