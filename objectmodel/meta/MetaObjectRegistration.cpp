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
#include <new>

#include "ZELSysTSFindOrCreateMetaObject.h"
#include "dictionary/DicoStore.h"
#include "meta/ResolutionObservation.h"
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

// Builds the meta class that the kind calls for; unknown kinds get a plain meta object. Null
// when memory runs out, for the object or for interning its name or identifier (nothing is left
// allocated then but what the pools keep). Registration may run during a library's static
// initialisation, inside dlopen: nothing thrown may leave it.
ZELSysTSMetaClassBase* NewMetaObject(ZELSysTSTypeOfClass type, const _GUID* classId,
                                     const char* className, ZELSysTSMetaClass* baseMeta) {
  ZELSysTSMetaClassBase* meta;
  LibraryMetaKind kind;
  switch (type) {
    case ZELSysTSTypeImplementation:
      meta = new (std::nothrow) ZELSysTSMetaClassImpl(classId, className, baseMeta);
      kind = LibraryMetaKind::kImplementation;
      break;
    case ZELSysTSTypeChainedExtension:
    case ZELSysTSTypeTransientExtension:
      meta = new (std::nothrow) ZELSysTSMetaClassExt(classId, className, baseMeta, type);
      kind = LibraryMetaKind::kExtension;
      break;
    default:
      meta = new (std::nothrow) ZELSysTSMetaClassBase(classId, className, baseMeta);
      kind = LibraryMetaKind::kPlain;
      break;
  }
  if (meta == nullptr) return nullptr;
  if (meta->GetClassName() == nullptr || meta->GetClassId() == nullptr) {
    delete meta;
    return nullptr;
  }
  RememberLibraryMetaClass(meta, kind);
  return meta;
}

// True when the store holds meta under (its class identifier, CLSID_ZELSysTSMetaClass).
bool RecordedById(ZELSysTSMetaClass* meta) {
  const DicoEntry* record = DicoStore::FindByGuids(meta->GetClassId(), &CLSID_ZELSysTSMetaClass);
  return record != nullptr && record->Creator() == meta;
}

// The kind of one of the library's meta objects (a meta object written elsewhere counts as 0).
long KindOf(ZELSysTSMetaClass* meta) {
  if (!IsLibraryMetaObject(meta)) return ZELSysTSTypeBase;
  auto* base = static_cast<ZELSysTSMetaClassBase*>(meta);
  if (ZELSysTSMetaClassExt* extension = base->GetExtensionMetaClass()) {
    return extension->GetTypeOfClass();
  }
  return dynamic_cast<ZELSysTSMetaClassImpl*>(base) != nullptr ? ZELSysTSTypeImplementation
                                                               : ZELSysTSTypeBase;
}

// Tells the observer which meta object a registration hands out: found (existing) or built, its
// kind and its base. Runs under the dictionary lock.
ZELSysTSMetaClass* ObservedRegistration(ZELSysTSMetaClass* meta, bool found,
                                        const char* extendedClass) {
  if (zelsysts::Observed() && meta != nullptr) {
    ZELSysTSMetaClass* base = meta->GetBaseMetaObject();
    ObserveResolution(zelsysts::Step::kRegistration, meta->GetClassName(), extendedClass,
                      base != nullptr ? base->GetClassName() : nullptr, meta->GetClassId(), nullptr,
                      (found ? long{zelsysts::kRegisteredFound} : 0L) | KindOf(meta));
  }
  return meta;
}

// The meta object of className that the store holds under classId but not under the name: a
// registration ran out of memory between the two inserts. Null otherwise.
ZELSysTSMetaClass* RecordedByIdOnly(const _GUID* classId, const char* className) {
  const DicoEntry* record = DicoStore::FindByGuids(classId, &CLSID_ZELSysTSMetaClass);
  auto* meta = record != nullptr ? static_cast<ZELSysTSMetaClass*>(record->Creator()) : nullptr;
  if (meta == nullptr || meta->GetClassName() == nullptr) return nullptr;
  return std::strcmp(meta->GetClassName(), className) == 0 ? meta : nullptr;
}

}  // namespace

ZELSysTSMetaClass* ZELSysTSFindOrCreateMetaObject(const char* className, ZELSysTSTypeOfClass type,
                                                  const _GUID* classId, ZELSysTSMetaClass* baseMeta,
                                                  const char* extendedClass) {
  if (className == nullptr) return nullptr;
  if (std::strcmp(className, "ZELNull") == 0) return nullptr;

  ScopedLock lock(DicoStore::DictionaryLock());
  ZELSysTSMetaClass* meta = DicoStore::FindMetaObject(className);
  const bool byName = meta != nullptr;
  if (meta == nullptr && classId != nullptr) meta = RecordedByIdOnly(classId, className);
  const bool found = meta != nullptr;
  // A meta object held under both keys (or under its name while its identifier belongs to
  // another class, a conflict that stays) is complete.
  if (byName && DicoStore::FindByGuids(meta->GetClassId(), &CLSID_ZELSysTSMetaClass) != nullptr) {
    return ObservedRegistration(AddExtendedClassTo(meta, extendedClass) ? meta : nullptr, true,
                                extendedClass);
  }

  _GUID generated;
  if (!found) {
    if (classId == nullptr) {
      generated = NextGeneratedClassId();
      classId = &generated;
    }
    meta = NewMetaObject(type, classId, className, baseMeta);
    if (meta == nullptr) return nullptr;
  }
  // A conflict with what the store holds is not reported: the meta object works, it is only not
  // found by the lookups that conflict (the store writes its own line). A lack of memory is: the
  // meta object is handed out only once recorded under both keys, or a later registration of the
  // name could build a second one. A meta object that the store holds under one key is kept (it
  // may have been seen) and completed by the next registration of the name.
  bool outOfMemory = false;
  DicoStore::Register(meta->GetClassId(), &CLSID_ZELSysTSMetaClass, className, "MetaObject",
                      nullptr, static_cast<void*>(meta), &outOfMemory);
  if (outOfMemory) {
    if (!found && DicoStore::FindMetaObject(className) != meta && !RecordedById(meta)) delete meta;
    return nullptr;
  }
  // An extended class that could not be added for lack of memory is added by a later call.
  return ObservedRegistration(AddExtendedClassTo(meta, extendedClass) ? meta : nullptr, found,
                              extendedClass);
}
