// The plain meta object: name, identifier and base, and the two kind tests that walk the base
// chain through the base_meta field.
#include "meta/ZELSysTSMetaClassBase.h"

#include <atomic>
#include <cstring>

#include "ZELSysTSGuid.h"
#include "pools/Arena.h"
#include "pools/GuidPool.h"
#include "pools/StringPool.h"
#include "util/LockOrder.h"
#include "util/ThreadAnnotations.h"

std::atomic<const void*> g_library_meta_vtables[3] = {};

void RememberLibraryMetaClass(const ZELSysTSMetaClassBase* meta, LibraryMetaKind kind) {
  if (kind == LibraryMetaKind::kForeign) return;
  const void* vtable;
  std::memcpy(&vtable, static_cast<const void*>(meta), sizeof vtable);
  g_library_meta_vtables[static_cast<int>(kind) - 1].store(vtable, std::memory_order_release);
}

// The base is resolved to its effective meta object before anything is interned, so that the
// stored base_meta is what serves for the base class; then the name, then the identifier.
ZELSysTSMetaClassBase::ZELSysTSMetaClassBase(const _GUID* classId, const char* className,
                                             ZELSysTSMetaClass* baseMeta)
    : class_id(nullptr), class_name(nullptr), base_meta(nullptr) {
  if (baseMeta != nullptr) baseMeta = baseMeta->GetEffectiveMetaObject();
  base_meta = baseMeta;
  class_name = StringPool::Intern(className);
  class_id = GuidPool::Intern(classId);
}

// Pooled name and identifier belong to the pools; the base is not owned.
ZELSysTSMetaClassBase::~ZELSysTSMetaClassBase() {
  class_id = nullptr;
  class_name = nullptr;
  base_meta = nullptr;
}

const char* ZELSysTSMetaClassBase::GetClassName() {
  return class_name;
}

int ZELSysTSMetaClassBase::IsAKindOf(const char* className) {
  if (className == nullptr) return 0;
  return AnyInBaseChain(this, [className](ZELSysTSMetaClass* m) {
    const char* name = m->GetClassName();
    return name != nullptr && std::strcmp(name, className) == 0;
  });
}

const _GUID* ZELSysTSMetaClassBase::GetClassId() {
  return class_id;
}

int ZELSysTSMetaClassBase::IsAKindOf(const _GUID* classId) {
  if (classId == nullptr) return 0;
  return AnyInBaseChain(this, [classId](ZELSysTSMetaClass* m) {
    const _GUID* id = m->GetClassId();
    return id != nullptr && *id == *classId;
  });
}

ZELSysTSMetaClass* ZELSysTSMetaClassBase::GetBaseMetaObject() {
  return base_meta;
}

ZELSysTSMetaClass* ZELSysTSMetaClassBase::GetEffectiveMetaObject() {
  return this;
}

ZELSysTSInterfaceCreator ZELSysTSMetaClassBase::FindInterfaceCreator(const _GUID&) {
  return nullptr;
}

ZELSysTSMetaClassExt* ZELSysTSMetaClassBase::GetExtensionMetaClass() {
  return nullptr;
}

namespace {

// Every meta object of the process. Registration holds the dictionary lock while it builds one.
Arena g_meta_objects GUARDED_BY(SharedLocks::DictionaryLock());

}  // namespace

// Registration (the only caller) holds the dictionary lock; `new` hides that from the analysis.
void* ZELSysTSMetaClassBase::operator new(size_t size, const std::nothrow_t&) noexcept
    NO_THREAD_SAFETY_ANALYSIS {
  return g_meta_objects.Allocate(size, alignof(std::max_align_t));
}

void ZELSysTSMetaClassBase::operator delete(void* memory,
                                            size_t size) noexcept NO_THREAD_SAFETY_ANALYSIS {
  if (memory != nullptr) g_meta_objects.Unallocate(memory, size);
}
