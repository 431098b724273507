// ZELSysTSBaseUnknownAccess: the library's own access to the private fields of
// ZELSysTSBaseUnknown (the count, the link and the lock count), for the extension chain, the
// adapters and the ties, and for tests. Link and chain are touched only under the object's lock
// (when it has one).
#pragma once

#include <cstdint>

#include "ZELSysTSBaseUnknown.h"
#include "util/ThreadAnnotations.h"

class ZELSysTSChainExtension;

struct ZELSysTSBaseUnknownAccess {
  static uint32_t Count(const ZELSysTSBaseUnknown* o) { return o->reference_count; }
  static int32_t LockCount(const ZELSysTSBaseUnknown* o) { return o->lock_count; }
  static void* Link(const ZELSysTSBaseUnknown* o) { return o->link; }
  // The link is written atomically (relaxed) so that AddRef and Release may test it without the
  // lock (LinkUnlocked); it is otherwise read under the object's lock, or once it no longer
  // changes (an extension's link, set before the extension is handed out).
  static void SetLink(ZELSysTSBaseUnknown* o, void* link) {
    __atomic_store_n(&o->link, link, __ATOMIC_RELAXED);
  }
  // Null tells that the object counts its references for itself, whatever its class: an
  // ordinary object gains a link only under its lock, and an extension's link never changes
  // once the extension is handed out. A non-null value may be stale for an ordinary object.
  static void* LinkUnlocked(const ZELSysTSBaseUnknown* o) {
    return __atomic_load_n(&o->link, __ATOMIC_RELAXED);
  }
  static ZELSysTSChainExtension* ChainHead(const ZELSysTSBaseUnknown* o) {
    return static_cast<ZELSysTSChainExtension*>(o->link);
  }
  static ZELSysTSBaseUnknown* Extended(const ZELSysTSBaseUnknown* o) {
    return static_cast<ZELSysTSBaseUnknown*>(o->link);
  }
  // Lock() and Unlock() inlined, for the library's own hot paths: the object must have a mutex.
  static void Lock(ZELSysTSBaseUnknown* o) NO_THREAD_SAFETY_ANALYSIS {
    (o->mutex.*(&ZELMutex::LockF))();
    ++o->lock_count;
  }
  static void Unlock(ZELSysTSBaseUnknown* o) NO_THREAD_SAFETY_ANALYSIS {
    --o->lock_count;
    (o->mutex.*(&ZELMutex::UnlockF))();
  }
};
