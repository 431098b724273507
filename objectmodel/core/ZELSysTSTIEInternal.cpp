#include "ZELSysTSTIEInternal.h"

#include "core/ImplementationResolution.h"
#include "core/ScopedObjectLock.h"

HRESULT ZELSysTSTIEInternal::Tie_Construct(ZELSysTSBaseUnknown* object, ZELSysTSMetaClass* implMeta,
                                           ZELSysTSBaseUnknown* (*create)(),
                                           ZELSysTSBaseUnknown*& implementation) {
  implementation = nullptr;
  if (implMeta == nullptr || object == nullptr) return E_FAIL;
  implementation = ResolveImplementation(object, implMeta, create);
  return implementation != nullptr ? S_OK : E_FAIL;
}

HRESULT ZELSysTSTIEInternal::Tie_Query(ZELSysTSBaseUnknown* object, const _GUID& iid, void** ppv) {
  if (ppv == nullptr) return E_UNEXPECTED;
  *ppv = nullptr;
  if (object == nullptr) return E_UNEXPECTED;
  return object->QueryInterface(iid, ppv);
}

int ZELSysTSTIEInternal::Tie_AddRef(int& tieCount, ZELSysTSBaseUnknown* object) {
  if (object == nullptr) return 0;
  // Both counts move under the object's lock, so a tie shared between threads keeps them equal.
  ScopedObjectLock lock(object);
  object->AddRef();
  return ++tieCount;
}

int ZELSysTSTIEInternal::Tie_Release(int& tieCount, ZELSysTSBaseUnknown*& object,
                                     unsigned char& mustDelete) {
  mustDelete = 0;
  if (object == nullptr) return 0;
  // Not a ScopedObjectLock: when Release takes the last reference, the object is gone and its
  // destructor has already released the lock taken here.
  const bool locked = object->HasMutex() != 0;
  if (locked) object->Lock();
  const int count = --tieCount;
  if (object->Release() != 0 && locked) object->Unlock();
  if (count == 0) {
    object = nullptr;
    mustDelete = 1;
  }
  return count;
}
