// GuidPool: the process-wide pool of interned 16-byte GUIDs.
//
// Invariants: equal content (all 16 bytes) gives the same pointer; a pooled GUID is never
// moved, changed or freed until the process ends. GUIDs are packed into the pool's arena.
//
// Thread safety: every operation may be called from any thread. The GUID pool's lock
// (SharedLocks::GuidPoolLock()) guards the index and the arena; it is innermost (see
// util/LockOrder.h). The hash is computed before it is taken.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ZELSysTSTypes.h"
#include "util/ThreadAnnotations.h"

class GuidPool {
 public:
  // The pooled copy of *guid, or null when guid is null (or memory cannot be obtained; nothing
  // is stored then).
  static const _GUID* Intern(const _GUID* guid);
  // As Intern, given the GUID's hash (HashOfGuid, pools/KeyHash.h), computed before.
  static const _GUID* Intern(const _GUID* guid, uint64_t hash);
  // Starts loading what interning a GUID of that hash will read first (a hint; any thread, no
  // lock).
  static void Prefetch(uint64_t hash) NO_THREAD_SAFETY_ANALYSIS;
  // Marks the pool initialised. The pool needs no clearing (it is constant-initialized empty);
  // Intern works without it.
  static void Initialize();

  // Test seam: the allocation function used for the arena's blocks and the index (malloc by
  // default); null restores it.
  static void SetAllocatorForTesting(void* (*allocate)(size_t));
};
