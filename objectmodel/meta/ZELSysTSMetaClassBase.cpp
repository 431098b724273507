// The plain meta object: name, identifier and base, and the two kind tests that walk the base
// chain through the base_meta field.
#include "meta/ZELSysTSMetaClassBase.h"

#include <cstring>

#include "ZELSysTSGuid.h"
#include "pools/GuidPool.h"
#include "pools/StringPool.h"

namespace {

// Every base_meta is an effective meta object, hence a ZELSysTSMetaClassBase or derived.
const ZELSysTSMetaClassBase* AsBase(const ZELSysTSMetaClass* meta) {
  return static_cast<const ZELSysTSMetaClassBase*>(meta);
}

}  // namespace

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
  for (const ZELSysTSMetaClassBase* m = this; m != nullptr; m = AsBase(m->base_meta)) {
    if (m->class_name != nullptr && std::strcmp(m->class_name, className) == 0) return 1;
  }
  return 0;
}

const _GUID* ZELSysTSMetaClassBase::GetClassId() {
  return class_id;
}

int ZELSysTSMetaClassBase::IsAKindOf(const _GUID* classId) {
  if (classId == nullptr) return 0;
  for (const ZELSysTSMetaClassBase* m = this; m != nullptr; m = AsBase(m->base_meta)) {
    if (m->class_id != nullptr && *m->class_id == *classId) return 1;
  }
  return 0;
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
