// Typed forms of the two creation entry points: they ask for an interface by its type and hand
// back an owning ZELSysTSPtr.
//
// Thread safety: as ZELSysTSCreateExternalObject and ZELSysTSCreateInstance (any thread).
#pragma once

#include "ZELSysTSInterfaceTraits.h"
#include "ZELSysTSObjectCreation.h"
#include "ZELSysTSPtr.h"
#include "ZELSysTSTypes.h"

// Creates an object of class className (ZELSysTSCreateExternalObject) and asks it for I. The
// creation function must follow the kit's convention (ZELSYSTS_EXPORT_FACTORY): it returns the
// object as an IUnknown* holding one reference. That reference is given back here, so the
// result holds the only one. Empty when nothing creates the class or the object lacks I (the
// object is then destroyed).
template <class I>
ZELSysTSPtr<I> ZELSysTSCreateObject(const char* className, const char* libraryName = nullptr,
                                    void* argument = nullptr) {
  void* raw = ZELSysTSCreateExternalObject(className, libraryName, argument);
  ZELSysTSPtr<IUnknown> object = ZELSysTSPtr<IUnknown>::Attach(static_cast<IUnknown*>(raw));
  return ZELSysTSPtr<I>(object);
}

// Creates an object by class identifier (ZELSysTSCreateInstance) and asks it for I. *result, when
// given, receives the HRESULT: E_FAIL for an unknown class or library, E_NOINTERFACE when the
// class does not offer I.
template <class I>
ZELSysTSPtr<I> ZELSysTSCreateInstanceOf(const _GUID& clsid, HRESULT* result = nullptr) {
  ZELSysTSPtr<I> object;
  const HRESULT hr = ZELSysTSCreateInstance(clsid, ZELSysTSIIDOf<I>(), object.Receive());
  if (result != nullptr) *result = hr;
  return object;
}
