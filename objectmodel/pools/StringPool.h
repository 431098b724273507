// StringPool: the process-wide pool of interned NUL-terminated byte strings.
//
// Invariants: equal content gives the same pointer; a pooled text is never moved, changed or
// freed until the process ends. Texts are packed one after another, each with its terminator,
// into the pool's arena; a text of kChunkBytes bytes or more is never pooled.
//
// Thread safety: every operation may be called from any thread. One lock,
// SharedLocks::StringPoolLock(), guards the index and the arena; it is the innermost lock of the
// system (see util/LockOrder.h). Length and hash are computed before it is taken. A caller that
// interns several names in a row (a dictionary line) may take it once around InternLocked calls.
#pragma once

#include <cstddef>
#include <cstdint>

#include "util/LockOrder.h"
#include "util/ThreadAnnotations.h"

class StringPool {
 public:
  static constexpr int32_t kChunkBytes = 5000;

  // A text with its length and hash, computed before any lock is taken (text may be null).
  struct Text {
    const char* text;
    size_t length;
    uint64_t hash;
  };
  static Text Prepare(const char* text);

  // The pooled copy of text (equal by strcmp), or null when text is null, its length is
  // kChunkBytes bytes or more, or memory cannot be obtained; nothing is stored on failure.
  // Callers never free or write through the result.
  static const char* Intern(const char* text);
  // As Intern, for a prepared text.
  static const char* Intern(const Text& text);
  // As Intern, for a caller that holds the pool's lock.
  static const char* InternLocked(const Text& text)
      EXCLUSIVE_LOCKS_REQUIRED(SharedLocks::StringPoolLock());
  // Starts loading what interning text will read first, so that a caller can overlap it with
  // other work (a hint; any thread, no lock).
  static void Prefetch(const Text& text) NO_THREAD_SAFETY_ANALYSIS;
  // Marks the pool initialised. The pool needs no clearing (it is constant-initialized empty);
  // Intern works without it.
  static void Initialize();

  // Test seam: the allocation function used for the arena's blocks and the index (malloc by
  // default). Passing null restores malloc.
  static void SetAllocatorForTesting(void* (*allocate)(size_t));
};
