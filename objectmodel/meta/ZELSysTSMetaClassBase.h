// ZELSysTSMetaClassBase: the plain meta object (kinds 0, 2, 3 and any unknown kind): name,
// identifier and base. It has no interface table, hence no lock.
//
// Invariants: class_id and class_name are pooled and never null after construction (unless a
// pool failed); base_meta is what the base's GetEffectiveMetaObject() returned. None of the three
// changes after construction, so they are read without a lock.
//
// Meta objects are built only by registration, under the dictionary lock, and never deleted.
#pragma once

#include "ZELSysTSMetaClass.h"
#include "ZELSysTSTypes.h"

class ZELSysTSMetaClassExt;

class ZELSysTSMetaClassBase : public ZELSysTSMetaClass {
 public:
  ZELSysTSMetaClassBase(const _GUID* classId, const char* className, ZELSysTSMetaClass* baseMeta);
  ~ZELSysTSMetaClassBase() override;

  using ZELSysTSMetaClass::IsAKindOf;
  const char* GetClassName() override;
  // Walks base_meta (the field), comparing names by strcmp.
  int IsAKindOf(const char* className) override;
  const _GUID* GetClassId() override;
  // Walks base_meta (the field), comparing identifiers as four 32-bit words.
  int IsAKindOf(const _GUID* classId) override;
  ZELSysTSMetaClass* GetBaseMetaObject() override;
  // Returns this.
  ZELSysTSMetaClass* GetEffectiveMetaObject() override;

  // The creation function of iid for this class, or null. A plain meta object has none.
  virtual ZELSysTSInterfaceCreator FindInterfaceCreator(const _GUID& iid);
  // This meta object as an extension meta object, or null when the class is not an extension.
  virtual ZELSysTSMetaClassExt* GetExtensionMetaClass();

 protected:
  // Constant after construction.
  const _GUID* class_id;
  const char* class_name;
  ZELSysTSMetaClass* base_meta;
};

// Every user of a meta object works on its effective meta object, which is always a
// ZELSysTSMetaClassBase or derived from it. Null in, null out.
inline ZELSysTSMetaClassBase* EffectiveMetaOf(ZELSysTSMetaClass* meta) {
  if (meta == nullptr) return nullptr;
  return static_cast<ZELSysTSMetaClassBase*>(meta->GetEffectiveMetaObject());
}
