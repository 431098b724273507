// The text form of a GUID in dictionary files: exactly 38 characters, "{", 8, 4 and 4 hex digits,
// then 2+2 and 12 hex digits, "}", with any single character (a dash by convention) at the
// positions 9, 14, 19 and 24. Inside the braces the conversion is positional and lenient: a
// character that is not a hex digit counts as 0. Safe to call from any thread.
#pragma once

#include <cstdint>

#include "ZELSysTSExport.h"
#include "ZELSysTSTypes.h"

// Returns 0 and fills guid when text has the form above; 1, with guid untouched, when text is
// null, not 38 characters long, or does not start with '{' and end with '}'.
ZELSYSTS_EXPORT int32_t ZELSysTSConvertStringToGUID(const char* text, _GUID& guid);
