// ScopedLock: holds a ZELSmartMutex for the life of a scope, through ZELMutex::LockF and
// ZELMutex::UnlockF, so that every path releases what it took. The mutex must have a handle
// (be built with 0); for objects that may have none, use ScopedObjectLock (core/).
#pragma once

#include "ZELSysTSMutex.h"
#include "util/ThreadAnnotations.h"

class SCOPED_LOCKABLE ScopedLock {
 public:
  explicit ScopedLock(ZELSmartMutex& mutex) EXCLUSIVE_LOCK_FUNCTION(mutex) : mutex_(mutex) {
    mutex_.ZELMutex::LockF();
  }
  ~ScopedLock() UNLOCK_FUNCTION() { mutex_.ZELMutex::UnlockF(); }
  ScopedLock(const ScopedLock&) = delete;
  ScopedLock& operator=(const ScopedLock&) = delete;

 private:
  ZELSmartMutex& mutex_;
};
