// ZELSmartMutex on one thread: what each construction argument gives, and the lock operations
// taken as pointer-to-member functions.
#include <gtest/gtest.h>
#include <pthread.h>

#include <cerrno>

#include "ZELSysTSMutex.h"

namespace {

TEST(ZELSmartMutexTest, BuiltWithOneHoldsNoMutexAndItsOperationsDoNothing) {
  ZELSmartMutex none(1);
  EXPECT_EQ(none.Handle(), nullptr);
  EXPECT_EQ(none.LockF(), 0);
  EXPECT_EQ(none.UnlockF(), 0);
  ZELSmartMutex other(7);
  EXPECT_EQ(other.Handle(), nullptr) << "any argument but 0 means no mutex";
}

TEST(ZELSmartMutexTest, BuiltWithZeroHoldsARecursiveMutex) {
  ZELSmartMutex mutex(0);
  ASSERT_NE(mutex.Handle(), nullptr);
  EXPECT_EQ(mutex.LockF(), 0);
  EXPECT_EQ(mutex.LockF(), 0) << "the holder could not lock again";
  EXPECT_EQ(mutex.UnlockF(), 0);
  EXPECT_EQ(mutex.UnlockF(), 0);
  // A recursive pthread mutex refuses an unlock by a thread that does not hold it.
  EXPECT_EQ(mutex.UnlockF(), EPERM);
}

TEST(ZELSmartMutexTest, EachMutexHasItsOwnHandle) {
  ZELSmartMutex a(0);
  ZELSmartMutex b(0);
  ASSERT_NE(a.Handle(), nullptr);
  EXPECT_NE(a.Handle(), b.Handle());
}

TEST(ZELSmartMutexTest, LockAndUnlockWorkAsPointerToMemberFunctions) {
  int (ZELMutex::*lock)() = &ZELMutex::LockF;
  int (ZELMutex::*unlock)() = &ZELMutex::UnlockF;
  ZELSmartMutex mutex(0);
  ZELMutex& base = mutex;
  EXPECT_EQ((base.*lock)(), 0);
  EXPECT_EQ((mutex.*lock)(), 0);
  EXPECT_EQ((mutex.*unlock)(), 0);
  EXPECT_EQ((base.*unlock)(), 0);
  EXPECT_EQ((base.*unlock)(), EPERM) << "lock and unlock calls were not balanced";
}

}  // namespace
