// ".dicts" lines: class interface library, then at most one "ITFLEAF" and one "EXTENDED_BY"
// pair, in either order. A line is rejected only for its shape; what the store thinks of the
// entry (a conflict writes the store's own message) never rejects it.
#include <cstdio>
#include <cstring>

#include "dictionary/DicoStore.h"
#include "dictionaryfiles/DictionaryReaders.h"

namespace {

HRESULT RejectDicLine(const char* path, int line) {
  std::fprintf(stderr, "Problem reading dico : %s line %d\n", path, line);
  return E_FAIL;
}

}  // namespace

HRESULT ZELSysTSDicReader::ProcessLine(char* fields[5], int count, const char* path, int line) {
  if (count <= 2 || count == 4 || count > 5) return RejectDicLine(path, line);
  const char* leaf = nullptr;
  const char* extendedBy = nullptr;
  // Keyword/value pairs from the fourth field on; with at most five fields there is one pair.
  for (int i = 3; i < count; i += 2) {
    if (i + 1 >= count) return RejectDicLine(path, line);  // a keyword without a value
    if (leaf == nullptr && std::strcmp(fields[i], "ITFLEAF") == 0) {
      leaf = fields[i + 1];
    } else if (extendedBy == nullptr && std::strcmp(fields[i], "EXTENDED_BY") == 0) {
      extendedBy = fields[i + 1];
    } else {
      return RejectDicLine(path, line);  // unknown keyword, or one given twice
    }
  }
  // The store reports its own refusals; they do not reject the line.
  bool outOfMemory = false;
  DicoStore::InsertByNames(fields[0], fields[1], fields[2], leaf, extendedBy, nullptr, nullptr,
                           &outOfMemory);
  return outOfMemory ? E_OUTOFMEMORY : S_OK;
}
