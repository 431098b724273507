// Fuzz-style robustness of the file reading and the three readers: the seed corpus, mutations
// of it and random bytes go through ReadDictionaryFile. Whatever the bytes, the reading returns
// S_OK or E_FAIL, hands the reader only well-formed lines and never crashes or hangs (the
// sanitizer builds check memory).
#include <dirent.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "RecordingReader.h"
#include "TestSupport.h"
#include "dictionaryfiles/DicoLoader.h"
#include "dictionaryfiles/DictionaryReaders.h"

namespace {

using zeltest::StderrCapture;
using zeltest::TempDir;

bool IsSeparator(char c) {
  return c == '\t' || c == '\n' || c == ' ';
}

// The properties of what any input hands to a reader.
void CheckRecordedLines(const std::vector<RecordedLine>& lines, size_t inputSize) {
  int previous = 0;
  for (const RecordedLine& line : lines) {
    ASSERT_GE(line.count, 1);
    ASSERT_LE(line.count, 5);
    ASSERT_EQ(static_cast<size_t>(line.count), line.fields.size());
    ASSERT_GT(line.line, previous);  // strictly increasing line numbers
    previous = line.line;
    ASSERT_LE(static_cast<size_t>(line.line), inputSize);  // every line holds at least a byte
    for (const std::string& field : line.fields) {
      ASSERT_FALSE(field.empty());
      ASSERT_LT(field.size(), 2048u);
      ASSERT_TRUE(std::none_of(field.begin(), field.end(), IsSeparator)) << field;
    }
  }
}

// Runs bytes, written as a file of the given ending, through a recording reader and through
// the real reader of that kind.
void FuzzOne(const std::string& bytes, const char* ending) {
  TempDir dir;
  const std::string path = dir.Write(std::string("f") + ending, bytes);
  StderrCapture err;  // the real readers' messages are expected and not checked here
  RecordingReader recorder;
  const HRESULT recorded = ReadDictionaryFile(path.c_str(), &recorder);
  ASSERT_EQ(S_OK, recorded);
  CheckRecordedLines(recorder.lines, bytes.size());

  ZELSysTSDicReader dicts;
  ZELSysTSIidReader iidts;
  ZELSysTSClsidReader clsidts;
  ZELSysTSDictionaryReader* readers[] = {&dicts, &iidts, &clsidts};
  ZELSysTSDictionaryReader* reader = readers[DictionaryFileKind(path.c_str()) - 1];
  const HRESULT result = ReadDictionaryFile(path.c_str(), reader);
  ASSERT_TRUE(result == S_OK || result == E_FAIL) << result;
}

std::vector<std::string> CorpusFiles() {
  const std::string dir = ZELSYSTS_DICTIONARY_CORPUS_DIR;
  std::vector<std::string> names;
  if (DIR* d = opendir(dir.c_str())) {
    while (const dirent* e = readdir(d)) {
      if (DictionaryFileKind(e->d_name) != 0) names.push_back(dir + "/" + e->d_name);
    }
    closedir(d);
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

const char* EndingOf(const std::string& path) {
  switch (static_cast<DicoFileKind>(DictionaryFileKind(path.c_str()))) {
    case DicoFileKind::Dicts:
      return ".dicts";
    case DicoFileKind::Iidts:
      return ".iidts";
    default:
      return ".clsidts";
  }
}

std::string Mutate(std::string bytes, std::mt19937& rng) {
  static const char kInteresting[] = {'\0', '\n', '\r', ' ', '\t', '#',    '/',
                                      '{',  '}',  '-',  'F', 'g',  '\x80', '\xff'};
  const int edits = 1 + static_cast<int>(rng() % 8);
  for (int e = 0; e < edits; ++e) {
    const size_t at = bytes.empty() ? 0 : rng() % bytes.size();
    switch (rng() % 5) {
      case 0:
        if (!bytes.empty()) bytes[at] = static_cast<char>(rng());
        break;
      case 1:
        bytes.insert(at, 1, kInteresting[rng() % sizeof kInteresting]);
        break;
      case 2:
        if (!bytes.empty()) bytes.erase(at, 1 + rng() % 16);
        break;
      case 3:
        bytes.insert(at, std::string(1 + rng() % 3000, static_cast<char>('a' + rng() % 26)));
        break;
      default:
        bytes.resize(at);
        break;
    }
  }
  return bytes;
}

TEST(DictionaryFileFuzz, SeedCorpusAndItsMutations) {
  const std::vector<std::string> corpus = CorpusFiles();
  ASSERT_GE(corpus.size(), 5u) << "seed corpus not found under " ZELSYSTS_DICTIONARY_CORPUS_DIR;
  std::mt19937 rng(20240611);
  for (const std::string& file : corpus) {
    const std::string seed = ReadFile(file);
    ASSERT_FALSE(seed.empty()) << file;
    FuzzOne(seed, EndingOf(file));
    for (int i = 0; i < 40; ++i) {
      FuzzOne(Mutate(seed, rng), EndingOf(file));
      if (HasFatalFailure()) return;
    }
  }
}

TEST(DictionaryFileFuzz, RandomBytes) {
  std::mt19937 rng(1234567);
  static const char* const kEndings[] = {".dicts", ".iidts", ".clsidts"};
  static const char* const kWords[] = {
      "ITFLEAF", "EXTENDED_BY", "{0C1D2E3F-4A5B-6C7D-8E9F-A0B1C2D3E4F5}",
      "Vehicle", "IVehicle",    "libImpl",
      "#",       "//",          " ",
      "\t",      "\n",          "\r\n"};
  for (int i = 0; i < 150; ++i) {
    std::string bytes;
    const size_t length = rng() % 6000;
    while (bytes.size() < length) {
      if (rng() % 3 == 0) {
        bytes += kWords[rng() % (sizeof kWords / sizeof kWords[0])];
      } else {
        bytes += static_cast<char>(rng());
      }
    }
    FuzzOne(bytes, kEndings[i % 3]);
    if (HasFatalFailure()) return;
  }
}

}  // namespace
