// ZELSysTSMetaClass: the abstract meta object. Every class known to the object model has exactly
// one meta object, made by ZELSysTSFindOrCreateMetaObject and alive until the process ends
// (nobody deletes a meta object). It knows the class's name, its class identifier and the meta
// object of its base class.
//
// Users always call GetEffectiveMetaObject() first and work on its result: the library's own
// meta objects answer with themselves; a meta class written elsewhere may answer with another
// meta object that serves in its place.
//
// Thread safety: name, identifier and base never change after construction and are read
// without a lock; every operation may be called from any thread.
#pragma once

#include "ZELSysTSExport.h"
#include "ZELSysTSTypes.h"

class ZELSYSTS_EXPORT ZELSysTSMetaClass {
 public:
  ZELSysTSMetaClass();

  // The class name, interned: two meta objects of one name share the pointer. Never freed.
  virtual const char* GetClassName() = 0;
  // 1 when the class or one of its base classes bears this name (compared by content), else 0;
  // 0 for null.
  virtual int IsAKindOf(const char* className) = 0;
  // The class identifier, interned. Never null for a registered class. Never freed.
  virtual const _GUID* GetClassId() = 0;
  // 1 when the class or one of its base classes has this identifier (16 bytes equal), else 0.
  // classId must not be null.
  virtual int IsAKindOf(const _GUID* classId) = 0;
  // 1 when meta is this meta object or one reached from it through GetBaseMetaObject(),
  // compared by address; 0 otherwise and for null.
  virtual int IsAKindOf(const ZELSysTSMetaClass* meta) const;
  // The meta object of the base class (as its GetEffectiveMetaObject gave it), or null.
  virtual ZELSysTSMetaClass* GetBaseMetaObject() = 0;
  // The meta object that serves for this one; the library's meta objects return themselves.
  virtual ZELSysTSMetaClass* GetEffectiveMetaObject() = 0;

  virtual ~ZELSysTSMetaClass();

  ZELSysTSMetaClass(const ZELSysTSMetaClass&) = delete;
  ZELSysTSMetaClass& operator=(const ZELSysTSMetaClass&) = delete;
};

// Identifier under which a class's meta object is recorded in the dictionary:
// {dc9a2804-3801-43de-ad64-971fae3c7f4a}.
ZELSYSTS_EXPORT extern const _GUID CLSID_ZELSysTSMetaClass;
