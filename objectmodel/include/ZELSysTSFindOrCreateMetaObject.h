// Registration of meta objects, and recording of "CreateInterface" creation functions.
//
// Thread safety: both may be called from any thread, also during a library's static
// initialisation; neither reads the dictionary files.
#pragma once

#include "ZELSysTSExport.h"
#include "ZELSysTSMetaClass.h"
#include "ZELSysTSTypes.h"

// Returns the one meta object of the class `className`, building and recording it on the first
// call for that name. Later calls return the same pointer and ignore type, classId and baseMeta;
// a non-null extendedClass is added to an extension's list of extended classes in either case.
//   type:          the kind of meta object built (1: implementation, 4 and 5: extensions,
//                  anything else: a plain meta object).
//   classId:       the class identifier; null gives a generated one {n-0000-0000-0000-...}.
//   baseMeta:      meta object of the base class, or null.
//   extendedClass: name of a class that this extension extends, or null.
// Null for a null className and for "ZELNull". The meta object is owned by nobody and lives
// until the process ends.
ZELSYSTS_EXPORT ZELSysTSMetaClass* ZELSysTSFindOrCreateMetaObject(const char* className,
                                                                  ZELSysTSTypeOfClass type,
                                                                  const _GUID* classId,
                                                                  ZELSysTSMetaClass* baseMeta,
                                                                  const char* extendedClass);

// A stateless helper whose constructor records a class's creation function under the interface
// name "CreateInterface", where ZELSysTSCreateExternalObject finds it. Typically a static object
// of an implementation library.
class ZELSYSTS_EXPORT ZELSysTSFillDictionary {
 public:
  // Records (className, "CreateInterface") with creator. Does nothing when an argument is null
  // or interfaceName is not exactly "CreateInterface". ZELSysTSCreateExternalObject calls the
  // creator as creator(argument, 0): its first parameter carries the caller's argument.
  ZELSysTSFillDictionary(const char* className, const char* interfaceName,
                         ZELSysTSInterfaceCreator creator);
  // Does nothing.
  ZELSysTSFillDictionary(const ZELSysTSMetaClass* classMeta, const ZELSysTSMetaClass* interfaceMeta,
                         ZELSysTSInterfaceCreator creator);
  // Does nothing and returns 1.
  static int InitMetaClasses(ZELSysTSMetaClass*, ZELSysTSMetaClass*);
};
