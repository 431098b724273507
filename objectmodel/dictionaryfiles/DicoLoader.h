// DicoLoader: reads every dictionary file of the process exactly once, at first need, from the
// directories named by ZELDictionaryPath (separated by ':'). Files are recognised by their
// ending (".dicts", ".iidts", ".clsidts"), read in alphasort order per directory, and a file
// name met in an earlier directory hides later files of that name.
//
// Thread safety: Load may be called from any thread any number of times. The loaded flag is
// tested without a lock, then again under the dictionary lock, which is held for the whole walk;
// it is set behind a full fence once a walk has completed, and never reset. A thread that sees
// it set reads the store and the identifier tables without locking.
#pragma once

#include <dirent.h>

#include "ZELSysTSTypes.h"

class ZELSysTSDictionaryReader;

enum class DicoFileKind : int { None = 0, Dicts = 1, Iidts = 2, Clsidts = 3 };

// The kind of a file name or path, by its ending (exact, case-sensitive, at least one character
// before the ending), as an int.
int DictionaryFileKind(const char* name);
// scandir filter: 1 when the entry's name is a dictionary file, else 0 (also for null).
int IsDictionaryFile(const struct dirent* entry);
// Reads one file line by line (2048-byte buffer; longer lines come in pieces, each counted as a
// line), skips comments ("#" or "//" in the first column) and blank lines, splits each line on
// tab, line feed and space into at most 5 fields and hands them to reader. 0 when the whole
// file was read; E_FAIL for a null reader, a file that cannot be opened (with the fopen
// message), or a rejected line (the rest of the file is not read). Only regular files are read:
// a fifo, device or directory of that name is opened without blocking and gives 0, unread.
HRESULT ReadDictionaryFile(const char* path, ZELSysTSDictionaryReader* reader);

class DicoLoader {
 public:
  // Ensures that the dictionary files have been read. Writes
  // "Error in reading dictionaries : ZELDictionaryPath is not defined.\n" and stays unloaded
  // when ZELDictionaryPath is absent or ZELDictionaryNoPathNoFallback is present.
  static void Load();
  // True once a walk has completed.
  static bool IsLoaded();
};
