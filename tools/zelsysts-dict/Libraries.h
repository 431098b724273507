// The implementation libraries that the dictionary names, loaded the way resolution loads them:
// by name, through the platform library manager (ZELThrLibraryManager), never by path.
#pragma once

#include <string>

#include "ZELSysTSTypes.h"

class ZELSysTSMetaClass;

namespace zeldict {

struct Pair;

// 16 random bytes from the system; false when it has none to give.
bool RandomGuid(_GUID* guid);

// Loads the library by name. Empty when it loaded; otherwise why not, in the dynamic loader's
// words.
std::string LoadLibraryByName(const std::string& library);

// Whether the library (loaded or not) exports the function.
bool HasFunction(const std::string& library, const std::string& function);

// The function that resolution looks up for a pair: "fctZELSysTSCreate" + class for a
// "CreateInterface" pair; otherwise "ZELSysTSCreate" + interface part (the ITFLEAF value, or the
// interface) + class part (the EXTENDED_BY value, or the class).
std::string CreatorName(const Pair& pair);

// The meta object that a loaded library registered for the class, or null. See Libraries.cpp
// for the one side effect that asking has.
ZELSysTSMetaClass* RegisteredMetaObject(const std::string& className);

}  // namespace zeldict
