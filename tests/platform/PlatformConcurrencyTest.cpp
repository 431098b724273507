// The platform layer between threads: a recursively held mutex excludes other threads until the
// last unlock, and racing first loads of a library share one handle and one initialisation.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "LibraryManagerCounter.h"
#include "ZELSysTSMutex.h"
#include "ZELThrLibraryManager.h"

namespace {

TEST(ZELSmartMutexConcurrencyTest, AnotherThreadWaitsUntilTheLastUnlock) {
  ZELSmartMutex mutex(0);
  ASSERT_EQ(mutex.LockF(), 0);
  ASSERT_EQ(mutex.LockF(), 0);
  ASSERT_EQ(mutex.UnlockF(), 0);
  std::atomic<bool> acquired{false};
  std::thread waiter([&] {
    mutex.LockF();
    acquired.store(true);
    mutex.UnlockF();
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_FALSE(acquired.load()) << "another thread got a mutex that is still held once";
  EXPECT_EQ(mutex.UnlockF(), 0);
  waiter.join();
  EXPECT_TRUE(acquired.load());
}

TEST(ZELThrLibraryManagerConcurrencyTest, ConcurrentFirstLoadsInitialiseOnce) {
  constexpr int kThreads = 8;
  const char* spellings[] = {"ZELPlatformProbe", "libZELPlatformProbe", "libZELPlatformProbe.so"};
  void* handles[kThreads] = {};
  void* functions[kThreads] = {};
  std::atomic<bool> go{false};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      while (!go.load()) std::this_thread::yield();
      const char* name = spellings[t % 3];
      if (t % 2 == 0) handles[t] = ZELThrLibraryManager::LoadLibrary(name);
      functions[t] =
          ZELThrLibraryManager::GetFunctionAddress(name, "ZELPlatformProbeInitialisations");
      if (t % 2 != 0) handles[t] = ZELThrLibraryManager::LoadLibrary(name);
    });
  }
  go.store(true);
  for (auto& thread : threads) thread.join();

  ASSERT_NE(handles[0], nullptr);
  ASSERT_NE(functions[0], nullptr);
  for (int t = 1; t < kThreads; ++t) {
    EXPECT_EQ(handles[t], handles[0]) << "thread " << t;
    EXPECT_EQ(functions[t], functions[0]) << "thread " << t;
  }
  EXPECT_EQ(reinterpret_cast<int (*)()>(functions[0])(), 1);
  EXPECT_EQ(zeltest::LibraryLoads(), static_cast<unsigned long>(kThreads));
  EXPECT_EQ(zeltest::FunctionLookups(), static_cast<unsigned long>(kThreads));
}

}  // namespace
