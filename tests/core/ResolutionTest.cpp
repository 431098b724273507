// Implementation resolution through ZELSysTSBOAInternal::CreateBOA: the object itself, chained
// extensions in the object's chain, transient extensions.
#include <gtest/gtest.h>

#include <atomic>

#include "CoreTestObjects.h"
#include "ZELSysTSBOAInternal.h"
#include "core/ZELSysTSChainExtension.h"

using coretest::Count;
using coretest::LockCount;
using coretest::RegisterClass;
using coretest::TestObject;

namespace {

ZELSysTSMetaClass* g_host;
ZELSysTSMetaClass* g_chainedA;
ZELSysTSMetaClass* g_chainedB;
ZELSysTSMetaClass* g_transient;

// The object being resolved, so that create() can look at its lock; and what create() did.
ZELSysTSBaseUnknown* g_resolving = nullptr;
std::atomic<int> g_creates{0};
std::atomic<int32_t> g_lockCountInCreate{-1};

template <ZELSysTSMetaClass** Meta>
ZELSysTSBaseUnknown* Create() {
  g_creates.fetch_add(1);
  if (g_resolving != nullptr) g_lockCountInCreate.store(LockCount(g_resolving));
  return new TestObject(*Meta, 1);
}

ZELSysTSBaseUnknown* CreateNothing() {
  g_creates.fetch_add(1);
  return nullptr;
}

std::vector<ZELSysTSBaseUnknown*> ChainOf(ZELSysTSBaseUnknown* object) {
  std::vector<ZELSysTSBaseUnknown*> chain;
  for (ZELSysTSChainExtension* node = ZELSysTSBaseUnknownAccess::ChainHead(object); node != nullptr;
       node = node->GetNext()) {
    ZELSysTSBaseUnknown* extension = nullptr;
    node->GetExtension(extension);
    chain.push_back(extension);
  }
  return chain;
}

class ResolutionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    g_host = RegisterClass("Host", ZELSysTSTypeImplementation, 0x10);
    g_chainedA = RegisterClass("HostExtA", ZELSysTSTypeChainedExtension, 0x11, nullptr, "Host");
    g_chainedB = RegisterClass("HostExtB", ZELSysTSTypeChainedExtension, 0x12, nullptr, "Host");
    g_transient =
        RegisterClass("HostTransient", ZELSysTSTypeTransientExtension, 0x13, nullptr, "Host");
    g_creates = 0;
    g_resolving = nullptr;
    g_lockCountInCreate = -1;
  }
};

TEST_F(ResolutionTest, NullInputsResolveToNothing) {
  TestObject object(g_host, 1);
  EXPECT_EQ(ZELSysTSBOAInternal::CreateBOA(nullptr, g_chainedA, &Create<&g_chainedA>), nullptr);
  EXPECT_EQ(ZELSysTSBOAInternal::CreateBOA(&object, nullptr, &Create<&g_chainedA>), nullptr);
  EXPECT_EQ(ZELSysTSBOAInternal::CreateBOA(&object, g_chainedA, nullptr), nullptr);
  EXPECT_EQ(g_creates, 0);
  EXPECT_TRUE(ChainOf(&object).empty());
}

TEST_F(ResolutionTest, OwnClassOrABaseIsTheObjectItself) {
  ZELSysTSMetaClass* derived =
      RegisterClass("HostDerived", ZELSysTSTypeImplementation, 0x20, g_host);
  ZELSysTSMetaClass* unrelated = RegisterClass("Unrelated", ZELSysTSTypeImplementation, 0x21);
  TestObject object(derived, 1);
  EXPECT_EQ(ZELSysTSBOAInternal::CreateBOA(&object, derived, &Create<&g_host>), &object);
  EXPECT_EQ(ZELSysTSBOAInternal::CreateBOA(&object, g_host, &Create<&g_host>), &object);
  EXPECT_EQ(
      ZELSysTSBOAInternal::CreateBOA(&object, ZELSysTSBaseUnknown::MetaObject(), &Create<&g_host>),
      &object);
  EXPECT_EQ(ZELSysTSBOAInternal::CreateBOA(&object, unrelated, &Create<&g_host>), nullptr);
  EXPECT_EQ(g_creates, 0);
  EXPECT_EQ(Count(&object), 1u);
  EXPECT_TRUE(ChainOf(&object).empty());

  TestObject bare(nullptr, 1);
  EXPECT_EQ(ZELSysTSBOAInternal::CreateBOA(&bare, g_host, &Create<&g_host>), nullptr);
}

