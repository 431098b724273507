// ScopedObjectLock: holds an object's mutex for a scope when the object has one, and does
// nothing for an object without one (such an object is confined to one thread by its users).
#pragma once

#include "ZELSysTSBaseUnknown.h"
#include "core/ZELSysTSBaseUnknownAccess.h"

// Locks an object for a scope when it has a mutex; does nothing for an object without one.
class ScopedObjectLock {
 public:
  explicit ScopedObjectLock(ZELSysTSBaseUnknown* object)
      : object_(object != nullptr && object->HasMutex() ? object : nullptr) {
    if (object_ != nullptr) ZELSysTSBaseUnknownAccess::Lock(object_);
  }
  ~ScopedObjectLock() {
    if (object_ != nullptr) ZELSysTSBaseUnknownAccess::Unlock(object_);
  }
  ScopedObjectLock(const ScopedObjectLock&) = delete;
  ScopedObjectLock& operator=(const ScopedObjectLock&) = delete;

 private:
  ZELSysTSBaseUnknown* object_;
};
