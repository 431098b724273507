// The base object: QueryInterface and counts, the implementation resolution (the object itself,
// chained and transient extensions), extensions answering and counting for their object, ties,
// and the reference counter. Also run under ThreadSanitizer (label concurrency).
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <utility>

#include "TestSupport.h"
#include "ZELSysTSBOAInternal.h"
#include "ZELSysTSFindOrCreateMetaObject.h"
#include "ZELSysTSRefCounterUnknown.h"
#include "ZELSysTSTIEInternal.h"
#include "core/ZELSysTSBaseUnknownAccess.h"
#include "dictionary/DicoStore.h"

namespace {

using Access = ZELSysTSBaseUnknownAccess;
using Tie = ZELSysTSTIEInternal;
std::atomic<int> g_live{0};   // objects alive now
std::atomic<int> g_calls{0};  // calls of the creation functions below

// An object of the class `meta`, counted in g_live.
struct Obj : ZELSysTSBaseUnknown {
  explicit Obj(ZELSysTSMetaClass* m, unsigned char threadSafe = 1)
      : ZELSysTSBaseUnknown(threadSafe), meta(m) {
    ++g_live;
  }
  ~Obj() override { --g_live; }
  // Lets other threads run right after counting: a caller's unlocked work after AddRef races.
  uint32_t AddRef() override {
    const uint32_t count = ZELSysTSBaseUnknown::AddRef();
    std::this_thread::yield();
    return count;
  }
  ZELSysTSMetaClass* GetMetaObject() const override { return meta; }
  ZELSysTSMetaClass* meta;
};

// What QueryInterface answers, and *ppv after it (non-null before the call).
typedef std::pair<HRESULT, void*> Answer;
Answer Query(ZELSysTSBaseUnknown* object, const _GUID& iid) {
  void* out = &out;
  const HRESULT result = object->QueryInterface(iid, &out);
  return {result, out};
}
Answer Self(ZELSysTSBaseUnknown* object) {
  return {S_OK, static_cast<IUnknown*>(object)};
}
const Answer kNoInterface{E_NOINTERFACE, nullptr};

ZELSysTSMetaClass *g_host, *g_extA, *g_extB, *g_temp;

// Slow enough for two threads that resolve one chained extension at once to overlap.
template <ZELSysTSMetaClass** Meta>
ZELSysTSBaseUnknown* Create() {
  ++g_calls;
  std::this_thread::sleep_for(std::chrono::milliseconds(1));
  return new Obj(*Meta);
}
ZELSysTSBaseUnknown* CreateNothing() {
  ++g_calls;
  return nullptr;
}
constexpr auto Resolve = &ZELSysTSBOAInternal::CreateBOA;

// A class derived from base (by default ZELSysTSBaseUnknown).
ZELSysTSMetaClass* Register(const char* name, ZELSysTSTypeOfClass type, const char* extended,
                            ZELSysTSMetaClass* base = ZELSysTSBaseUnknown::MetaObject()) {
  return ZELSysTSFindOrCreateMetaObject(name, type, nullptr, base, extended);
}

class ObjectCore : public ::testing::Test {
 protected:
  void SetUp() override {
    g_host = Register("Host", ZELSysTSTypeImplementation, nullptr);
    g_extA = Register("ExtA", ZELSysTSTypeChainedExtension, "Host");
    g_extB = Register("ExtB", ZELSysTSTypeChainedExtension, "Host");
    g_temp = Register("Temp", ZELSysTSTypeTransientExtension, "Host");
  }
  void TearDown() override { EXPECT_EQ(g_live, 0); }