TEST_F(ResolutionTest, ChainedExtensionsAreMadeOnceAndKeptInOrder) {
  for (unsigned char threadSafe : {1, 0}) {
    g_creates = 0;
    auto* object = new TestObject(g_host, threadSafe);
    g_resolving = object;

    ZELSysTSBaseUnknown* b =
        ZELSysTSBOAInternal::CreateBOA(object, g_chainedB, &Create<&g_chainedB>);
    ASSERT_NE(b, nullptr);
    EXPECT_EQ(g_creates, 1);
    EXPECT_EQ(g_lockCountInCreate, threadSafe ? 1 : 0);
    EXPECT_EQ(b->GetMetaObject(), g_chainedB);
    EXPECT_EQ(ZELSysTSBaseUnknownAccess::Extended(b), object);
    EXPECT_EQ(LockCount(object), 0);

    ZELSysTSBaseUnknown* a =
        ZELSysTSBOAInternal::CreateBOA(object, g_chainedA, &Create<&g_chainedA>);
    ASSERT_NE(a, nullptr);
    EXPECT_NE(a, b);
    EXPECT_EQ(g_creates, 2);
    EXPECT_EQ(ZELSysTSBOAInternal::CreateBOA(object, g_chainedA, &Create<&g_chainedA>), a);
    EXPECT_EQ(ZELSysTSBOAInternal::CreateBOA(object, g_chainedB, &Create<&g_chainedB>), b);
    EXPECT_EQ(g_creates, 2);
    EXPECT_TRUE(ChainOf(object) == std::vector<ZELSysTSBaseUnknown*>({b, a}));
    // Resolution counts nothing: the QueryInterface around it does.
    EXPECT_EQ(Count(object), 1u);
    EXPECT_EQ(Count(a), 1u);
    g_resolving = nullptr;
    EXPECT_EQ(object->Release(), 0u);  // frees both extensions and their nodes
  }
}

TEST_F(ResolutionTest, TransientExtensionsAreNewEveryTimeAndNotChained) {
  auto* object = new TestObject(g_host, 1);
  g_resolving = object;
  ZELSysTSBaseUnknown* first =
      ZELSysTSBOAInternal::CreateBOA(object, g_transient, &Create<&g_transient>);
  ZELSysTSBaseUnknown* second =
      ZELSysTSBOAInternal::CreateBOA(object, g_transient, &Create<&g_transient>);
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr);
  EXPECT_NE(first, second);
  EXPECT_EQ(g_creates, 2);
  EXPECT_EQ(g_lockCountInCreate, 1);
  EXPECT_EQ(ZELSysTSBaseUnknownAccess::Extended(first), object);
  EXPECT_EQ(ZELSysTSBaseUnknownAccess::Extended(second), object);
  EXPECT_TRUE(ChainOf(object).empty());
  EXPECT_EQ(Count(first), 1u);

  // As after two QueryInterface calls: each transient's reference holds one on the object.
  object->AddRef();
  object->AddRef();
  EXPECT_EQ(first->Release(), 0u);
  EXPECT_EQ(second->Release(), 0u);
  EXPECT_EQ(Count(object), 1u);
  object->Release();
}

TEST_F(ResolutionTest, CreateReturningNullLeavesTheChainAlone) {
  auto* object = new TestObject(g_host, 1);
  ZELSysTSBaseUnknown* a = ZELSysTSBOAInternal::CreateBOA(object, g_chainedA, &Create<&g_chainedA>);
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(ZELSysTSBOAInternal::CreateBOA(object, g_chainedB, &CreateNothing), nullptr);
  EXPECT_EQ(ZELSysTSBOAInternal::CreateBOA(object, g_transient, &CreateNothing), nullptr);
  EXPECT_EQ(g_creates, 3);
  EXPECT_TRUE(ChainOf(object) == std::vector<ZELSysTSBaseUnknown*>({a}));
  EXPECT_EQ(LockCount(object), 0);
  // The failed class is tried again on the next request.
  ZELSysTSBaseUnknown* b = ZELSysTSBOAInternal::CreateBOA(object, g_chainedB, &Create<&g_chainedB>);
  ASSERT_NE(b, nullptr);
  EXPECT_TRUE(ChainOf(object) == std::vector<ZELSysTSBaseUnknown*>({a, b}));
  object->Release();
}

}  // namespace
