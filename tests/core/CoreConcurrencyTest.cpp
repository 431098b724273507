// The object core under threads. CI runs these under ThreadSanitizer, which also reports a
// mutex destroyed while still locked: the lock-release tests at the end rely on that.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "CoreTestObjects.h"
#include "ZELSysTSBOAInternal.h"
#include "ZELSysTSRefCounterUnknown.h"
#include "ZELSysTSTIEInternal.h"
#include "core/ZELSysTSChainExtension.h"

using coretest::Count;
using coretest::LockCount;
using coretest::RegisterClass;
using coretest::TestObject;

namespace {

ZELSysTSMetaClass* g_host;
ZELSysTSMetaClass* g_chained;
std::atomic<int> g_creates{0};

size_t ChainLength(ZELSysTSBaseUnknown* object) {
  size_t length = 0;
  for (ZELSysTSChainExtension* node = ZELSysTSBaseUnknownAccess::ChainHead(object); node != nullptr;
       node = node->GetNext()) {
    ++length;
  }
  return length;
}

class CoreConcurrencyTest : public ::testing::Test {
 protected:
  void SetUp() override {
    g_host = RegisterClass("Host", ZELSysTSTypeImplementation, 0x10);
    g_chained = RegisterClass("HostExt", ZELSysTSTypeChainedExtension, 0x11, nullptr, "Host");
    g_creates = 0;
  }
};

ZELSysTSBaseUnknown* SlowCreate() {
  g_creates.fetch_add(1);
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  return new TestObject(g_chained, 1);
}

TEST_F(CoreConcurrencyTest, RacingFirstResolutionsCreateOneExtension) {
  for (int round = 0; round < 20; ++round) {
    g_creates = 0;
    auto* object = new TestObject(g_host, 1);
    std::atomic<bool> go{false};
    ZELSysTSBaseUnknown* results[2] = {nullptr, nullptr};
    std::thread threads[2];
    for (int i = 0; i < 2; ++i) {
      threads[i] = std::thread([&, i] {
        while (!go.load()) std::this_thread::yield();
        results[i] = ZELSysTSBOAInternal::CreateBOA(object, g_chained, &SlowCreate);
      });
    }
    go = true;
    for (auto& t : threads) t.join();
    ASSERT_NE(results[0], nullptr);
    EXPECT_EQ(results[0], results[1]);
    EXPECT_EQ(g_creates, 1);
    EXPECT_EQ(ChainLength(object), 1u);
    object->Release();
  }
}

TEST_F(CoreConcurrencyTest, SharedTieKeepsBothCountsEqualAcrossThreads) {
  auto* object = new TestObject(g_host, 1);
  int tieCount = 1;  // stands for the object's one reference
  ZELSysTSBaseUnknown* tied = object;
  constexpr int kThreads = 4;
  constexpr int kRounds = 2000;
  std::atomic<int> mismatches{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < kRounds; ++i) {
        ZELSysTSTIEInternal::Tie_AddRef(tieCount, object);
        {
          // Under the object's lock the two counts agree: they only move together.
          object->Lock();
          if (static_cast<uint32_t>(tieCount) != Count(object)) mismatches.fetch_add(1);
          object->Unlock();
        }
        ZELSysTSBaseUnknown* mine = tied;
        unsigned char mustDelete = 0;
        ZELSysTSTIEInternal::Tie_Release(tieCount, mine, mustDelete);
        if (mustDelete != 0) mismatches.fetch_add(1);
      }
    });
  }
  for (auto& t : threads) t.join();
  EXPECT_EQ(mismatches, 0);
  EXPECT_EQ(tieCount, 1);
  EXPECT_EQ(Count(object), 1u);
  object->Release();
}

std::atomic<int> g_deletes{0};

class Counted : public ZELSysTSRefCounterUnknown {
 public:
  ~Counted() override { g_deletes.fetch_add(1); }
};

TEST(RefCounterConcurrencyTest, ConcurrentPairsNeverDeleteAHeldObject) {
  g_deletes = 0;
  auto* counted = new Counted;
  std::vector<std::thread> threads;
  for (int t = 0; t < 8; ++t) {
    threads.emplace_back([counted] {
      for (int i = 0; i < 20000; ++i) {
        counted->AddRef();
        counted->Release();
      }
    });
  }
  for (auto& t : threads) t.join();
  EXPECT_EQ(g_deletes, 0);
  EXPECT_EQ(counted->AddRef(), 2u);  // still 1 before this
  counted->Release();
  EXPECT_EQ(counted->Release(), 0u);
  EXPECT_EQ(g_deletes, 1);
}

TEST(RefCounterConcurrencyTest, ExactlyOneOfManyReleasesDeletes) {
  constexpr int kThreads = 8;
  for (int round = 0; round < 200; ++round) {
    g_deletes = 0;
    auto* counted = new Counted;
    for (int i = 1; i < kThreads; ++i) counted->AddRef();
    std::atomic<bool> go{false};
    std::atomic<int> zeros{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
      threads.emplace_back([&] {
        while (!go.load()) std::this_thread::yield();
        if (counted->Release() == 0) zeros.fetch_add(1);
      });
    }
    go = true;
    for (auto& t : threads) t.join();
    ASSERT_EQ(g_deletes, 1);
    ASSERT_EQ(zeros, 1);
  }
}

// Records the lock count that the base destructor will find.
class LockedAtDeath : public ZELSysTSBaseUnknown {
 public:
  explicit LockedAtDeath(int32_t* seen) : ZELSysTSBaseUnknown(1), seen_(seen) {}
  ~LockedAtDeath() override { *seen_ = LockCount(this); }

 private:
  int32_t* seen_;
};

TEST_F(CoreConcurrencyTest, DestructionReleasesLocksStillHeld) {
  int32_t seen = -1;
  auto* object = new LockedAtDeath(&seen);
  object->Lock();
  object->Lock();
  EXPECT_EQ(LockCount(object), 2);
  object->Unlock();
  EXPECT_EQ(LockCount(object), 1);
  object->Lock();
  EXPECT_EQ(object->Release(), 0u);
  EXPECT_EQ(seen, 2);

  seen = -1;
  (new LockedAtDeath(&seen))->Release();
  EXPECT_EQ(seen, 0);
}

// The lock that Tie_Release holds is released by the object's destructor, and nothing unlocks
// the freed object afterwards (AddressSanitizer would report it).
TEST_F(CoreConcurrencyTest, TieReleaseOfTheLastReferenceLeavesNoLockBehind) {
  int32_t seen = -1;
  ZELSysTSBaseUnknown* tied = new LockedAtDeath(&seen);
  int tieCount = 1;
  unsigned char mustDelete = 0;
  EXPECT_EQ(ZELSysTSTIEInternal::Tie_Release(tieCount, tied, mustDelete), 0);
  EXPECT_EQ(seen, 1);
  EXPECT_EQ(tied, nullptr);
  EXPECT_EQ(mustDelete, 1);
}

}  // namespace
