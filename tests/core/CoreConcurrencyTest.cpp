// The object core under threads. CI runs these under ThreadSanitizer, which also reports a
// mutex destroyed while still locked: the lock-release test at the end relies on that.
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

using namespace coretest;

namespace {

ZELSysTSMetaClass* g_chained;
std::atomic<int> g_calls{0};

ZELSysTSBaseUnknown* SlowCreate() {
  g_calls.fetch_add(1);
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  return new TestObject(g_chained, 1);
}

// Starts n threads together on body(i) and joins them.
template <typename Body>
void RunTogether(int n, Body body) {
  std::atomic<bool> go{false};
  std::vector<std::thread> threads;
  for (int i = 0; i < n; ++i) {
    threads.emplace_back([&, i] {
      while (!go.load()) std::this_thread::yield();
      body(i);
    });
  }
  go = true;
  for (auto& t : threads) t.join();
}

TEST(CoreConcurrencyTest, RacingFirstResolutionsCreateOneChainedExtension) {
  ZELSysTSMetaClass* host = RegisterClass("Host", ZELSysTSTypeImplementation, 0x10);
  g_chained = RegisterClass("HostExt", ZELSysTSTypeChainedExtension, 0x11, nullptr, "Host");
  for (int round = 0; round < 20; ++round) {
    g_calls = 0;
    auto* object = new TestObject(host, 1);
    ZELSysTSBaseUnknown* results[2] = {nullptr, nullptr};
    RunTogether(2, [&](int i) {
      results[i] = ZELSysTSBOAInternal::CreateBOA(object, g_chained, &SlowCreate);
    });
    ASSERT_NE(results[0], nullptr);
    EXPECT_EQ(results[0], results[1]);
    EXPECT_EQ(g_calls, 1);
    EXPECT_EQ(ZELSysTSBaseUnknownAccess::ChainHead(object)->GetNext(), nullptr);
    object->Release();
  }
}

class Counted : public ZELSysTSRefCounterUnknown {
 public:
  ~Counted() override { g_calls.fetch_add(1); }
};

TEST(CoreConcurrencyTest, ExactlyOneOfManyReleasesDeletesTheRefCounter) {
  constexpr int kThreads = 8;
  for (int round = 0; round < 200; ++round) {
    g_calls = 0;
    auto* counted = new Counted;
    for (int i = 1; i < kThreads; ++i) counted->AddRef();
    std::atomic<int> zeros{0};
    RunTogether(kThreads, [&](int) {
      if (counted->Release() == 0) zeros.fetch_add(1);
    });
    ASSERT_EQ(g_calls, 1);
    ASSERT_EQ(zeros, 1);
  }
}

// The destructor releases every lock level still counted: those its holder took, or the one
// that Tie_Release holds while it drops the last reference.
TEST(CoreConcurrencyTest, DestructionReleasesEveryLockStillCounted) {
  for (bool throughTie : {false, true}) {
    int32_t locksAtDeath = -1;
    auto* object = new TestObject(ZELSysTSBaseUnknown::MetaObject(), 1);
    object->at_death = [&] { locksAtDeath = LockCount(object); };
    ZELSysTSBaseUnknown* tied = object;
    int tieCount = 1;
    unsigned char mustDelete = 0;
    if (throughTie) {
      EXPECT_EQ(ZELSysTSTIEInternal::Tie_Release(tieCount, tied, mustDelete), 0);
      EXPECT_EQ(tied, nullptr);
      EXPECT_EQ(mustDelete, 1);
    } else {
      object->Lock();
      object->Lock();
      EXPECT_EQ(object->Release(), 0u);
    }
    EXPECT_EQ(locksAtDeath, throughTie ? 1 : 2);
  }
}

}  // namespace
