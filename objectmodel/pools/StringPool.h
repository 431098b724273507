// StringPool: the process-wide pool of interned NUL-terminated byte strings.
//
// Invariants: equal content gives the same pointer; a pooled text is never moved, changed or
// freed until the process ends. Texts are packed into 5000-byte chunks; each of the 4096 chains
// is ordered by length (longest first), then by ascending strcmp order, whatever the order of
// interning.
//
// Thread safety: every operation may be called from any thread. One lock,
// SharedLocks::StringPoolLock(), guards the chains, the chunks, the write position and the bytes
// left; it is the innermost lock of the system (see util/LockOrder.h). The bucket and length are
// computed before it is taken.
#pragma once

#include <cstddef>
#include <cstdint>

class StringPool {
 public:
  static constexpr int kBuckets = 4096;
  static constexpr int32_t kChunkBytes = 5000;

  // The pooled copy of text (equal by strcmp), or null when text is null, its length is 5000
  // bytes or more, or memory cannot be obtained; nothing is stored on failure. Callers never
  // free or write through the result.
  static const char* Intern(const char* text);
  // Clears the chain heads once; Intern runs it on first use.
  static void Initialize();

  // Bucket of a text: sum of i * (unsigned) text[i], wrapping in 32 bits, low 12 bits. Stores
  // the length in *length when length is not null.
  static uint32_t Bucket(const char* text, int32_t* length);

  // Test seam: the allocation function used for chunks, nodes, the chains' sorted mirrors and the
  // index (malloc by default). Passing null restores malloc.
  static void SetAllocatorForTesting(void* (*allocate)(size_t));
};
