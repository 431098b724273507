// The abstract meta object: its construction, the kind test by meta object, and the identifier
// under which every class's meta object is recorded in the dictionary.
#include "ZELSysTSMetaClass.h"

// {dc9a2804-3801-43de-ad64-971fae3c7f4a}
const _GUID CLSID_ZELSysTSMetaClass = {
    0xdc9a2804, 0x3801, 0x43de, {0xad, 0x64, 0x97, 0x1f, 0xae, 0x3c, 0x7f, 0x4a}};

ZELSysTSMetaClass::ZELSysTSMetaClass() = default;

ZELSysTSMetaClass::~ZELSysTSMetaClass() = default;

// Follows GetBaseMetaObject() (the virtual operation, so that a meta class written elsewhere
// can present its own chain), comparing by address.
int ZELSysTSMetaClass::IsAKindOf(const ZELSysTSMetaClass* meta) const {
  if (meta == this) return 1;
  // The walk reads through GetBaseMetaObject(), which is not const; it changes nothing.
  ZELSysTSMetaClass* current = const_cast<ZELSysTSMetaClass*>(this);
  for (;;) {
    current = current->GetBaseMetaObject();
    if (current == nullptr) return 0;
    if (current == meta) return 1;
  }
}
