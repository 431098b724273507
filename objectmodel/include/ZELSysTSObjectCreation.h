// Creating objects that live in other shared libraries, by class name or class identifier,
// without linking against those libraries. Neither function keeps state between calls.
#pragma once

#include "ZELSysTSExport.h"
#include "ZELSysTSTypes.h"

// Creates an object of class className. Uses the creator recorded for (className,
// "CreateInterface") when there is one, called as the ZELSysTSInterfaceCreator it was recorded
// as: creator(argument, 0), the argument in the first parameter; otherwise calls the
// function "fctZELSysTSCreate" + className, looked up in libraryName, or when that is null in
// the library that the dictionary records for (className, "CreateInterface"). Returns what the
// function returns, or null when className is null or nothing is found. Prints nothing.
ZELSYSTS_EXPORT void* ZELSysTSCreateExternalObject(const char* className, const char* libraryName,
                                                   void* argument);

// Creates an object by class identifier: finds the class's library in the ".clsidts"
// dictionary files and returns exactly what its "ZELSysTSDllGetClassObject"(clsid, iid, ppv)
// returns. E_FAIL, with *ppv untouched, when the class or its library is unknown or the library
// lacks the function.
ZELSYSTS_EXPORT HRESULT ZELSysTSCreateInstance(const _GUID& clsid, const _GUID& iid, void** ppv);
