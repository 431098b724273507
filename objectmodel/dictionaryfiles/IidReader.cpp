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
    ObserveIdentifierRecord(zelsysts::Step::kIidRecord, path, line, iidText, name, nullptr, iid,
                            inserted > 0 ? (known ? zelsysts::kRecordSame : zelsysts::kRecordAdded)
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
