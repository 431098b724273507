// libZELSysTS between threads: mutual exclusion, and racing first loads of one library.
#include <gtest/gtest.h>

#include <future>

#include "TestSupport.h"
#include "ZELSysTS.h"

namespace {

using Manager = ZELThrLibraryManager;

TEST(ZELSmartMutexConcurrencyTest, TheHolderRelocksAndOthersWaitUntilTheLastUnlock) {
  ZELSmartMutex mutex(0);
  pthread_mutex_t* handle = mutex.Handle();
  const auto takeAndGiveBack = [handle] {
    return pthread_mutex_trylock(handle) == 0 && pthread_mutex_unlock(handle) == 0;
  };
  const auto freeForOthers = [&] { return std::async(std::launch::async, takeAndGiveBack).get(); };
  ASSERT_EQ(mutex.LockF(), 0);
  ASSERT_EQ(mutex.LockF(), 0) << "the holder could not lock again";
  ASSERT_EQ(mutex.UnlockF(), 0);
  EXPECT_FALSE(freeForOthers()) << "one unlock released a mutex locked twice";
  ASSERT_EQ(mutex.UnlockF(), 0);
  EXPECT_TRUE(freeForOthers());
}

TEST(ZELThrLibraryManagerConcurrencyTest, RacingFirstLoadsShareOneHandleAndOneInitialisation) {
  const char* names[] = {"ZELPlatformProbe", "libZELPlatformProbe", "libZELPlatformProbe.so"};
  void* handles[6] = {};
  zeltest::RunTogether(6, [&](int t) { handles[t] = Manager::LoadLibrary(names[t % 3]); });
  for (void* handle : handles) EXPECT_EQ(handle, handles[0]);
  void* count = Manager::GetFunctionAddress(names[0], "ZELPlatformProbeInitialisations");
  ASSERT_NE(count, nullptr);
  EXPECT_EQ(reinterpret_cast<int (*)()>(count)(), 1);
}

}  // namespace
