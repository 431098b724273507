// ZELSysTSFindOrCreateMetaObject: one meta object per class name, built on first registration
// and recorded in the dictionary under (class identifier, CLSID_ZELSysTSMetaClass) and
// (class name, "MetaObject").
//
// Locking: the whole find-or-create runs under the dictionary lock (recursive: the store's
// lookup and inserts take it again), which serialises the construction of all meta objects.
// Registration never reads the dictionary files, so it may run during a library's static
// initialisation.
#include <atomic>
#include <cstring>

#include "ZELSysTSFindOrCreateMetaObject.h"
#include "dictionary/DicoStore.h"
#include "meta/ZELSysTSMetaClassExt.h"
#include "util/ScopedLock.h"

namespace {

// The source of generated class identifiers {n-0000-0000-0000-000000000000}; 0 at load, so the
// first generated identifier has n = 1. Constant-initialized: usable from any static
// initialiser.
std::atomic<uint32_t> g_generated_class_ids{0};

_GUID NextGeneratedClassId() {
  _GUID id = {};
  id.Data1 = g_generated_class_ids.fetch_add(1, std::memory_order_seq_cst) + 1;
  return id;
}

// Builds the meta class that the kind calls for; unknown kinds get a plain meta object.
// Throws std::bad_alloc when memory runs out (nothing is left allocated then).
ZELSysTSMetaClassBase* NewMetaObject(ZELSysTSTypeOfClass type, const _GUID* classId,
                                     const char* className, ZELSysTSMetaClass* baseMeta) {
  switch (type) {
    case ZELSysTSTypeImplementation:
      return new ZELSysTSMetaClassImpl(classId, className, baseMeta);
    case ZELSysTSTypeChainedExtension:
    case ZELSysTSTypeTransientExtension:
      return new ZELSysTSMetaClassExt(classId, className, baseMeta, type);
    default:
      return new ZELSysTSMetaClassBase(classId, className, baseMeta);
  }
}

}  // namespace

ZELSysTSMetaClass* ZELSysTSFindOrCreateMetaObject(const char* className, ZELSysTSTypeOfClass type,
                                                  const _GUID* classId, ZELSysTSMetaClass* baseMeta,
                                                  const char* extendedClass) {
  if (className == nullptr) return nullptr;
  if (std::strcmp(className, "ZELNull") == 0) return nullptr;

  ScopedLock lock(DicoStore::DictionaryLock());
  if (ZELSysTSMetaClass* existing = DicoStore::FindMetaObject(className)) {
    if (extendedClass != nullptr) AddExtendedClassTo(existing, extendedClass);
    return existing;
  }

  _GUID generated;
  if (classId == nullptr) {
    generated = NextGeneratedClassId();
    classId = &generated;
  }
  ZELSysTSMetaClassBase* meta = NewMetaObject(type, classId, className, baseMeta);
  RememberLibraryMetaClass(meta);
  // A refusal by the store is not reported: the meta object works, it is only not found by
  // later lookups (the store writes its own line).
  DicoStore::Register(classId, &CLSID_ZELSysTSMetaClass, className, "MetaObject", nullptr,
                      static_cast<void*>(meta));
  if (extendedClass != nullptr) AddExtendedClassTo(meta, extendedClass);
  return meta;
}
