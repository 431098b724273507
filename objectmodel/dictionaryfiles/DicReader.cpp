// ".dicts" lines: class interface library, then at most one "ITFLEAF" and one "EXTENDED_BY"
// pair, in either order. A line is rejected only for its shape; what the store thinks of the
// entry (a conflict writes the store's own message) never rejects it.
#include <cstdio>
#include <cstring>

#include "dictionary/DicoStore.h"
#include "dictionaryfiles/DictionaryMessages.h"
#include "dictionaryfiles/DictionaryReaders.h"
#include "util/Observer.h"

namespace {

HRESULT RejectDicLine(const char* path, int line) {
  WriteDictionaryMessage(path, line, "Problem reading dico : %s line %d\n", path, line);
  return E_FAIL;
}

// Tells an observer what became of the line's record. found: the record of the pair before the
// insert; entry: the insert's result. Caller holds the dictionary lock (the loader's).
void ObserveRecord(char* fields[5], const char* leaf, const char* extendedBy, const char* path,
                   int line, const DicoEntry* found, const DicoEntry* entry, bool outOfMemory) {
  zelsysts::Observation observation{zelsysts::Step::kDictsRecord};
  observation.file = path;
  observation.line = line;
  observation.text[0] = fields[0];
  observation.text[1] = fields[1];
  // A successful insert agrees with the line: the record holds its library, as resolution
  // will name it.
  observation.text[2] = entry != nullptr ? entry->library_name : fields[2];
  observation.text[3] = leaf != nullptr ? leaf : extendedBy;
  observation.value = entry != nullptr
                          ? (found != nullptr ? zelsysts::kRecordSame : zelsysts::kRecordAdded)
                      : outOfMemory ? zelsysts::kRecordOutOfMemory
                                    : zelsysts::kRecordConflict;
  if (leaf != nullptr) observation.value |= zelsysts::kRecordLeaf;
  if (extendedBy != nullptr) observation.value |= zelsysts::kRecordExtendedBy;
  zelsysts::Observe(observation);
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
  const bool observed = zelsysts::Observed();
  const DicoEntry* found = observed ? DicoStore::FindByNames(fields[0], fields[1]) : nullptr;
  const DicoEntry* entry = DicoStore::InsertByNames(fields[0], fields[1], fields[2], leaf,
                                                    extendedBy, nullptr, nullptr, &outOfMemory);
  if (observed) ObserveRecord(fields, leaf, extendedBy, path, line, found, entry, outOfMemory);
  return outOfMemory ? E_OUTOFMEMORY : S_OK;
}
