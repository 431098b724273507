// Several threads share one thread-safe object and take and drop references through the kit:
// interface pointers copied across threads, ties on each kind of implementation, transient
// extensions. When they are done, every count is back and nothing is left alive.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "KitComponentsFixture.h"

namespace {

using kittest::KitComponents;

constexpr int kThreads = 4;
constexpr int kRounds = 200;

TEST_F(KitComponents, SharedObjectAcrossThreads) {
  ZELSysTSPtr<ZELSysTSBaseUnknown> a = Make("KitWidgetA");
  ASSERT_TRUE(a);
  ZELSysTSPtr<IKitCounter> shared = a;  // the chained extension, made before the threads start
  ASSERT_TRUE(shared);
  const int serial = shared->Serial();

  std::vector<std::thread> threads;
  std::vector<int> failures(kThreads, 0);
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < kRounds; ++i) {
        ZELSysTSPtr<IKitCounter> counter = shared;  // copy: AddRef on the object
        ZELSysTSPtr<IKitTicket> ticket = counter;   // a new transient extension
        ZELSysTSPtr<IKitLabel> label = ticket;      // a tie on the object itself
        ZELSysTSPtr<IKitChainedLabel> chained = a;  // a tie on the chained extension
        ZELSysTSPtr<IKitTransientLabel> owned = label;
        if (!counter || !ticket || !label || !chained || !owned) ++failures[t];
        if (counter && counter->Serial() != serial) ++failures[t];
        ZELSysTSPtr<IKitTransientLabel> copy = owned;
        copy = nullptr;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (int t = 0; t < kThreads; ++t) EXPECT_EQ(failures[t], 0) << "thread " << t;

  shared.Release();
  EXPECT_EQ(CountOf(a.Get()), 1u);
  EXPECT_EQ(LiveTies(), 0);
  EXPECT_EQ(LiveObjects(), 2);  // the object and its chained extension
}

}  // namespace
