// ".iidts" lines: {IID} interface. The IID/name relation is one-to-one (IidTable); a line that
// repeats a known pair exactly is accepted silently.
#include <cstdio>
#include <cstring>

#include "ZELSysTSConvertStringToGUID.h"
#include "ZELSysTSGuid.h"
#include "dictionary/IidTable.h"
#include "dictionaryfiles/DictionaryMessages.h"
#include "dictionaryfiles/DictionaryReaders.h"
#include "util/Observer.h"

namespace {

// Tells an observer what became of the line's identifier (outcome: zelsysts::kRecord*).
void ObserveRecord(const char* iidText, const char* name, const _GUID& iid, const char* path,
                   int line, long outcome) {
  zelsysts::Observation observation{zelsysts::Step::kIidRecord};
  observation.file = path;
  observation.line = line;
  observation.text[0] = iidText;
  observation.text[1] = name;
  observation.guid[0] = &iid;
  observation.value = outcome;
  zelsysts::Observe(observation);
}

}  // namespace

HRESULT ZELSysTSIidReader::ProcessLine(char* fields[5], int count, const char* path, int line) {
  if (count != 2) {
    WriteDictionaryMessage(path, line, "Error in IId dictionary %s line %d\n", path, line);
    return E_FAIL;
  }
  const char* iidText = fields[0];
  const char* name = fields[1];
  _GUID iid;
  if (ZELSysTSConvertStringToGUID(iidText, iid) != 0) {
    WriteDictionaryMessage(path, line, "Error in dictionary %s line %d\n", path, line);
    WriteDictionaryMessage(path, line, "Invalid iid :%s\n\n", iidText);
    return E_FAIL;
  }
  const bool observed = zelsysts::Observed();
  const bool known = observed && IidTable::FindName(iid) != nullptr;
  const int inserted = IidTable::Insert(iid, name);
  if (observed) {
    ObserveRecord(iidText, name, iid, path, line,
                  inserted > 0   ? (known ? zelsysts::kRecordSame : zelsysts::kRecordAdded)
                  : inserted < 0 ? zelsysts::kRecordOutOfMemory
                                 : zelsysts::kRecordConflict);
  }
  if (inserted > 0) return S_OK;
  if (inserted < 0) return E_OUTOFMEMORY;  // not a conflict: nothing to report

  WriteDictionaryMessage(path, line, "Error in dictionary %s line %d\n", path, line);
  WriteDictionaryMessage(path, line, "Can not add interface '%s %s'\n", iidText, name);
  const char* knownName = IidTable::FindName(iid);
  if (knownName != nullptr && std::strcmp(knownName, name) != 0) {
    WriteDictionaryMessage(path, line, "The iid is already defined with interface name '%s'\n",
                           knownName);
    WriteDictionaryMessage(path, line, "Check dictionaries.\n\n");
  } else {
    const _GUID* knownIid = IidTable::FindIid(name);
    if (knownIid != nullptr && *knownIid != iid) {
      WriteDictionaryMessage(path, line,
                             "The interface name is already defined with another iid\n");
    }
  }
  return E_FAIL;
}
