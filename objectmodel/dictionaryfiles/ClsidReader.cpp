// ".clsidts" lines: {CLSID} class [library]. The library is kept as written (no prefix cut).
#include <cstdio>

#include "ZELSysTSConvertStringToGUID.h"
#include "dictionary/ClsidTable.h"
#include "dictionaryfiles/DictionaryReaders.h"

HRESULT ZELSysTSClsidReader::ProcessLine(char* fields[5], int count, const char* path, int line) {
  if (count != 2 && count != 3) {
    std::fprintf(stderr, "Problem reading dico name %s line %d\n", path, line);
    return E_FAIL;
  }
  const char* clsidText = fields[0];
  const char* className = fields[1];
  const char* library = count == 3 ? fields[2] : nullptr;
  _GUID clsid;
  if (ZELSysTSConvertStringToGUID(clsidText, clsid) != 0) {
    std::fprintf(stderr, "Problem converting CLSID in %s line %d\n", path, line);
    return E_FAIL;
  }
  bool outOfMemory = false;
  if (ClsidTable::Insert(clsid, className, library, &outOfMemory) != nullptr) return S_OK;
  if (outOfMemory) return E_OUTOFMEMORY;  // not a conflict: nothing to report

  std::fprintf(stderr, "Error in dictionary %s line %d\n", path, line);
  // A two-field line has no library; it is shown as "(null)".
  std::fprintf(stderr, "Can not add class '%s %s %s'\n", className, clsidText,
               library != nullptr ? library : "(null)");
  return E_FAIL;
}
