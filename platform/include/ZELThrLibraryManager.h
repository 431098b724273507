// ZELThrLibraryManager: loading implementation libraries by name and finding their functions.
//
// Library names become file names thus: a name ending in ".so" is used as it stands; a name
// starting with "lib" gets ".so" appended; any other name N becomes "libN.so". The file is then
// found by the dynamic loader's own search (LD_LIBRARY_PATH, run paths, system directories).
// A null or empty name, or one containing '/', is refused: a library is a name, never a path.
//
// Libraries are opened with RTLD_NOW | RTLD_GLOBAL and never closed: whatever a library
// registered in its initialisation, and every function address handed out, stays valid for the
// life of the process. Every failure is a null result; nothing is printed.
//
// Thread safety: all functions may be called from any thread at once. No lock of this class is
// held while a library initialises, so an initialiser may call back into the object model.
#pragma once

#include "ZELSysTSPlatformExport.h"

class ZELSYSTS_PLATFORM_EXPORT ZELThrLibraryManager {
 public:
  // Loads the library (running its initialisation the first time). Returns its handle, or null.
  static void* LoadLibrary(const char* library);

  // Address of the exported symbol `function` in `library`, loading the library first if needed.
  // Null when the library cannot be loaded or does not export the symbol.
  static void* GetFunctionAddress(const char* library, const char* function);
};
