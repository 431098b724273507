// ZELSysTSStrtok: re-entrant tokeniser with the calling convention and behaviour of strtok_r.
// The first call passes the string, later calls pass null and the same state pointer; each call
// returns the next field (NUL-terminated in place) or null when none is left. Empty fields
// between separators are skipped.
#pragma once

#include "ZELSysTSPlatformExport.h"

ZELSYSTS_PLATFORM_EXPORT char* ZELSysTSStrtok(char* text, const char* separators, char** state);
