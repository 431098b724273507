// ZELSysTSMetaClassExt: meta object of an extension class (kind 4, chained, or 5, transient).
// Adds the list of the classes that the extension extends (interned names, in order of
// addition, growing by 3) and the extension's kind.
//
// Thread safety: the extended-class list is read and written under ext_mutex. AddExtendedClass
// takes it once for the membership test and once for the append; its callers hold the
// dictionary lock, so two additions never interleave.
#pragma once

#include <cstdint>

#include "ZELSysTSMutex.h"
#include "meta/ZELSysTSMetaClassImpl.h"
#include "util/ThreadAnnotations.h"

class ZELSysTSMetaClassExt : public ZELSysTSMetaClassImpl {
 public:
  ZELSysTSMetaClassExt(const _GUID* classId, const char* className, ZELSysTSMetaClass* baseMeta,
                       ZELSysTSTypeOfClass type);
  ~ZELSysTSMetaClassExt() override;

  // Returns this.
  ZELSysTSMetaClassExt* GetExtensionMetaClass() override;

  ZELSysTSTypeOfClass GetTypeOfClass() const { return type_of_class; }
  // 1 when the pooled pointer is one of the extended classes (compared by address); 0 for null.
  int IsExtending(const char* pooledName);
  // IsExtending of meta's class name (null meta: 0).
  int IsExtending(ZELSysTSMetaClass* meta);
  // Adds the class name unless it is there already. False, with the list as it was, when the
  // name cannot be interned or memory runs out.
  bool AddExtendedClass(const char* className);

 private:
  // 1 when pooledName is in the list.
  int IsExtendingLocked(const char* pooledName) const EXCLUSIVE_LOCKS_REQUIRED(ext_mutex);

  // Constant after construction.
  ZELSysTSTypeOfClass type_of_class;
  // Held inside the meta object, like `mutex`.
  mutable ZELInlineSmartMutex ext_mutex;
  const char** extended_classes GUARDED_BY(ext_mutex);
  int32_t extended_count GUARDED_BY(ext_mutex);
  int32_t extended_capacity GUARDED_BY(ext_mutex);
};

// When meta and className are both non-null and meta's effective meta object is an extension,
// adds className to its extended classes; otherwise does nothing. False only when memory ran out.
bool AddExtendedClassTo(ZELSysTSMetaClass* meta, const char* className);
