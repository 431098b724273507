// ".clsidts" lines: {CLSID} class [library]. The library is kept as written (no prefix cut).
#include <cstdio>

#include "ZELSysTSConvertStringToGUID.h"
#include "dictionary/ClsidTable.h"
#include "dictionaryfiles/DictionaryMessages.h"
#include "dictionaryfiles/DictionaryReaders.h"
#include "util/Observer.h"

HRESULT ZELSysTSClsidReader::ProcessLine(char* fields[5], int count, const char* path, int line) {
  if (count != 2 && count != 3) {
    WriteDictionaryMessage(path, line, "Problem reading dico name %s line %d\n", path, line);
    return E_FAIL;
  }
  const char* clsidText = fields[0];
  const char* className = fields[1];
  const char* library = count == 3 ? fields[2] : nullptr;
  _GUID clsid;
  if (ZELSysTSConvertStringToGUID(clsidText, clsid) != 0) {
    WriteDictionaryMessage(path, line, "Problem converting CLSID in %s line %d\n", path, line);
    return E_FAIL;
  }
  bool outOfMemory = false;
  const bool observed = zelsysts::Observed();
  const bool known = observed && ClsidTable::Find(clsid) != nullptr;
  const ClsidEntry* entry = ClsidTable::Insert(clsid, className, library, &outOfMemory);
  if (observed) {
    ObserveIdentifierRecord(
        zelsysts::Step::kClsidRecord, path, line, clsidText, className, library, clsid,
        entry != nullptr ? (known ? zelsysts::kRecordSame : zelsysts::kRecordAdded)
        : outOfMemory    ? zelsysts::kRecordOutOfMemory
                         : zelsysts::kRecordConflict);
  }
  if (entry != nullptr) return S_OK;
  if (outOfMemory) return E_OUTOFMEMORY;  // not a conflict: nothing to report

  WriteDictionaryMessage(path, line, "Error in dictionary %s line %d\n", path, line);
  // A two-field line has no library; it is shown as "(null)".
  WriteDictionaryMessage(path, line, "Can not add class '%s %s %s'\n", className, clsidText,
                         library != nullptr ? library : "(null)");
  return E_FAIL;
}
