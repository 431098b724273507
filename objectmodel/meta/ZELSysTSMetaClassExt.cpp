// The extension meta object: its list of extended classes and the free helper that registration
// uses to add to it.
#include "meta/ZELSysTSMetaClassExt.h"

#include <new>

#include "pools/StringPool.h"
#include "util/ScopedLock.h"

namespace {

// Room added to the extended-class list each time it is full.
constexpr int32_t kExtendedGrowth = 3;

}  // namespace

ZELSysTSMetaClassExt::ZELSysTSMetaClassExt(const _GUID* classId, const char* className,
                                           ZELSysTSMetaClass* baseMeta, ZELSysTSTypeOfClass type)
    : ZELSysTSMetaClassImpl(classId, className, baseMeta),
      type_of_class(type),
      ext_mutex(),
      extended_classes(nullptr),
      extended_count(0),
      extended_capacity(0) {}

ZELSysTSMetaClassExt::~ZELSysTSMetaClassExt() {
  delete[] extended_classes;
  extended_classes = nullptr;
  extended_count = 0;
  extended_capacity = 0;
}

ZELSysTSMetaClassExt* ZELSysTSMetaClassExt::GetExtensionMetaClass() {
  return this;
}

int ZELSysTSMetaClassExt::IsExtending(const char* pooledName) {
  if (pooledName == nullptr) return 0;
  ScopedLock lock(ext_mutex);
  return IsExtendingLocked(pooledName);
}

int ZELSysTSMetaClassExt::IsExtending(ZELSysTSMetaClass* meta) {
  return IsExtending(meta != nullptr ? meta->GetClassName() : nullptr);
}

int ZELSysTSMetaClassExt::IsExtendingLocked(const char* pooledName) const {
  for (int32_t i = 0; i < extended_count; ++i) {
    if (extended_classes[i] == pooledName) return 1;
  }
  return 0;
}

// Membership is tested once without holding the list across the interning, then again with the
// append, so that a caller that does not hold the dictionary lock cannot add a name twice.
// The capacity is raised only together with the new array: when memory runs out the list is
// left as it was and the name is not added.
bool ZELSysTSMetaClassExt::AddExtendedClass(const char* className) {
  const char* pooled = StringPool::Intern(className);
  if (pooled == nullptr) return false;
  if (IsExtending(pooled) == 1) return true;

  ScopedLock lock(ext_mutex);
  if (IsExtendingLocked(pooled) == 1) return true;
  if (extended_count >= extended_capacity) {
    const int32_t capacity = extended_capacity + kExtendedGrowth;
    const char** grown = new (std::nothrow) const char*[capacity];
    if (grown == nullptr) return false;
    for (int32_t i = 0; i < extended_count; ++i) grown[i] = extended_classes[i];
    delete[] extended_classes;
    extended_classes = grown;
    extended_capacity = capacity;
  }
  extended_classes[extended_count] = pooled;
  ++extended_count;
  return true;
}

bool AddExtendedClassTo(ZELSysTSMetaClass* meta, const char* className) {
  if (meta == nullptr || className == nullptr) return true;
  ZELSysTSMetaClassBase* effective = EffectiveMetaOf(meta);
  if (effective == nullptr) return true;
  ZELSysTSMetaClassExt* extension = effective->GetExtensionMetaClass();
  return extension == nullptr || extension->AddExtendedClass(className);
}
