// ClsidTable: the class identifier table, filled from ".clsidts" files: CLSID -> class name and
// the library that creates the class's objects (as written in the file, no prefix removed).
//
// One index by CLSID; an entry is never changed or removed (a later line cannot add a library to
// an entry made without one).
//
// Thread safety: inserts run only during the load of the dictionary files, under the dictionary
// lock that the loader holds; Find runs after DicoLoader::Load. The table lock (util/LockOrder.h)
// guards only the one-time initialisation.
#pragma once

#include "ZELSysTSTypes.h"

struct ClsidEntry {
  const _GUID* class_id;     // pooled
  const char* class_name;    // pooled
  const char* library_name;  // pooled, or null
};

class ClsidTable {
 public:
  // The entry that now stands for clsid, or null when the line conflicts with it (another class
  // name, or another library where both have one) or memory ran out (then *outOfMemory, when
  // given, is set to true and the table is as it was). libraryName may be null.
  static const ClsidEntry* Insert(const _GUID& clsid, const char* className,
                                  const char* libraryName, bool* outOfMemory = nullptr);
  // The entry of clsid, or null.
  static const ClsidEntry* Find(const _GUID& clsid);
  // Marks the table initialised, once, under SharedLocks::ClsidTableLock() (it needs no clearing).
  static void Initialize();
};