  zeltest::DictionaryPath dictionary_;  // empty: lookups find nothing and print nothing
};

// The creator that the store holds for Host's IPrint: notes the lock count and the flag it saw,
// and answers with the object itself when g_answer is set.
int32_t g_locksInside = -1;
unsigned char g_flag = 0xFF;
bool g_answer = false;
IUnknown* PrintCreator(ZELSysTSBaseUnknown* object, unsigned char threadSafe) {
  g_locksInside = Access::LockCount(object);
  g_flag = threadSafe;
  return g_answer ? object : nullptr;
}

TEST_F(ObjectCore, QueryInterfaceAnswersItselfOrAsksTheCreatorUnderTheLock) {
  const _GUID iidPrint = {0x21, 0, 0, {1, 2, 3, 4, 5, 6, 7, 8}};
  DicoEntry* entry =
      DicoStore::InsertByNames("Host", "IPrint", "AnyLib", nullptr, nullptr, nullptr, nullptr);
  DicoStore::InsertByGuids(g_host->GetClassId(), &iidPrint, reinterpret_cast<void*>(&PrintCreator),
                           entry);
  for (unsigned char threadSafe : {1, 0}) {
    SCOPED_TRACE(static_cast<int>(threadSafe));
    auto* object = new Obj(g_host, threadSafe);
    EXPECT_EQ(object->AddRef(), 2u);
    EXPECT_EQ(Query(object, ZELSysTSIID_IUnknown), Self(object));
    EXPECT_EQ(Query(object, CLSID_ZELSysTSBaseUnknown), Self(object));
    EXPECT_EQ(object->QueryInterface(ZELSysTSIID_IUnknown, nullptr), E_UNEXPECTED);
    // A creator that makes nothing: *ppv is null and the count is as it was.
    g_answer = false;
    EXPECT_EQ(Query(object, iidPrint), kNoInterface);
    EXPECT_EQ(Access::Count(object), 4u);
    // The creator runs under the object's lock (when it has one) and gets its flag; the
    // reference is counted on the object.
    g_answer = true;
    EXPECT_EQ(Query(object, iidPrint), Self(object));
    EXPECT_EQ(g_flag, threadSafe);
    EXPECT_EQ(g_locksInside, threadSafe);
    for (uint32_t left = 4; left > 0; --left) EXPECT_EQ(object->Release(), left);
    EXPECT_EQ(object->Release(), 0u);
  }
}

TEST_F(ObjectCore, ObjectItselfImplementsItsClassAndItsBases) {
  ZELSysTSMetaClass* derived = Register("Derived", ZELSysTSTypeImplementation, nullptr, g_host);
  Obj object(derived);
  Obj bare(nullptr);
  for (ZELSysTSMetaClass* meta : {derived, g_host, ZELSysTSBaseUnknown::MetaObject()}) {
    EXPECT_EQ(Resolve(&object, meta, &Create<&g_host>), &object);
  }
  EXPECT_EQ(Resolve(&object, Register("Other", ZELSysTSTypeImplementation, nullptr), nullptr),
            nullptr);
  EXPECT_EQ(Resolve(&bare, g_host, &Create<&g_host>), nullptr);
  EXPECT_EQ(Resolve(nullptr, g_extA, &Create<&g_extA>), nullptr);
  EXPECT_EQ(g_calls, 0);
  ZELSysTSBaseUnknown* impl = &bare;
  EXPECT_EQ(Tie::Tie_Construct(&object, g_host, nullptr, impl), S_OK);
  EXPECT_EQ(impl, &object);
  EXPECT_EQ(Tie::Tie_Construct(nullptr, g_host, nullptr, impl), E_FAIL);
  EXPECT_EQ(impl, nullptr);
}

TEST_F(ObjectCore, ChainedExtensionsAreMadeOnceCountForTheObjectAndDieWithIt) {
  auto* object = new Obj(g_host);
  // A create() that makes nothing leaves the chain as it was; the next request tries again.
  EXPECT_EQ(Resolve(object, g_extA, &CreateNothing), nullptr);
  ZELSysTSBaseUnknown* a = Resolve(object, g_extA, &Create<&g_extA>);
  ZELSysTSBaseUnknown* b = Resolve(object, g_extB, &Create<&g_extB>);
  ASSERT_NE(a, nullptr);
  EXPECT_NE(a, b);
  EXPECT_EQ(Resolve(object, g_extA, &Create<&g_extA>), a);
  EXPECT_EQ(Resolve(object, g_extB, &Create<&g_extB>), b);
  EXPECT_EQ(g_calls, 3);
  // An extension answers for its object, and its references are the object's.
  EXPECT_EQ(Query(a, ZELSysTSIID_IUnknown), Self(object));
  EXPECT_EQ(b->AddRef(), 3u);
  EXPECT_EQ(a->Release(), 2u);
  EXPECT_EQ(b->Release(), 1u);
  EXPECT_EQ(g_live, 3);
  // The last reference, given back through an extension, takes the object and its chain.
  EXPECT_EQ(a->Release(), 0u);
}

TEST_F(ObjectCore, TransientExtensionIsNewEachTimeAndEachReferenceHoldsTheObject) {
  auto* object = new Obj(g_host);
  ZELSysTSBaseUnknown* temp = Resolve(object, g_temp, &Create<&g_temp>);
  ZELSysTSBaseUnknown* other = Resolve(object, g_temp, &Create<&g_temp>);
  ASSERT_NE(temp, nullptr);
  EXPECT_NE(temp, other);
  EXPECT_EQ(Resolve(object, g_temp, &CreateNothing), nullptr);
  // As after two QueryInterface calls: each transient's reference holds one on the object.
  object->AddRef();
  object->AddRef();
  EXPECT_EQ(other->Release(), 0u);
  EXPECT_EQ(Query(temp, ZELSysTSIID_IUnknown), Self(object));
  EXPECT_EQ(temp->AddRef(), 2u);
  EXPECT_EQ(Access::Count(object), 4u);
  EXPECT_EQ(temp->Release(), 1u);
  EXPECT_EQ(object->Release(), 2u);
  EXPECT_EQ(object->Release(), 1u);
  EXPECT_EQ(g_live, 2);
  EXPECT_EQ(temp->Release(), 0u);  // the transient's last reference held the object's last

  Obj orphan(g_extB);  // an extension without its object answers nothing
  EXPECT_EQ(Query(&orphan, ZELSysTSIID_IUnknown), Answer(E_UNEXPECTED, nullptr));
}

TEST_F(ObjectCore, RacingFirstResolutionsMakeOneChainedExtensionWhileCountsMove) {
  for (int round = 0; round < 10; ++round) {
    g_calls = 0;
    auto* object = new Obj(g_host);
    ZELSysTSBaseUnknown* results[2] = {nullptr, nullptr};
    std::atomic<int> resolved{0};
    // A third thread counts references meanwhile: that must not read the chain being appended.
    zeltest::RunTogether(3, [&](int i) {
      if (i == 2) {
        while (resolved < 2) object->AddRef(), object->Release();
        return;
      }
      results[i] = Resolve(object, g_extA, &Create<&g_extA>);
      ++resolved;
    });
    EXPECT_EQ(results[0], results[1]);
    EXPECT_EQ(g_calls, 1);
    object->Release();
  }
}

// Ties shared between threads keep both counts together. The last reference then goes while
// the object is locked twice, by its holder and by Tie_Release: the destructor must release both
// levels, or ThreadSanitizer reports the mutex destroyed while locked.
TEST_F(ObjectCore, SharedTieKeepsBothCountsAndItsObjectDiesUnlocked) {
  auto* object = new Obj(g_host);
  ZELSysTSBaseUnknown* tied = object;
  int tieCount = 1;  // stands for the object's one reference
  unsigned char mustDelete = 1;
  zeltest::RunTogether(4, [&](int) {
    for (int i = 0; i < 500; ++i) {
      Tie::Tie_AddRef(tieCount, tied);
      unsigned char last = 1;
      EXPECT_GE(Tie::Tie_Release(tieCount, tied, last), 1);
      EXPECT_EQ(last, 0);
    }
  });
  EXPECT_EQ(tieCount, 1);
  EXPECT_EQ(Access::Count(object), 1u);
  object->Lock();
  EXPECT_EQ(Tie::Tie_Release(tieCount, tied, mustDelete), 0);
  EXPECT_EQ(mustDelete, 1);
  EXPECT_EQ(tied, nullptr);
}

class Counted : public ZELSysTSRefCounterUnknown {
 public:
  ~Counted() override { ++g_calls; }
};

TEST(RefCounterUnknown, ExactlyTheReleaseThatReachesZeroDeletes) {
  for (int round = 0; round < 100; ++round) {
    g_calls = 0;
    auto* counted = new Counted;
    for (uint32_t i = 2; i <= 4; ++i) EXPECT_EQ(counted->AddRef(), i);
    std::atomic<int> zeros{0};
    zeltest::RunTogether(4, [&](int) { zeros += counted->Release() == 0 ? 1 : 0; });
    ASSERT_EQ(g_calls, 1);
    ASSERT_EQ(zeros, 1);
  }
}

}  // namespace
