// The tie functions: implementation lookup, queries, and the tie count moving with the object's.
#include <gtest/gtest.h>

#include <vector>

#include "CoreTestObjects.h"
#include "ZELSysTSTIEInternal.h"

using coretest::Count;
using coretest::Events;
using coretest::LockCount;
using coretest::MakeGuid;
using coretest::RegisterClass;
using coretest::TestObject;

namespace {

const _GUID kIidIUnknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

ZELSysTSMetaClass* g_host;
ZELSysTSMetaClass* g_chained;
int g_creates = 0;

ZELSysTSBaseUnknown* CreateChained() {
  ++g_creates;
  return new TestObject(g_chained, 1);
}

class TieTest : public ::testing::Test {
 protected:
  void SetUp() override {
    Events().clear();
    g_host = RegisterClass("TieHost", ZELSysTSTypeImplementation, 0x30);
    g_chained = RegisterClass("TieHostExt", ZELSysTSTypeChainedExtension, 0x31, nullptr, "TieHost");
    g_creates = 0;
  }
  coretest::QuietDictionary dictionary_;
};

TEST_F(TieTest, ConstructFindsTheImplementation) {
  auto* object = new TestObject(g_host, 1);
  ZELSysTSBaseUnknown* impl = object;
  EXPECT_EQ(ZELSysTSTIEInternal::Tie_Construct(object, nullptr, &CreateChained, impl), E_FAIL);
  EXPECT_EQ(impl, nullptr);
  impl = object;
  EXPECT_EQ(ZELSysTSTIEInternal::Tie_Construct(nullptr, g_chained, &CreateChained, impl), E_FAIL);
  EXPECT_EQ(impl, nullptr);
  EXPECT_EQ(g_creates, 0);

  EXPECT_EQ(ZELSysTSTIEInternal::Tie_Construct(object, g_host, nullptr, impl), S_OK);
  EXPECT_EQ(impl, object);

  ZELSysTSBaseUnknown* first = nullptr;
  ZELSysTSBaseUnknown* second = nullptr;
  EXPECT_EQ(ZELSysTSTIEInternal::Tie_Construct(object, g_chained, &CreateChained, first), S_OK);
  EXPECT_EQ(ZELSysTSTIEInternal::Tie_Construct(object, g_chained, &CreateChained, second), S_OK);
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first, second);
  EXPECT_EQ(g_creates, 1);

  ZELSysTSMetaClass* unrelated = RegisterClass("Elsewhere", ZELSysTSTypeImplementation, 0x32);
  impl = object;
  EXPECT_EQ(ZELSysTSTIEInternal::Tie_Construct(object, unrelated, &CreateChained, impl), E_FAIL);
  EXPECT_EQ(impl, nullptr);
  EXPECT_EQ(Count(object), 1u);
  object->Release();
}

TEST_F(TieTest, QueryGoesToTheObject) {
  void* out = &out;
  EXPECT_EQ(ZELSysTSTIEInternal::Tie_Query(nullptr, kIidIUnknown, &out), E_UNEXPECTED);
  EXPECT_EQ(out, nullptr);

  auto* object = new TestObject(g_host, 1);
  EXPECT_EQ(ZELSysTSTIEInternal::Tie_Query(object, kIidIUnknown, &out), S_OK);
  EXPECT_EQ(out, static_cast<IUnknown*>(object));
  EXPECT_EQ(Count(object), 2u);
  out = &out;
  EXPECT_EQ(ZELSysTSTIEInternal::Tie_Query(object, MakeGuid(0x33), &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
  object->Release();
  object->Release();
}

TEST_F(TieTest, TieCountAndObjectCountMoveTogether) {
  for (unsigned char threadSafe : {1, 0}) {
    auto* object = new TestObject(g_host, threadSafe, "host");
    object->AddRef();
    int tieCount = 1;
    EXPECT_EQ(ZELSysTSTIEInternal::Tie_AddRef(tieCount, object), 2);
    EXPECT_EQ(tieCount, 2);
    EXPECT_EQ(Count(object), 3u);
    EXPECT_EQ(LockCount(object), 0);

    ZELSysTSBaseUnknown* tied = object;
    unsigned char mustDelete = 1;
    EXPECT_EQ(ZELSysTSTIEInternal::Tie_Release(tieCount, tied, mustDelete), 1);
    EXPECT_EQ(mustDelete, 0);
    EXPECT_EQ(tied, object);
    EXPECT_EQ(Count(object), 2u);
    EXPECT_EQ(LockCount(object), 0);

    EXPECT_EQ(ZELSysTSTIEInternal::Tie_Release(tieCount, tied, mustDelete), 0);
    EXPECT_EQ(mustDelete, 1);
    EXPECT_EQ(tied, nullptr);
    EXPECT_EQ(Count(object), 1u);
    EXPECT_EQ(LockCount(object), 0);
    object->Release();
  }
}

TEST_F(TieTest, NullObjectChangesNothing) {
  int tieCount = 5;
  ZELSysTSBaseUnknown* object = nullptr;
  unsigned char mustDelete = 1;
  EXPECT_EQ(ZELSysTSTIEInternal::Tie_AddRef(tieCount, nullptr), 0);
  EXPECT_EQ(ZELSysTSTIEInternal::Tie_Release(tieCount, object, mustDelete), 0);
  EXPECT_EQ(tieCount, 5);
  EXPECT_EQ(mustDelete, 0);
}

// The tie's lock is released by the object's destructor, and never again afterwards
// (AddressSanitizer reports an unlock of the freed object; ThreadSanitizer a locked mutex
// destroyed).
TEST_F(TieTest, ReleasingTheLastReferenceDestroysTheObject) {
  auto* object = new TestObject(g_host, 1, "host");
  ZELSysTSBaseUnknown* tied = object;
  int tieCount = 1;
  unsigned char mustDelete = 0;
  EXPECT_EQ(ZELSysTSTIEInternal::Tie_Release(tieCount, tied, mustDelete), 0);
  EXPECT_EQ(tied, nullptr);
  EXPECT_EQ(mustDelete, 1);
  EXPECT_TRUE(Events() == std::vector<std::string>({"release:host", "~host"}));
}

}  // namespace
