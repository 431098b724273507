// ZELSmartMutex between threads: a recursively held mutex excludes other threads until the last
// unlock, and LockF/UnlockF give mutual exclusion under contention.
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <thread>
#include <vector>

#include "ZELSysTSMutex.h"

namespace {

// pthread_mutex_trylock on another thread; releases at once what it got.
int TryLockFromAnotherThread(ZELSmartMutex& mutex) {
  int status = -1;
  std::thread other([&] {
    status = pthread_mutex_trylock(mutex.Handle());
    if (status == 0) pthread_mutex_unlock(mutex.Handle());
  });
  other.join();
  return status;
}

TEST(ZELSmartMutexConcurrencyTest, AnotherThreadWaitsUntilTheLastUnlock) {
  ZELSmartMutex mutex(0);
  ASSERT_NE(mutex.Handle(), nullptr);
  EXPECT_EQ(TryLockFromAnotherThread(mutex), 0);

  ASSERT_EQ(mutex.LockF(), 0);
  ASSERT_EQ(mutex.LockF(), 0);
  EXPECT_EQ(TryLockFromAnotherThread(mutex), EBUSY);
  ASSERT_EQ(mutex.UnlockF(), 0);
  EXPECT_EQ(TryLockFromAnotherThread(mutex), EBUSY) << "one unlock released a lock held twice";

  std::atomic<bool> acquired{false};
  std::thread waiter([&] {
    mutex.LockF();
    acquired.store(true);
    mutex.UnlockF();
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_FALSE(acquired.load()) << "another thread got a mutex that is held";
  ASSERT_EQ(mutex.UnlockF(), 0);
  waiter.join();
  EXPECT_TRUE(acquired.load());
  EXPECT_EQ(TryLockFromAnotherThread(mutex), 0);
}

TEST(ZELSmartMutexConcurrencyTest, ContendedNestedLockingExcludesEveryOtherThread) {
  ZELSmartMutex mutex(0);
  int (ZELMutex::*lock)() = &ZELMutex::LockF;
  int (ZELMutex::*unlock)() = &ZELMutex::UnlockF;
  constexpr int kThreads = 4;
  constexpr int kRounds = 20000;
  long counter = 0;  // guarded by mutex; a plain variable so that a missed exclusion shows
  int inside = 0;    // guarded by mutex: threads inside the critical section
  std::atomic<int> overlaps{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < kRounds; ++i) {
        (mutex.*lock)();
        (mutex.*lock)();
        if (++inside != 1) overlaps.fetch_add(1);
        ++counter;
        (mutex.*unlock)();
        ++counter;  // still held once
        --inside;
        (mutex.*unlock)();
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(overlaps.load(), 0);
  EXPECT_EQ(counter, 2L * kThreads * kRounds);
}

}  // namespace
