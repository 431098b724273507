// One dictionary file: its kind by name, and the reading of its lines into a reader.
//
// A line is read into a fixed 2048-byte buffer and split there in place: no memory is obtained
// per line or per field. Only regular files are read: a fifo, a device or a directory named like
// a dictionary file is opened without blocking and then left unread, so that it can neither hang
// the load nor feed it endless bytes.
#include "dictionaryfiles/DictionaryFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "dictionaryfiles/DictionaryMessages.h"
#include "dictionaryfiles/DictionaryReaders.h"
#include "util/Observer.h"

namespace {

constexpr int kLineBufferBytes = 2048;
constexpr int kMaxFields = 5;

bool EndsWith(const char* name, size_t length, const char* ending, size_t endingLength) {
  return std::memcmp(name + length - endingLength, ending, endingLength) == 0;
}

bool IsSeparator(char c) {
  return c == '\t' || c == '\n' || c == ' ';
}

// Bytes past a line's NUL that the split may read (eight at a time); the buffer has them, and
// they are set, so that no read is out of bounds or of an unset byte.
constexpr int kSplitSlack = 8;

// The first byte at or after p that is a separator or the NUL ending the text. Eight bytes are
// tested at once for any byte below '!' (the only candidates); the lowest such byte is exact,
// and a control character other than the separators is ordinary and passed.
char* EndOfField(char* p) {
  static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the lowest byte comes first");
  constexpr uint64_t kOnes = 0x0101010101010101ull;
  constexpr uint64_t kHighs = 0x8080808080808080ull;
  for (;;) {
    uint64_t word;
    std::memcpy(&word, p, sizeof word);
    const uint64_t low = (word - kOnes * '!') & ~word & kHighs;
    if (low == 0) {
      p += sizeof word;
      continue;
    }
    p += __builtin_ctzll(low) / 8;
    if (*p == '\0' || IsSeparator(*p)) return p;
    ++p;
  }
}

// Splits line in place into at most kMaxFields fields: a field begins at a non-separator at the
// start of the line or after a separator, and the separator after it becomes a NUL. A sixth
// field ends the walk (the line is full). Returns the count (0 for an empty line or one of
// separators only). The line's buffer must have kSplitSlack set bytes past its NUL.
int SplitLine(char* line, char* fields[kMaxFields]) {
  int count = 0;
  char* p = line;
  for (;;) {
    while (IsSeparator(*p)) ++p;
    if (*p == '\0' || count == kMaxFields) break;
    fields[count++] = p;
    p = EndOfField(p);
    if (*p == '\0') break;
    *p++ = '\0';
  }
  for (int i = count; i < kMaxFields; ++i) fields[i] = nullptr;
  return count;
}

void ReportOpenFailure(const char* path) {
  const int error = errno;
  WriteDictionaryMessage(path, 0, "Error : fopen on %s\n--> ", path);
  errno = error;
  std::perror("fopen()");
  ObserveDictionaryMessage(path, 0, "fopen(): %s\n", std::strerror(error));
}

// Tells an observer of the line just read into buffer (a regular file's, so that ftell counts
// the bytes consumed): its bytes up to the first NUL and what the reader cannot tell from them.
// start: the file position before the read. Returns the position after it.
long ObserveLine(FILE* file, const char* buffer, long start, const char* path, int lineNumber) {
  const long end = std::ftell(file);
  const size_t length = std::strlen(buffer);
  const size_t consumed = start >= 0 && end >= start ? static_cast<size_t>(end - start) : length;
  long flags = 0;
  if (consumed > length) flags |= zelsysts::kLineHasNul;
  if (consumed == static_cast<size_t>(kLineBufferBytes - 1) && buffer[consumed - 1] != '\n') {
    flags |= zelsysts::kLineFilledBuffer;
  }
  size_t last = length;
  while (last > 0 && IsSeparator(buffer[last - 1])) --last;
  if (last > 0 && buffer[last - 1] == '\r') flags |= zelsysts::kLineEndsInCr;
  zelsysts::Observation observation{zelsysts::Step::kLine};
  observation.file = path;
  observation.line = lineNumber;
  observation.text[0] = buffer;
  observation.value = flags;
  zelsysts::Observe(observation);
  return end;
}

// Tells an observer how the reading of a file ended.
HRESULT ObserveFileEnd(const char* path, int lastLine, HRESULT result) {
  if (zelsysts::Observed()) {
    zelsysts::Observation observation{zelsysts::Step::kFileEnd};
    observation.file = path;
    observation.line = lastLine;
    observation.value = result;
    zelsysts::Observe(observation);
  }
  return result;
}

// Opens path for reading without ever blocking (a fifo would block in a plain fopen). Returns
// the stream, or null with errno set when the file cannot be opened. *regular tells whether the
// file is a regular file; other files are returned open but must not be read.
FILE* OpenWithoutBlocking(const char* path, bool* regular) {
  const int fd = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return nullptr;
  struct stat info;
  if (fstat(fd, &info) != 0) {
    const int error = errno;
    close(fd);
    errno = error;
    return nullptr;
  }
  *regular = S_ISREG(info.st_mode);
  FILE* file = fdopen(fd, "r");
  if (file == nullptr) {
    const int error = errno;
    close(fd);
    errno = error;
  }
  return file;
}

}  // namespace

