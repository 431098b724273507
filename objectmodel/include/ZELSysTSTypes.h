// Shared types of the object model: GUIDs (ZELSysTSGuid.h), results, IUnknown, class kinds and
// creators.
#pragma once

#include <cstdint>

#include "ZELSysTSGuid.h"

// A 32-bit result; negative values are failures.
typedef int32_t HRESULT;
#ifndef S_OK
#define S_OK ((HRESULT)0)
#endif
#ifndef E_NOINTERFACE
#define E_NOINTERFACE ((HRESULT)0x80004002L)
#endif
#ifndef E_FAIL
#define E_FAIL ((HRESULT)0x80004005L)
#endif
#ifndef E_UNEXPECTED
#define E_UNEXPECTED ((HRESULT)0x8000FFFFL)
#endif
#ifndef SUCCEEDED
#define SUCCEEDED(hr) (((HRESULT)(hr)) >= 0)
#endif
#ifndef FAILED
#define FAILED(hr) (((HRESULT)(hr)) < 0)
#endif

// The interface with which every interface begins. IID_IUnknown is
// {00000000-0000-0000-C000-000000000046}. Every pointer handed out by QueryInterface holds one
// reference, which its holder gives back with Release.
class IUnknown {
 public:
  virtual HRESULT QueryInterface(const _GUID& iid, void** ppv) = 0;
  virtual uint32_t AddRef() = 0;
  virtual uint32_t Release() = 0;

 protected:
  ~IUnknown() = default;  // objects are destroyed through their own virtual destructor
};

// The kind of a class, given when its meta object is registered. Any other value is accepted
// and behaves as ZELSysTSTypeBase.
enum ZELSysTSTypeOfClass : int32_t {
  ZELSysTSTypeBase = 0,
  ZELSysTSTypeImplementation = 1,
  ZELSysTSTypeChainedExtension = 4,
  ZELSysTSTypeTransientExtension = 5
};

class ZELSysTSBaseUnknown;

// A creation function of an interface for a class: takes the object that is queried and its
// thread-safe flag (1 when the object has a mutex), returns the new interface pointer or null.
// QueryInterface counts the reference on the object; the returned pointer is not AddRef'd.
typedef IUnknown* (*ZELSysTSInterfaceCreator)(ZELSysTSBaseUnknown*, unsigned char);
