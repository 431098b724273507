// The implementation resolution shared by ZELSysTSBOAInternal::CreateBOA and
// ZELSysTSTIEInternal::Tie_Construct: which object implements an interface of `object` through
// the class of `implMeta` (the object itself, a chained extension found in or appended to its
// chain, or a new transient extension).
//
// Locking: the non-extension path takes no lock. The extension paths run under the object's
// lock (when it has one): chain search, create(), append and the new extension's link, so two
// threads resolving one chained extension get the same one and create() runs once.
#pragma once

#include "ZELSysTSBaseUnknown.h"
#include "ZELSysTSMetaClass.h"

// Null for null inputs, an object without meta object, an unrelated non-extension class, or
// create() returning null (chain unchanged). The result is not AddRef'd.
ZELSysTSBaseUnknown* ResolveImplementation(ZELSysTSBaseUnknown* object, ZELSysTSMetaClass* implMeta,
                                           ZELSysTSBaseUnknown* (*create)());
