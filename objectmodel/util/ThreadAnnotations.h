// Clang thread-safety annotations (-Wthread-safety) for the library's own code. A field marked
// GUARDED_BY(lock) read or written without that lock held, or a ...Locked helper called
// without it, fails the clang build. Other compilers see nothing.
//
// The capability itself is ZELSmartMutex (libZELSysTS marks it); the library takes it only
// through ScopedLock (util/ScopedLock.h), which the analysis follows.
#pragma once

#include "ZELSysTSThreadAnnotations.h"

#define GUARDED_BY(x) ZELSYSTS_THREAD_ANNOTATION(guarded_by(x))
#define PT_GUARDED_BY(x) ZELSYSTS_THREAD_ANNOTATION(pt_guarded_by(x))
#define EXCLUSIVE_LOCKS_REQUIRED(...) \
  ZELSYSTS_THREAD_ANNOTATION(exclusive_locks_required(__VA_ARGS__))
#define LOCKS_EXCLUDED(...) ZELSYSTS_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
#define LOCK_RETURNED(x) ZELSYSTS_THREAD_ANNOTATION(lock_returned(x))
#define SCOPED_LOCKABLE ZELSYSTS_THREAD_ANNOTATION(scoped_lockable)
#define EXCLUSIVE_LOCK_FUNCTION(...) \
  ZELSYSTS_THREAD_ANNOTATION(exclusive_lock_function(__VA_ARGS__))
#define UNLOCK_FUNCTION(...) ZELSYSTS_THREAD_ANNOTATION(unlock_function(__VA_ARGS__))
#define NO_THREAD_SAFETY_ANALYSIS ZELSYSTS_THREAD_ANNOTATION(no_thread_safety_analysis)
