// ZELMutex and ZELSmartMutex: the mutexes of the framework's system library.
//
// A ZELSmartMutex is one handle. Built with 0 it owns a recursive mutex: the thread that holds it
// may lock it again, and must unlock it as many times. Built with 1 it owns no mutex and its
// handle is null; LockF and UnlockF then do nothing and return 0 (callers that must know whether
// they are protected test Handle()).
//
// LockF and UnlockF are ordinary (non-virtual, inline) member functions of ZELMutex so that they
// can be taken as pointer-to-member functions and still cost no more than the pthread calls they
// wrap: the uncontended lock/unlock pair sits on the hot path of every QueryInterface.
//
// A ZELInlineSmartMutex is a ZELSmartMutex that holds its recursive mutex inside itself instead of
// allocating it: for long-lived tables built in large numbers (one per meta object), where the
// separate allocation costs more than the mutex. It is defined here, inline, so that it adds no
// symbol to libZELSysTS; it is taken exactly like any other ZELSmartMutex.
//
// Thread safety: LockF/UnlockF may be called from any thread. Construction and destruction are
// not synchronised; the owner constructs before sharing and destroys after the last use.
#pragma once

#include <pthread.h>

#include "ZELSysTSPlatformExport.h"
#include "ZELSysTSThreadAnnotations.h"

class ZELSYSTS_PLATFORM_EXPORT ZELSYSTS_THREAD_ANNOTATION(capability("mutex")) ZELMutex {
 public:
  // Acquires the mutex; blocks while another thread holds it. Returns the pthread status (0).
  // Without a mutex (null handle) does nothing and returns 0.
  int LockF() ZELSYSTS_THREAD_ANNOTATION(acquire_capability()) {
    return handle_ != nullptr ? pthread_mutex_lock(handle_) : 0;
  }
  // Releases one level of the mutex held by the calling thread. Returns the pthread status (0).
  // Without a mutex (null handle) does nothing and returns 0.
  int UnlockF() ZELSYSTS_THREAD_ANNOTATION(release_capability()) {
    return handle_ != nullptr ? pthread_mutex_unlock(handle_) : 0;
  }

  // The underlying mutex, or null for a ZELSmartMutex built with 1.
  pthread_mutex_t* Handle() const { return handle_; }

 protected:
  ZELMutex() = default;
  ~ZELMutex() = default;
  pthread_mutex_t* handle_ = nullptr;
};

class ZELSYSTS_PLATFORM_EXPORT ZELSYSTS_THREAD_ANNOTATION(capability("mutex")) ZELSmartMutex
    : public ZELMutex {
 public:
  // noMutex == 0: allocates and initialises a recursive mutex; Handle() is never null. When the
  // mutex cannot be allocated, one of a reserve held inside libZELSysTS serves instead.
  // noMutex != 0: holds no mutex; Handle() is null.
  explicit ZELSmartMutex(int noMutex);
  // Destroys and frees the mutex, if any. It must not be held by another thread.
  ~ZELSmartMutex();

  ZELSmartMutex(const ZELSmartMutex&) = delete;
  ZELSmartMutex& operator=(const ZELSmartMutex&) = delete;
};

class ZELSYSTS_THREAD_ANNOTATION(capability("mutex")) ZELInlineSmartMutex : public ZELSmartMutex {
 public:
  // A recursive mutex, statically initialised in place: nothing to allocate, nothing that can
  // fail. Handle() is never null and points into this object, which therefore never moves.
  ZELInlineSmartMutex() : ZELSmartMutex(1) { handle_ = &storage_; }
  // The mutex must not be held. The handle is cleared first, so that ~ZELSmartMutex frees nothing.
  ~ZELInlineSmartMutex() {
    pthread_mutex_destroy(&storage_);
    handle_ = nullptr;
  }

 private:
  pthread_mutex_t storage_ = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
};
