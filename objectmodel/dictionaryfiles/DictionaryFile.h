// One dictionary file: its kind, told by the ending of its name, and the reading of its lines
// into the reader of that kind. Used by the loader's walk (DicoLoader) under the dictionary lock.
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
// message), or a rejected line (the rest of the file is not read); E_OUTOFMEMORY when memory ran
// out to open the file or to enter a line (the other lines are read). Only regular files are read:
// a fifo, device or directory of that name is opened without blocking and gives 0, unread.
HRESULT ReadDictionaryFile(const char* path, ZELSysTSDictionaryReader* reader);
