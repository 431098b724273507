// GuidPool: the process-wide pool of interned 16-byte GUIDs.
//
// Invariants: equal content (all 16 bytes) gives the same pointer; a pooled GUID is never
// moved, changed or freed until the process ends. Each of the 4096 chains is in order of first
// interning.
//
// Thread safety: every operation may be called from any thread. The GUID pool's lock
// (SharedLocks::GuidPoolLock()) guards the chains; it is innermost (see util/LockOrder.h). The
// bucket is computed before it is taken.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ZELSysTSTypes.h"

class GuidPool {
 public:
  static constexpr int kBuckets = 4096;

  // The pooled copy of *guid, or null when guid is null (or memory cannot be obtained).
  static const _GUID* Intern(const _GUID* guid);
  // Clears the chain heads once; Intern runs it on first use.
  static void Initialize();

  // Bucket: Data1 (native order) + sum of i * byte[i] for i in 1..15, wrapping, low 12 bits.
  static uint32_t Bucket(const _GUID* guid);

  // Test seam: the allocation function used for GUIDs, nodes and the index (malloc by default);
  // null restores it.
  static void SetAllocatorForTesting(void* (*allocate)(size_t));
};
