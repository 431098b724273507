// The abstract meta object: its construction, the kind test by meta object, and the identifier
// under which every class's meta object is recorded in the dictionary.
#include "ZELSysTSMetaClass.h"

#include "meta/ZELSysTSMetaClassBase.h"

// {dc9a2804-3801-43de-ad64-971fae3c7f4a}
const _GUID CLSID_ZELSysTSMetaClass = {
    0xdc9a2804, 0x3801, 0x43de, {0xad, 0x64, 0x97, 0x1f, 0xae, 0x3c, 0x7f, 0x4a}};

ZELSysTSMetaClass::ZELSysTSMetaClass() = default;

ZELSysTSMetaClass::~ZELSysTSMetaClass() = default;

// Follows GetBaseMetaObject() (the virtual operation, so that a meta class written elsewhere
// can present its own chain), comparing by address; a chain that loops back ends the walk.
int ZELSysTSMetaClass::IsAKindOf(const ZELSysTSMetaClass* meta) const {
  if (meta == nullptr) return 0;
  // The walk reads through GetBaseMetaObject(), which is not const; it changes nothing.
  auto* self = const_cast<ZELSysTSMetaClass*>(this);
  return AnyInBaseChain(self, [meta](const ZELSysTSMetaClass* m) { return m == meta; }) ? 1 : 0;
}
