// Built with assertions whatever the build type: dereferencing an empty pointer must stop.
#include <gtest/gtest.h>

#include "CountingObject.h"

namespace {

TEST(KitPtrDebug, UsingAnEmptyPointerAsserts) {
  ZELSysTSPtr<IAlpha> empty;
  EXPECT_DEATH(empty->Alpha(), "empty interface pointer");
  EXPECT_DEATH((*empty).Alpha(), "empty interface pointer");

  CountingObject object;
  ZELSysTSPtr<IAlpha> gone = ZELSysTSPtr<IAlpha>::Attach(&object);
  gone.Release();
  EXPECT_DEATH(gone->Alpha(), "empty interface pointer");
}

}  // namespace
