// ".iidts" lines: {IID} interface. The IID/name relation is one-to-one (IidTable); a line that
// repeats a known pair exactly is accepted silently.
#include <cstdio>
#include <cstring>

#include "ZELSysTSConvertStringToGUID.h"
#include "ZELSysTSGuid.h"
#include "dictionary/IidTable.h"
#include "dictionaryfiles/DictionaryReaders.h"

HRESULT ZELSysTSIidReader::ProcessLine(char* fields[5], int count, const char* path, int line) {
  if (count != 2) {
    std::fprintf(stderr, "Error in IId dictionary %s line %d\n", path, line);
    return E_FAIL;
  }
  const char* iidText = fields[0];
  const char* name = fields[1];
  _GUID iid;
  if (ZELSysTSConvertStringToGUID(iidText, iid) != 0) {
    std::fprintf(stderr, "Error in dictionary %s line %d\n", path, line);
    std::fprintf(stderr, "Invalid iid :%s\n\n", iidText);
    return E_FAIL;
  }
  const int inserted = IidTable::Insert(iid, name);
  if (inserted > 0) return S_OK;
  if (inserted < 0) return E_OUTOFMEMORY;  // not a conflict: nothing to report

  std::fprintf(stderr, "Error in dictionary %s line %d\n", path, line);
  std::fprintf(stderr, "Can not add interface '%s %s'\n", iidText, name);
  const char* knownName = IidTable::FindName(iid);
  if (knownName != nullptr && std::strcmp(knownName, name) != 0) {
    std::fprintf(stderr, "The iid is already defined with interface name '%s'\n", knownName);
    std::fputs("Check dictionaries.\n\n", stderr);
  } else {
    const _GUID* knownIid = IidTable::FindIid(name);
    if (knownIid != nullptr && *knownIid != iid) {
      std::fputs("The interface name is already defined with another iid\n", stderr);
    }
  }
  return E_FAIL;
}
