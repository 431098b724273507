#include "core/ImplementationResolution.h"

#include <new>

#include "core/ScopedObjectLock.h"
#include "core/ZELSysTSBaseUnknownAccess.h"
#include "core/ZELSysTSChainExtension.h"
#include "meta/ZELSysTSMetaClassBase.h"
#include "meta/ZELSysTSMetaClassExt.h"

namespace {

// The chained extension of implMeta in object's chain, made and appended on first need.
// The caller holds the object's lock (when it has one).
ZELSysTSBaseUnknown* ResolveChainedLocked(ZELSysTSBaseUnknown* object, ZELSysTSMetaClass* implMeta,
                                          ZELSysTSBaseUnknown* (*create)()) {
  ZELSysTSChainExtension* last = nullptr;
  for (ZELSysTSChainExtension* node = ZELSysTSBaseUnknownAccess::ChainHead(object); node != nullptr;
       node = node->GetNext()) {
    last = node;
    ZELSysTSBaseUnknown* extension = nullptr;
    if (node->GetExtension(extension) == S_OK && extension->GetMetaObject() == implMeta) {
      return extension;
    }
  }

  if (create == nullptr) return nullptr;
  ZELSysTSBaseUnknown* extension = create();
  if (extension == nullptr) return nullptr;
  auto* node = new (std::nothrow) ZELSysTSChainExtension(extension);
  if (node == nullptr) {
    // Not in the chain and not linked: nobody else knows the new extension.
    delete extension;
    return nullptr;
  }
  if (last == nullptr) {
    ZELSysTSBaseUnknownAccess::SetLink(object, node);
  } else {
    last->SetNext(node);
  }
  ZELSysTSBaseUnknownAccess::SetLink(extension, object);
  return extension;
}

// A new transient extension of implMeta linked to object. The caller holds the object's lock.
ZELSysTSBaseUnknown* ResolveTransientLocked(ZELSysTSBaseUnknown* object,
                                            ZELSysTSBaseUnknown* (*create)()) {
  if (create == nullptr) return nullptr;
  ZELSysTSBaseUnknown* extension = create();
  if (extension != nullptr) ZELSysTSBaseUnknownAccess::SetLink(extension, object);
  return extension;
}

}  // namespace

ZELSysTSBaseUnknown* ResolveImplementation(ZELSysTSBaseUnknown* object, ZELSysTSMetaClass* implMeta,
                                           ZELSysTSBaseUnknown* (*create)()) {
  if (implMeta == nullptr || object == nullptr) return nullptr;

  ZELSysTSMetaClassBase* eff = EffectiveMetaOf(implMeta);
  ZELSysTSMetaClassExt* ext = eff != nullptr ? eff->GetExtensionMetaClass() : nullptr;
  if (ext == nullptr) {
    // Not an extension: the implementation is the object itself when the implementation class
    // is its class or one of its bases. Reads only constant meta data; no lock.
    ZELSysTSMetaClass* meta = object->GetMetaObject();
    if (meta == nullptr) return nullptr;
    if (meta == implMeta || meta->IsAKindOf(static_cast<const ZELSysTSMetaClass*>(implMeta))) {
      return object;
    }
    return nullptr;
  }

  ScopedObjectLock lock(object);
  switch (ext->GetTypeOfClass()) {
    case ZELSysTSTypeChainedExtension:
      return ResolveChainedLocked(object, implMeta, create);
    case ZELSysTSTypeTransientExtension:
      return ResolveTransientLocked(object, create);
    default:
      return nullptr;
  }
}
