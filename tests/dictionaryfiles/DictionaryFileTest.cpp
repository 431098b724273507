// Reading one dictionary file: comments, line numbers, splitting, long lines, odd files, and a
// fuzz-style run of the seed corpus and mutations of it.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "TestSupport.h"
#include "dictionaryfiles/DicoLoader.h"
#include "dictionaryfiles/DictionaryFile.h"
#include "dictionaryfiles/DictionaryReaders.h"

namespace {

using zeltest::StderrCapture;
using zeltest::TempDir;
using Lines = std::vector<std::string>;

// Records each line as "<number>:<field>|<field>..." after checking what every line handed to a
// reader must be: 1 to 5 non-empty fields without separators, numbers increasing, its own path.
// Rejects the line numbered rejectLine (0: none).
class RecordingReader final : public ZELSysTSDictionaryReader {
 public:
  RecordingReader(std::string path, int rejectLine = 0)
      : path_(std::move(path)), reject_line_(rejectLine) {}
  HRESULT ProcessLine(char* fields[5], int count, const char* path, int line) override {
    EXPECT_TRUE(count >= 1 && count <= 5) << count;
    EXPECT_EQ(path_, path);
    EXPECT_GT(line, last_line_);
    last_line_ = line;
    std::string record = std::to_string(line) + ":";
    for (int i = 0; i < count && i < 5; ++i) {
      const std::string field = fields[i];
      EXPECT_TRUE(!field.empty() && field.size() < 2048);
      EXPECT_EQ(std::string::npos, field.find_first_of(" \t\n")) << field;
      record += (i > 0 ? "|" : "") + field;
    }
    lines.push_back(record);
    return line == reject_line_ ? E_FAIL : S_OK;
  }
  Lines lines;

 private:
  std::string path_;
  int reject_line_;
  int last_line_ = 0;
};

// Reads content written as a file and returns what the reader saw; no message is expected.
Lines ReadAll(const std::string& content, HRESULT expected = S_OK, int rejectLine = 0) {
  TempDir dir;
  const std::string path = dir.Write("x.dicts", content);
  RecordingReader reader(path, rejectLine);
  StderrCapture err;
  EXPECT_EQ(expected, ReadDictionaryFile(path.c_str(), &reader));
  EXPECT_EQ("", err.Take());
  return reader.lines;
}

TEST(ReadDictionaryFile, CommentsBlanksAndFields) {
  static const char kContent[] =
      "# comment\n// comment\n\n \t \n"  // lines 1-4 are skipped but counted
      "A\tB  \t C\r\n"
      "  # word\n/x\n\t//y\n"  // comments only in the first column
      "1 2 3 4 5 6 7\n"        // at most five fields
      "D\vE\fF G\n"            // only tab, line feed and space separate
      "N\0ul Z\n"              // the line ends, for the reader, at its NUL
      "last line";
  EXPECT_EQ((Lines{"5:A|B|C\r", "6:#|word", "7:/x", "8://y", "9:1|2|3|4|5", "10:D\vE\fF|G", "11:N",
                   "12:last|line"}),
            ReadAll(std::string(kContent, sizeof kContent - 1)));
}

TEST(ReadDictionaryFile, LongLinesComeInPiecesThatEachCount) {
  const std::string a(2047, 'a');
  const std::string b(953, 'b');
  // 3000 characters are two lines; exactly 2047 leave the newline as a blank piece (line 4).
  EXPECT_EQ((Lines{"1:" + a, "2:" + b, "3:" + a, "5:next"}),
            ReadAll(a + b + "\n" + a + "\nnext\n"));
}

TEST(ReadDictionaryFile, ARejectedLineStopsTheFile) {
  EXPECT_EQ((Lines{"2:A", "3:B|C"}), ReadAll("# one\nA\nB C\nD\n", E_FAIL, 3));
}

TEST(ReadDictionaryFile, MissingFileOrReaderFails) {
  RecordingReader reader("/no/such/dir/x.dicts");
  StderrCapture err;
  EXPECT_EQ(E_FAIL, ReadDictionaryFile("/no/such/dir/x.dicts", nullptr));
  EXPECT_EQ(E_FAIL, ReadDictionaryFile("/no/such/dir/x.dicts", &reader));
  EXPECT_EQ("Error : fopen on /no/such/dir/x.dicts\n--> fopen(): No such file or directory\n",
            err.Take());
  EXPECT_TRUE(reader.lines.empty());
}

TEST(ReadDictionaryFile, FifoDirectoryAndDeviceAreNotReadAndDoNotBlock) {
  TempDir dir;
  const std::string fifo = dir.path() + "/p.dicts";
  ASSERT_EQ(0, mkfifo(fifo.c_str(), 0600));
  StderrCapture err;
  for (const std::string& path : {fifo, dir.MakeDir("d.dicts"), std::string("/dev/zero")}) {
    RecordingReader reader(path);
    EXPECT_EQ(S_OK, ReadDictionaryFile(path.c_str(), &reader)) << path;
    EXPECT_TRUE(reader.lines.empty()) << path;
  }
  EXPECT_EQ("", err.Take());
}

// One to six edits: an odd byte (NUL included) or a run longer than the line buffer is
// inserted, or the tail is cut.
std::string Mutate(std::string bytes, std::mt19937& rng) {
  static const char kOdd[] = "\n\r \t#/{}\x80\xff";
  for (unsigned edits = 1 + rng() % 6; edits > 0; --edits) {
    const size_t at = bytes.empty() ? 0 : rng() % bytes.size();
    const unsigned op = rng() % 3;
    if (op == 0) bytes.insert(at, 1, kOdd[rng() % sizeof kOdd]);
    if (op == 1) bytes.insert(at, std::string(1 + rng() % 3000, 'z'));
    if (op == 2) bytes.resize(at);
  }
  return bytes;
}

// Any bytes: the recording reader's checks hold, and the real reader of the file's kind returns
// S_OK or E_FAIL without crashing (the sanitizer builds check memory).
TEST(DictionaryFileFuzz, SeedCorpusAndMutations) {
  ZELSysTSDicReader dicts;
  ZELSysTSIidReader iidts;
  ZELSysTSClsidReader clsidts;
  ZELSysTSDictionaryReader* real[] = {&dicts, &iidts, &clsidts};
  std::mt19937 rng(20240611);
  for (const std::string name :
       {"binary.dicts", "crlf.iidts", "vehicle.clsidts", "vehicle.dicts", "vehicle.iidts"}) {
    std::stringstream seed;
    seed << std::ifstream(ZELSYSTS_DICTIONARY_CORPUS_DIR "/" + name, std::ios::binary).rdbuf();
    ASSERT_FALSE(seed.str().empty()) << name;
    for (int round = 0; round < 12; ++round) {
      SCOPED_TRACE(name + " round " + std::to_string(round));
      TempDir dir;
      const std::string path = dir.Write(name, round == 0 ? seed.str() : Mutate(seed.str(), rng));
      RecordingReader recorder(path);
      StderrCapture err;  // the real readers' messages are not checked here
      ASSERT_EQ(S_OK, ReadDictionaryFile(path.c_str(), &recorder));
      const HRESULT result =
          ReadDictionaryFile(path.c_str(), real[DictionaryFileKind(name.c_str()) - 1]);
      ASSERT_TRUE(result == S_OK || result == E_FAIL) << result;
    }
  }
}

}  // namespace
