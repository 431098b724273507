// Fuzz targets, one per build (ZELSYSTS_FUZZ_TARGET); main() replays files without libFuzzer.
// 1 ReaderLineFuzz, a line, and 2 DictionaryFileFuzz, a file, each after a byte choosing the
// reader ('0' .dicts, '1' .iidts, '2' .clsidts: its value modulo 3); 3 DirectoryLoadFuzz, the
// files of a directory, NUL-separated (see kNames); 4 GuidTextFuzz, a GUID text.
#include <dirent.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "ZELSysTSConvertStringToGUID.h"
#include "ZELSysTSGuid.h"
#include "dictionary/ClsidTable.h"
#include "dictionary/DicoStore.h"
#include "dictionary/IidTable.h"
#include "dictionaryfiles/DictionaryFile.h"
#include "dictionaryfiles/DictionaryReaders.h"

#define FUZZ_CHECK(c) \
  ((c) ? (void)0 : (dprintf(2, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #c), abort()))

inline ZELSysTSDictionaryReader* const g_readers[4] = {  // 1 .dicts, 2 .iidts, 3 .clsidts
    nullptr, new ZELSysTSDicReader, new ZELSysTSIidReader, new ZELSysTSClsidReader};
inline const std::string kNames[] = {"b.iidts", "a.dicts", "a.clsidts", "notes.txt", ".dicts"};
inline const int kKinds[] = {2, 1, 3};  // the readers of the dictionary files among kNames

struct Messages {  // `stderr`, where the product writes, in memory; libFuzzer and ASan use fd 2
  static inline char text[1 << 20];
  static inline FILE* const stream = fmemopen(text, sizeof text, "w");
  static void Begin() { stderr = stream, rewind(stream); }
  static std::string End() { return fflush(stream), std::string(text, ftell(stream)); }
};

inline bool NoLockHeld() {  // unlocking a recursive mutex succeeds only for its holder
  auto held = [](ZELSmartMutex& m) { return m.Handle() && !pthread_mutex_unlock(m.Handle()); };
  return !held(SharedLocks::DictionaryLock()) && !held(SharedLocks::IidTableLock()) &&
         !held(SharedLocks::ClsidTableLock()) && !held(SharedLocks::StringPoolLock()) &&
         !held(SharedLocks::GuidPoolLock());
}

// The fields of a line as the file reader splits them: none for a comment, else at most five.
inline int Split(std::string& line, char* f[5]) {
  if (line[0] == '#' || line.compare(0, 2, "//") == 0) return 0;
  int n = 0;
  for (char *s, *t = strtok_r(&line[0], "\t\n ", &s); t && n < 5; t = strtok_r(0, "\t\n ", &s))
    f[n++] = t;
  return n;
}

inline bool Shaped(char* f[5], int count) {  // what makes a .dicts line accepted

  return count == 3 || (count == 5 && (!strcmp(f[3], "ITFLEAF") || !strcmp(f[3], "EXTENDED_BY")));
}

inline bool Recorded(int kind, char* f[5], int count) {  // what the line says is in its table
  _GUID g{};
  if (kind == 1) return count >= 3 && DicoStore::FindByNames(f[0], f[1]) != nullptr;
  if (count < 2 || ZELSysTSConvertStringToGUID(f[0], g) != 0) return false;
  const ClsidEntry* c = ClsidTable::Find(g);
  const char* name = kind == 2 ? IidTable::FindName(g) : c ? c->class_name : nullptr;
  return name && !strcmp(name, f[1]) && (kind == 3 || *IidTable::FindIid(f[1]) == g) &&
         (kind == 2 || count == 2 || !c->library_name || !strcmp(c->library_name, f[2]));
}

// A rejection names a line with fields (misshapen, for .dicts); the lines before it are recorded.
inline void CheckFile(const std::string& content, const std::string& path, int kind, HRESULT result,
                      const std::string& messages) {
  const std::string tagged = messages + path + " line 0";  // naming no line, a rejection names 0
  const int stop = result ? atoi(&tagged[tagged.find(path + " line ") + path.size() + 6]) : -1;
  int number = 0;
  for (size_t from = 0, n = 0; number != stop && from < content.size(); from += n) {
    n = std::min(std::min(content.find('\n', from), content.size() - 1) - from + 1, size_t(2047));
    std::string line = content.substr(from, n);
    char* f[5] = {};
    const int count = Split(line, f);
    FUZZ_CHECK(++number == stop ? count > 0 && (kind != 1 || !Shaped(f, count))
                                : count == 0 || Recorded(kind, f, count));
  }
  FUZZ_CHECK(stop < 0 || (stop > 0 && number == stop));
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
#if ZELSYSTS_FUZZ_TARGET == 4
  char* text = strndup(reinterpret_cast<const char*>(data), size);  // no room beyond its end
  _GUID g{}, back{};
  const bool form = strlen(text) == 38 && text[0] == '{' && text[37] == '}';
  FUZZ_CHECK((ZELSysTSConvertStringToGUID(text, g) == 0) == form);
  char p[39];  // the printed form, which reads back to the same GUID, leniently and strictly
  snprintf(p, sizeof p, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", g.Data1, g.Data2,
           g.Data3, g.Data4[0], g.Data4[1], g.Data4[2], g.Data4[3], g.Data4[4], g.Data4[5],
           g.Data4[6], g.Data4[7]);
  FUZZ_CHECK(ZELSysTSConvertStringToGUID(p, back) == 0 && back == g && ZELSysTSGuid(p) == g);
  int off = form ? 0 : 2;  // characters from the printed form, but for case
  for (int i = 0; form && i < 38; ++i) off += tolower(uint8_t(text[i])) != tolower(p[i]);
  try {  // a literal is accepted at 0 off only; tried up to 1 off: throwing is slow
    FUZZ_CHECK(off > 1 || (ZELSysTSGuid(*reinterpret_cast<const char(*)[39]>(text)) == g && !off));
  } catch (const std::invalid_argument&) {
    FUZZ_CHECK(off == 1);
  }
  free(text);
#elif ZELSYSTS_FUZZ_TARGET == 3
  static const std::string dir = "/dev/shm/zelfuzz." + std::to_string(getpid()) + "/";
  [[maybe_unused]] static const int removed = atexit([] { std::filesystem::remove_all(dir); });
  std::filesystem::create_directory(dir);
  std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
  std::string contents[5];
  for (int i = 0; i < 5; ++i) {
    std::getline(in, contents[i], '\0');
    std::ofstream(dir + kNames[i], std::ios::binary) << contents[i];
  }
  dirent** list = nullptr;
  const int n = scandir(dir.c_str(), &list, IsDictionaryFile, alphasort);
  SharedLocks::DictionaryLock().LockF();
  for (int i = 0; i < n; free(list[i++])) {
    const std::string path = dir + list[i]->d_name;
    const int k = std::find(kNames, kNames + 5, list[i]->d_name) - kNames;
    FUZZ_CHECK(n == 3 && k < 3 && kKinds[k] == DictionaryFileKind(path.c_str()));
    Messages::Begin();
    const HRESULT result = ReadDictionaryFile(path.c_str(), g_readers[kKinds[k]]);
    CheckFile(contents[k], path, kKinds[k], result, Messages::End());
  }
  SharedLocks::DictionaryLock().UnlockF();
  free(list);
#else
  if (size == 0) return 0;
  const int kind = 1 + data[0] % 3;
  std::string content(reinterpret_cast<const char*>(data) + 1, size - 1);
  Messages::Begin();
#if ZELSYSTS_FUZZ_TARGET == 1
  char* f[5] = {};
  const int count = Split(content, f);
  const bool ok = g_readers[kind]->ProcessLine(f, count, "fuzz", 7) == S_OK;
  const std::string messages = Messages::End();
  FUZZ_CHECK(ok ? Recorded(kind, f, count) : messages.find("fuzz line 7\n") != -1ul);
  if (kind == 1) FUZZ_CHECK(ok == Shaped(f, count));
  // Well shaped, a line of the other kinds is refused only for a conflict, accepted silently.
  if (kind > 1 && count <= kind) FUZZ_CHECK(ok ? messages.empty() : !Recorded(kind, f, count));
#else
  static const int fd = memfd_create("fuzz", 0);
  static const std::string path = "/proc/self/fd/" + std::to_string(fd);
  FUZZ_CHECK(!ftruncate(fd, 0) && pwrite(fd, &content[0], size - 1, 0) == ssize_t(size - 1));
  const HRESULT result = ReadDictionaryFile(path.c_str(), g_readers[kind]);
  CheckFile(content, path, kind, result, Messages::End());
#endif
#endif
  FUZZ_CHECK(NoLockHeld());
  return 0;
}

#ifndef ZELSYSTS_LIBFUZZER
int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    std::ostringstream input;
    input << std::ifstream(argv[i], std::ios::binary).rdbuf();
    const std::string s = input.str();
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(s.data()), s.size());
  }
}
#endif
