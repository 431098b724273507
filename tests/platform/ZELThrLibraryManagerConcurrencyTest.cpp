// The library manager called from many threads at once: the first load of a library races with
// itself, yet every thread gets the same handle and the library initialises once.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "ZELThrLibraryManager.h"

namespace {

TEST(ZELThrLibraryManagerConcurrencyTest, ConcurrentFirstLoadsInitialiseOnce) {
  constexpr int kThreads = 8;
  const char* spellings[] = {"ZELPlatformProbeRace", "libZELPlatformProbeRace",
                             "libZELPlatformProbeRace.so"};
  std::vector<void*> handles(kThreads, nullptr);
  std::vector<void*> functions(kThreads, nullptr);
  std::atomic<bool> go{false};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      while (!go.load()) std::this_thread::yield();
      const char* name = spellings[t % 3];
      if (t % 2 == 0) {
        handles[t] = ZELThrLibraryManager::LoadLibrary(name);
        functions[t] = ZELThrLibraryManager::GetFunctionAddress(name, "ZELPlatformProbeGet");
      } else {
        functions[t] = ZELThrLibraryManager::GetFunctionAddress(name, "ZELPlatformProbeGet");
        handles[t] = ZELThrLibraryManager::LoadLibrary(name);
      }
    });
  }
  go.store(true);
  for (auto& thread : threads) thread.join();

  for (int t = 0; t < kThreads; ++t) {
    ASSERT_NE(handles[t], nullptr) << "thread " << t;
    EXPECT_EQ(handles[t], handles[0]) << "thread " << t;
    EXPECT_EQ(functions[t], functions[0]) << "thread " << t;
  }
  ASSERT_NE(functions[0], nullptr);
  auto initialisations = reinterpret_cast<int (*)()>(ZELThrLibraryManager::GetFunctionAddress(
      "ZELPlatformProbeRace", "ZELPlatformProbeInitialisations"));
  ASSERT_NE(initialisations, nullptr);
  EXPECT_EQ(initialisations(), 1);
  EXPECT_GE(ZELThrLibraryManager::LoadLibraryCalls(), static_cast<unsigned long>(kThreads));
}

TEST(ZELThrLibraryManagerConcurrencyTest, ConcurrentFailuresStayNull) {
  constexpr int kThreads = 6;
  std::atomic<int> nonNull{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 50; ++i) {
        if (ZELThrLibraryManager::LoadLibrary("ZELNoSuchLibraryAnywhere") != nullptr) ++nonNull;
        if (ZELThrLibraryManager::GetFunctionAddress("ZELPlatformProbe", "ZELNoSuchFunction") !=
            nullptr) {
          ++nonNull;
        }
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(nonNull.load(), 0);
  EXPECT_EQ(ZELThrLibraryManager::LoadLibraryCalls(), static_cast<unsigned long>(kThreads * 50));
}

}  // namespace
