// A reader for tests: records every line it is handed (fields copied, count, path, number) and
// rejects the line whose number is rejectLine (0: none).
#pragma once

#include <string>
#include <vector>

#include "dictionaryfiles/DictionaryReaders.h"

struct RecordedLine {
  std::vector<std::string> fields;
  int count;
  std::string path;
  int line;
};

class RecordingReader final : public ZELSysTSDictionaryReader {
 public:
  explicit RecordingReader(int rejectLine = 0) : reject_line_(rejectLine) {}

  HRESULT ProcessLine(char* fields[5], int count, const char* path, int line) override {
    RecordedLine record{{}, count, path, line};
    for (int i = 0; i < count && i < 5; ++i) record.fields.emplace_back(fields[i]);
    lines.push_back(record);
    return line == reject_line_ ? E_FAIL : S_OK;
  }

  std::vector<RecordedLine> lines;

 private:
  int reject_line_;
};
