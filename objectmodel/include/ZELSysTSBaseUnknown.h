// ZELSysTSBaseUnknown: the base class of every object of the object model.
//
// It implements IUnknown once for all classes: a 32-bit reference count (1 after construction),
// an optional recursive mutex chosen at construction, and a QueryInterface that answers
// IID_IUnknown and CLSID_ZELSysTSBaseUnknown with the object itself and asks the meta object of
// the object's class for every other interface. A derived class overrides GetMetaObject() to
// return the meta object of its own class.
//
// Ownership: an object is owned by its references; the last Release destroys it together with
// the chained extensions that it owns. An extension object forwards QueryInterface (and, by its
// kind, AddRef/Release) to the object that it extends.
//
// Thread safety: an object built with threadSafe != 0 has a recursive mutex; every change of its
// count, the whole of QueryInterface (including the creator it calls) and every use of its
// extension chain run under that mutex. An object built with 0 is never locked: its users
// confine it to one thread.
#pragma once

#include "ZELSysTSExport.h"
#include "ZELSysTSMetaClass.h"
#include "ZELSysTSMutex.h"
#include "ZELSysTSTypes.h"

struct ZELSysTSBaseUnknownAccess;

class ZELSYSTS_EXPORT ZELSysTSBaseUnknown : public IUnknown {
 public:
  // threadSafe != 0: the object gets a recursive mutex; 0: it has none and never locks.
  explicit ZELSysTSBaseUnknown(unsigned char threadSafe);

  // Answers IID_IUnknown and CLSID_ZELSysTSBaseUnknown with this object; any other interface
  // through the meta object's creation function. *ppv is null first; on success it holds the
  // interface and this object's count went up by one. E_NOINTERFACE when nothing offers the
  // interface, E_UNEXPECTED when the count is already 0, an extension has no object, or ppv
  // is null.
  HRESULT QueryInterface(const _GUID& iid, void** ppv) override;
  // Adds one reference; returns the new count (a chained extension returns its object's).
  uint32_t AddRef() override;
  // Takes one reference; the one that reaches 0 destroys the object. Returns the new count.
  uint32_t Release() override;
  // The meta object of the object's class; derived classes override it.
  virtual ZELSysTSMetaClass* GetMetaObject() const;

  // Releases every lock still counted on the object, then its mutex. The extension chain is
  // freed by the last Release, not here.
  virtual ~ZELSysTSBaseUnknown();

  // The meta object of ZELSysTSBaseUnknown itself, registered on the first call.
  static ZELSysTSMetaClass* MetaObject();
  // "ZELSysTSBaseUnknown" (pooled), whatever the object's class.
  static const char* ClassName();
  // The pooled copy of CLSID_ZELSysTSBaseUnknown.
  static const _GUID* ClassId();

  // Name of the object's actual class, or null when it has no meta object.
  const char* IsA() const;
  // 1 when the actual class or one of its bases bears this name; 0 otherwise and for null.
  int IsAKindOf(const char* name) const;

  // Take and release the object's mutex. Only for objects that have one (HasMutex()); the lock
  // count follows the calls so that destruction can release what is still held.
  void Lock();
  void Unlock();
  // 1 when the object was built thread-safe (it has a mutex), else 0.
  unsigned char HasMutex() const { return mutex.Handle() != nullptr ? 1 : 0; }

  // Null until MetaObject() first runs, then the meta object of ZELSysTSBaseUnknown.
  static ZELSysTSMetaClass* meta_object;

  ZELSysTSBaseUnknown(const ZELSysTSBaseUnknown&) = delete;
  ZELSysTSBaseUnknown& operator=(const ZELSysTSBaseUnknown&) = delete;

 private:
  friend struct ZELSysTSBaseUnknownAccess;

  ZELSmartMutex mutex;
  uint32_t reference_count;
  // Ordinary object: first ZELSysTSChainExtension of its extension chain, or null.
  // Extension object: the ZELSysTSBaseUnknown that it extends, or null.
  void* link;
  int32_t lock_count;
};

// {6DADD843-BCD7-4107-B9E9-72342D738784}
ZELSYSTS_EXPORT extern const _GUID CLSID_ZELSysTSBaseUnknown;
