// Reading one dictionary file: kinds by name, comments, line numbers, splitting, long lines,
// odd bytes and odd files.
#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

#include "RecordingReader.h"
#include "TestSupport.h"
#include "dictionaryfiles/DicoLoader.h"
#include "dictionaryfiles/SeenFileSet.h"

namespace {

using zeltest::StderrCapture;
using zeltest::TempDir;
using Fields = std::vector<std::string>;

// Reads content written to a file and returns what the reader saw; no message is expected.
std::vector<RecordedLine> ReadAll(const std::string& content, HRESULT expected = S_OK,
                                  int rejectLine = 0) {
  TempDir dir;
  const std::string path = dir.Write("x.dicts", content);
  RecordingReader reader(rejectLine);
  StderrCapture err;
  EXPECT_EQ(expected, ReadDictionaryFile(path.c_str(), &reader));
  EXPECT_EQ("", err.Take());
  for (const RecordedLine& line : reader.lines) EXPECT_EQ(path, line.path);
  return reader.lines;
}

TEST(DictionaryFileKind, ByExactEnding) {
  struct Case {
    const char* name;
    DicoFileKind kind;
  } cases[] = {
      {"x.dicts", DicoFileKind::Dicts},     {"x.iidts", DicoFileKind::Iidts},
      {"x.clsidts", DicoFileKind::Clsidts}, {"/a/b//Vehicle.iidts", DicoFileKind::Iidts},
      {".dicts", DicoFileKind::None},       {".iidts", DicoFileKind::None},
      {".clsidts", DicoFileKind::None},     {"a.clsidts", DicoFileKind::Clsidts},
      {"x.DICTS", DicoFileKind::None},      {"x.dicts.bak", DicoFileKind::None},
      {"x.clsidts~", DicoFileKind::None},   {"xdicts", DicoFileKind::None},
      {"x.Iidts", DicoFileKind::None},      {"", DicoFileKind::None},
      {"x.dicts\n", DicoFileKind::None},    {"ab.idts", DicoFileKind::None},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(static_cast<int>(c.kind), DictionaryFileKind(c.name)) << c.name;
  }
  EXPECT_EQ(0, DictionaryFileKind(nullptr));

  EXPECT_EQ(0, IsDictionaryFile(nullptr));
  struct dirent entry;
  std::memset(&entry, 0, sizeof entry);
  std::strcpy(entry.d_name, "a.clsidts");
  EXPECT_EQ(1, IsDictionaryFile(&entry));
  std::strcpy(entry.d_name, ".clsidts");
  EXPECT_EQ(0, IsDictionaryFile(&entry));
}

TEST(ReadDictionaryFile, CommentsAndBlankLinesCountButAreSkipped) {
  const auto lines = ReadAll(
      "# comment\n"
      "// comment\n"
      "\n"
      " \t \n"
      "A B C\n"
      "  # word\n"
      "/x\n"
      "\t//y\n");
  ASSERT_EQ(4u, lines.size());
  EXPECT_EQ(5, lines[0].line);
  EXPECT_EQ((Fields{"A", "B", "C"}), lines[0].fields);
  EXPECT_EQ(6, lines[1].line);
  EXPECT_EQ((Fields{"#", "word"}), lines[1].fields);
  EXPECT_EQ(7, lines[2].line);
  EXPECT_EQ((Fields{"/x"}), lines[2].fields);
  EXPECT_EQ(8, lines[3].line);
  EXPECT_EQ((Fields{"//y"}), lines[3].fields);
}

TEST(ReadDictionaryFile, LastLineWithoutNewlineIsRead) {
  const auto lines = ReadAll("A\nlast line");
  ASSERT_EQ(2u, lines.size());
  EXPECT_EQ(2, lines[1].line);
  EXPECT_EQ((Fields{"last", "line"}), lines[1].fields);
}

TEST(ReadDictionaryFile, OnlyTabLineFeedAndSpaceSeparate) {
  const auto lines = ReadAll("A\tB  \t C\r\nD\vE\fF G\r\n");
  ASSERT_EQ(2u, lines.size());
  EXPECT_EQ((Fields{"A", "B", "C\r"}), lines[0].fields);
  EXPECT_EQ(3, lines[0].count);
  EXPECT_EQ((Fields{"D\vE\fF", "G\r"}), lines[1].fields);
}

TEST(ReadDictionaryFile, AtMostFiveFieldsReachTheReader) {
  const auto lines = ReadAll("C I L ITFLEAF X EXTENDED_BY Y\n1 2 3 4 5 6\n1 2 3 4 5\n");
  ASSERT_EQ(3u, lines.size());
  EXPECT_EQ(5, lines[0].count);
  EXPECT_EQ((Fields{"C", "I", "L", "ITFLEAF", "X"}), lines[0].fields);
  EXPECT_EQ(5, lines[1].count);
  EXPECT_EQ((Fields{"1", "2", "3", "4", "5"}), lines[1].fields);
  EXPECT_EQ(5, lines[2].count);
}

TEST(ReadDictionaryFile, LongLinesComeInPiecesThatEachCount) {
  const std::string first(2047, 'a');
  const auto lines = ReadAll(first + std::string(953, 'b') + "\n" + first + "\nnext\n");
  ASSERT_EQ(4u, lines.size());
  EXPECT_EQ(1, lines[0].line);
  EXPECT_EQ((Fields{first}), lines[0].fields);
  EXPECT_EQ(2, lines[1].line);
  EXPECT_EQ((Fields{std::string(953, 'b')}), lines[1].fields);
  // A line of exactly 2047 characters leaves its newline as a blank piece of its own (line 4).
  EXPECT_EQ(3, lines[2].line);
  EXPECT_EQ(5, lines[3].line);
  EXPECT_EQ((Fields{"next"}), lines[3].fields);
}

TEST(ReadDictionaryFile, ARejectedLineStopsTheFile) {
  const auto lines = ReadAll("# one\n# two\nA B C\nD E F\n", E_FAIL, 3);
  ASSERT_EQ(1u, lines.size());
  EXPECT_EQ(3, lines[0].line);

  const auto more = ReadAll("A\nB\nC\nD\nE\n", E_FAIL, 3);
  ASSERT_EQ(3u, more.size());
  EXPECT_EQ((Fields{"C"}), more[2].fields);
}

TEST(ReadDictionaryFile, NulAndBinaryBytesAreHandledWithinTheLine) {
  static const char kBytes[] = "A\0B C\n\0\nD\xff\x80 \x01\n\x7f";
  const std::string content(kBytes, sizeof kBytes - 1);
  const auto lines = ReadAll(content);
  ASSERT_EQ(3u, lines.size());
  EXPECT_EQ((Fields{"A"}), lines[0].fields);  // the line ends, for the reader, at its NUL
  EXPECT_EQ(1, lines[0].line);
  EXPECT_EQ((Fields{"D\xff\x80", "\x01"}), lines[1].fields);
  EXPECT_EQ(3, lines[1].line);
  EXPECT_EQ((Fields{"\x7f"}), lines[2].fields);
}

TEST(ReadDictionaryFile, NullReaderOpensNothing) {
  StderrCapture err;
  EXPECT_EQ(E_FAIL, ReadDictionaryFile("/no/such/dir/x.dicts", nullptr));
  EXPECT_EQ("", err.Take());
}

TEST(ReadDictionaryFile, FileThatCannotBeOpened) {
  RecordingReader reader;
  StderrCapture err;
  EXPECT_EQ(E_FAIL, ReadDictionaryFile("/no/such/dir/x.dicts", &reader));
  EXPECT_EQ("Error : fopen on /no/such/dir/x.dicts\n--> fopen(): No such file or directory\n",
            err.Take());
  EXPECT_TRUE(reader.lines.empty());
}

TEST(ReadDictionaryFile, FileWithoutReadPermission) {
  if (geteuid() == 0) GTEST_SKIP() << "root reads a file whatever its mode";
  TempDir dir;
  const std::string path = dir.Write("x.dicts", "A B C\n");
  ASSERT_EQ(0, chmod(path.c_str(), 0));
  RecordingReader reader;
  StderrCapture err;
  EXPECT_EQ(E_FAIL, ReadDictionaryFile(path.c_str(), &reader));
  EXPECT_EQ("Error : fopen on " + path + "\n--> fopen(): Permission denied\n", err.Take());
  EXPECT_TRUE(reader.lines.empty());
}

TEST(ReadDictionaryFile, FifoAndDirectoryAreNotReadAndDoNotBlock) {
  TempDir dir;
  const std::string fifo = dir.path() + "/p.dicts";
  ASSERT_EQ(0, mkfifo(fifo.c_str(), 0600));
  const std::string sub = dir.MakeDir("d.dicts");
  RecordingReader reader;
  StderrCapture err;
  EXPECT_EQ(S_OK, ReadDictionaryFile(fifo.c_str(), &reader));  // a plain fopen would block here
  EXPECT_EQ(S_OK, ReadDictionaryFile(sub.c_str(), &reader));
  EXPECT_EQ(S_OK, ReadDictionaryFile("/dev/zero", &reader));  // endless, not regular
  EXPECT_EQ("", err.Take());
  EXPECT_TRUE(reader.lines.empty());
}

TEST(SeenFileSet, NamesAreSeenByContent) {
  SeenFileSet seen;
  char first[] = "x.dicts";
  char again[] = "x.dicts";
  EXPECT_EQ(0, seen.TestAndAdd(first));
  EXPECT_EQ(1, seen.TestAndAdd(again));  // another buffer, same text
  EXPECT_EQ(0, seen.TestAndAdd("x.iidts"));
  EXPECT_EQ(0, seen.TestAndAdd("X.dicts"));
  EXPECT_EQ(1, seen.TestAndAdd("x.iidts"));
  EXPECT_EQ(1, seen.TestAndAdd("X.dicts"));
  EXPECT_EQ(0, seen.TestAndAdd(nullptr));  // cannot be interned: not seen, not added
  EXPECT_EQ(0, seen.TestAndAdd(nullptr));
  SeenFileSet fresh;  // each walk starts empty
  EXPECT_EQ(0, fresh.TestAndAdd("x.dicts"));
}

}  // namespace
