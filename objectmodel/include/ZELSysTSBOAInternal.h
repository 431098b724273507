// ZELSysTSBOAInternal: the implementation resolution used by basic-object-adapter creators.
// Called by creation functions of client libraries, inside the QueryInterface that holds the
// object's lock.
#pragma once

#include "ZELSysTSBaseUnknown.h"
#include "ZELSysTSExport.h"
#include "ZELSysTSMetaClass.h"

class ZELSYSTS_EXPORT ZELSysTSBOAInternal {
 public:
  // The object that implements an interface of `object` through the class of `implMeta`:
  //  - the object itself, when implMeta is its class or one of its bases (no lock taken);
  //  - for a chained extension class, the one instance in the object's extension chain, made
  //    with create() and appended on first need (under the object's lock; create runs once);
  //  - for a transient extension class, a new instance from create() linked to the object.
  // Null for null inputs, an unrelated non-extension class, or create() returning null (the
  // chain is then unchanged). The result is not AddRef'd.
  static ZELSysTSBaseUnknown* CreateBOA(ZELSysTSBaseUnknown* object, ZELSysTSMetaClass* implMeta,
                                        ZELSysTSBaseUnknown* (*create)());
};