int DictionaryFileKind(const char* name) {
  if (name == nullptr) return static_cast<int>(DicoFileKind::None);
  const size_t n = std::strlen(name);
  if (n < 7) return static_cast<int>(DicoFileKind::None);
  if (EndsWith(name, n, ".dicts", 6)) return static_cast<int>(DicoFileKind::Dicts);
  if (EndsWith(name, n, ".iidts", 6)) return static_cast<int>(DicoFileKind::Iidts);
  if (n < 9) return static_cast<int>(DicoFileKind::None);
  if (EndsWith(name, n, ".clsidts", 8)) return static_cast<int>(DicoFileKind::Clsidts);
  return static_cast<int>(DicoFileKind::None);
}

int IsDictionaryFile(const struct dirent* entry) {
  if (entry == nullptr) return 0;
  return DictionaryFileKind(entry->d_name) != static_cast<int>(DicoFileKind::None) ? 1 : 0;
}

HRESULT ReadDictionaryFile(const char* path, ZELSysTSDictionaryReader* reader) {
  if (reader == nullptr || path == nullptr) return E_FAIL;
  bool regular = false;
  FILE* file = OpenWithoutBlocking(path, &regular);
  if (file == nullptr) {
    if (errno == ENOMEM) return E_OUTOFMEMORY;  // a file that exists, read at the next load
    ReportOpenFailure(path);
    return ObserveFileEnd(path, 0, E_FAIL);
  }
  if (!regular) {
    // Nothing to read, as for a directory, whose reads fail at once.
    std::fclose(file);
    if (zelsysts::Observed()) {
      zelsysts::Observation observation{zelsysts::Step::kFileNotRegular};
      observation.file = path;
      zelsysts::Observe(observation);
    }
    return ObserveFileEnd(path, 0, S_OK);
  }

  char buffer[kLineBufferBytes + kSplitSlack];
  std::memset(buffer, 0, sizeof buffer);
  int lineNumber = 0;
  HRESULT result = S_OK;
  const bool observed = zelsysts::Observed();
  long position = observed ? std::ftell(file) : 0;
  // A line longer than the buffer comes in pieces; each piece counts as a line.
  while (std::fgets(buffer, kLineBufferBytes, file) != nullptr) {
    if (lineNumber < INT_MAX) ++lineNumber;
    if (observed) position = ObserveLine(file, buffer, position, path, lineNumber);
    if (buffer[0] == '#') continue;                      // comment, first column only
    if (buffer[0] == '/' && buffer[1] == '/') continue;  // comment, first column only
    char* fields[kMaxFields];
    const int count = SplitLine(buffer, fields);
    if (count == 0) continue;  // empty, or separators only
    const HRESULT line = reader->ProcessLine(fields, count, path, lineNumber);
    if (line == E_OUTOFMEMORY) {
      result = E_OUTOFMEMORY;  // not a rejection: the other lines are entered
    } else if (line < 0) {
      std::fclose(file);
      // The rest of the file is not read; earlier lines stay in effect.
      return ObserveFileEnd(path, lineNumber, E_FAIL);
    }
  }
  std::fclose(file);
  return ObserveFileEnd(path, lineNumber, result);
}
