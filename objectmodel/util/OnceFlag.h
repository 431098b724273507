// OnceFlag: the flag of a one-time piece of work (clearing a table before first use, reading the
// dictionary files) and the one way it is run.
//
// The flag is tested without the lock, then again under it; the work runs under the lock, and
// the flag is set after it, behind a full fence, so that a thread that sees the flag set also
// sees everything the work wrote. Work that reports failure (returns false) leaves the flag
// clear, and the next caller tries again.
#pragma once

#include <atomic>
#include <cstdint>
#include <type_traits>

#include "ZELSysTSMutex.h"
#include "util/ScopedLock.h"
#include "util/ThreadAnnotations.h"

class OnceFlag {
 public:
  // True once the work has run to success.
  bool Done() const { return done_.load(std::memory_order_seq_cst) != 0; }

  // Runs work() under `lock` unless it has succeeded before. work returns void (always a
  // success) or bool (false: not done, try again later). Work that reads fields guarded by
  // `lock` says so (EXCLUSIVE_LOCKS_REQUIRED on the lambda); the analysis cannot see through
  // this template, which takes the lock on the work's behalf.
  template <typename Work>
  void Run(ZELSmartMutex& lock, Work work) NO_THREAD_SAFETY_ANALYSIS {
    if (Done()) return;
    ScopedLock hold(lock);
    if (done_.load(std::memory_order_relaxed) != 0) return;
    if constexpr (std::is_same_v<decltype(work()), bool>) {
      if (!work()) return;
    } else {
      work();
    }
    // A sequentially consistent read-modify-write: a full fence after what the work wrote.
    done_.exchange(1, std::memory_order_seq_cst);
  }

 private:
  std::atomic<uint8_t> done_{0};
};
