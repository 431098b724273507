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
  // Walks base_meta (the field; past a meta object written elsewhere, its GetBaseMetaObject()),
  // comparing names by strcmp. Stops on a cycle.
  int IsAKindOf(const char* className) override;
  const _GUID* GetClassId() override;
  // The same walk, comparing identifiers as four 32-bit words.
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

// Whether meta is one of the library's own meta objects (a ZELSysTSMetaClassBase or derived,
// built by registration), told by its dynamic type without a downcast: a meta class written
// elsewhere (the abstract class is public) is never taken for one. False for null.
bool IsLibraryMetaObject(const ZELSysTSMetaClass* meta);
// Registration calls this for every meta object it builds, before handing it out.
void RememberLibraryMetaClass(const ZELSysTSMetaClassBase* meta);

// Whether from, or a meta object reached from it through GetBaseMetaObject(), satisfies matches.
// Floyd's tortoise and hare: a base chain that loops back (possible only through meta objects
// written elsewhere) ends the walk with false instead of running for ever.
template <typename Match>
bool AnyInBaseChain(ZELSysTSMetaClass* from, Match matches) {
  ZELSysTSMetaClass* slow = from;
  for (ZELSysTSMetaClass* fast = from; fast != nullptr;) {
    if (matches(fast)) return true;
    fast = fast->GetBaseMetaObject();
    if (fast == nullptr) return false;
    if (matches(fast)) return true;
    fast = fast->GetBaseMetaObject();
    slow = slow->GetBaseMetaObject();
    if (fast == slow) return false;
  }
  return false;
}

// The library's own meta object behind meta (its effective meta object), or null: for null, and
// when the effective meta object is not one of the library's (a meta class written elsewhere,
// which the library then treats as a class without interfaces).
inline ZELSysTSMetaClassBase* EffectiveMetaOf(ZELSysTSMetaClass* meta) {
  if (meta == nullptr) return nullptr;
  ZELSysTSMetaClass* effective = meta->GetEffectiveMetaObject();
  if (!IsLibraryMetaObject(effective)) return nullptr;
  return static_cast<ZELSysTSMetaClassBase*>(effective);
}
