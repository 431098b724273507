// The plain reference-counted object.
#include <gtest/gtest.h>

#include <atomic>

#include "ZELSysTSRefCounterUnknown.h"

namespace {

std::atomic<int> g_deletes{0};

class Counted : public ZELSysTSRefCounterUnknown {
 public:
  ~Counted() override { g_deletes.fetch_add(1); }
};

TEST(RefCounterUnknownTest, LastReleaseDeletesThroughTheDerivedDestructor) {
  g_deletes = 0;
  auto* counted = new Counted;
  EXPECT_EQ(counted->AddRef(), 2u);
  EXPECT_EQ(counted->Release(), 1u);
  EXPECT_EQ(g_deletes, 0);
  EXPECT_EQ(counted->Release(), 0u);
  EXPECT_EQ(g_deletes, 1);
}

}  // namespace
