// The readers of the three kinds of dictionary file. Each checks the fields of one line and
// enters it into its table; all are stateless and keep no pointer into the line (what they keep
// is interned by the table). They run only inside a load, under the dictionary lock.
//
// Messages go to standard error, "%s line %d" filled with the file's path and the line number.
// A line that could not be entered for lack of memory is neither rejected nor reported: the
// reader answers E_OUTOFMEMORY, the rest of the file is read, and the load is not complete.
#pragma once

#include "ZELSysTSTypes.h"

#ifndef E_OUTOFMEMORY
#define E_OUTOFMEMORY ((HRESULT)0x8007000EL)
#endif

class ZELSysTSDictionaryReader {
 public:
  // fields: five slots of which the first `count` (1 to 5) are set, each a NUL-terminated field
  // of the line, valid only during the call. Returns 0 when the line is accepted, E_FAIL (after
  // the reader's messages) when it is rejected, and the loader then stops reading the file;
  // E_OUTOFMEMORY, silently, when memory ran out while entering it.
  virtual HRESULT ProcessLine(char* fields[5], int count, const char* path, int line) = 0;

 protected:
  ~ZELSysTSDictionaryReader() = default;
};

// ".dicts": class interface library [ITFLEAF leaf | EXTENDED_BY class]...
class ZELSysTSDicReader final : public ZELSysTSDictionaryReader {
 public:
  HRESULT ProcessLine(char* fields[5], int count, const char* path, int line) override;
};

// ".iidts": {IID} interface
class ZELSysTSIidReader final : public ZELSysTSDictionaryReader {
 public:
  HRESULT ProcessLine(char* fields[5], int count, const char* path, int line) override;
};

// ".clsidts": {CLSID} class [library]
class ZELSysTSClsidReader final : public ZELSysTSDictionaryReader {
 public:
  HRESULT ProcessLine(char* fields[5], int count, const char* path, int line) override;
};
