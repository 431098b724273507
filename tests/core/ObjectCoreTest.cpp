// The base object: QueryInterface and counts; resolution to itself and to chained or transient
// extensions, which answer and count for it; ties; the reference counter. Also under TSan.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <utility>
#include <vector>

#include "TestSupport.h"
#include "ZELSysTSObjectModeler.h"
#include "core/ZELSysTSBaseUnknownAccess.h"
#include "dictionary/DicoStore.h"

namespace {

using Access = ZELSysTSBaseUnknownAccess;
using Tie = ZELSysTSTIEInternal;
using Meta = ZELSysTSMetaClass;
std::atomic<int> g_live{0};   // objects alive now
std::atomic<int> g_calls{0};  // calls of the creation functions below

struct Obj : ZELSysTSBaseUnknown {
  explicit Obj(Meta* m, unsigned char safe = 1) : ZELSysTSBaseUnknown(safe), meta(m) { ++g_live; }
  ~Obj() override { --g_live; }
  // Lets other threads run right after counting: a caller's unlocked work after AddRef races.
  uint32_t AddRef() override {
    const uint32_t count = ZELSysTSBaseUnknown::AddRef();
    std::this_thread::yield();
    return count;
  }
  Meta* GetMetaObject() const override { return meta; }
  Meta* meta;
};

// What QueryInterface answers, and *ppv after it (non-null before the call).
typedef std::pair<HRESULT, void*> Answer;
Answer Query(ZELSysTSBaseUnknown* object, const _GUID& iid) {
  void* out = &out;
  return {object->QueryInterface(iid, &out), out};  // braces: the call first, then out
}
const auto Self = [](ZELSysTSBaseUnknown* o) { return Answer{S_OK, static_cast<IUnknown*>(o)}; };
using Counts = std::vector<uint32_t>;  // counts returned in turn (braces keep the order)

Meta *g_host, *g_extA, *g_extB, *g_temp;

// Slow enough for two threads that resolve one chained extension at once to overlap.
template <Meta** M>
ZELSysTSBaseUnknown* Create() {
  ++g_calls;
  std::this_thread::sleep_for(std::chrono::milliseconds(1));
  return new Obj(*M);
}
const auto CreateNothing = []() -> ZELSysTSBaseUnknown* { return ++g_calls, nullptr; };
constexpr auto Resolve = &ZELSysTSBOAInternal::CreateBOA;

Meta* Register(const char* name, ZELSysTSTypeOfClass type, const char* extended,
               Meta* base = ZELSysTSBaseUnknown::MetaObject()) {
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

// Host's IPrint creator in the store: notes the lock count and flag it saw; answers if g_answer.
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
  DicoStore::InsertByGuids(
      g_host->GetClassId(), &iidPrint, reinterpret_cast<void*>(&PrintCreator),
      DicoStore::InsertByNames("Host", "IPrint", "AnyLib", nullptr, nullptr, nullptr, nullptr));
  for (unsigned char threadSafe : {1, 0}) {
    SCOPED_TRACE(static_cast<int>(threadSafe));
    auto* object = new Obj(g_host, threadSafe);
    EXPECT_EQ(object->AddRef(), 2u);
    for (const _GUID* iid : {&ZELSysTSIID_IUnknown, &CLSID_ZELSysTSBaseUnknown})
      EXPECT_EQ(Query(object, *iid), Self(object));
    EXPECT_EQ(object->QueryInterface(ZELSysTSIID_IUnknown, nullptr), E_UNEXPECTED);
    // A creator that makes nothing: *ppv is null and the count is as it was.
    g_answer = false;
    EXPECT_EQ(Query(object, iidPrint), Answer(E_NOINTERFACE, nullptr));
    EXPECT_EQ(Access::Count(object), 4u);
    // The creator runs under the object's lock (if it has one) with its flag; the object counts.
    g_answer = true;
    EXPECT_EQ(Query(object, iidPrint), Self(object));
    EXPECT_TRUE(g_flag == threadSafe && g_locksInside == threadSafe);
    for (uint32_t left = 5; left-- > 0;) EXPECT_EQ(object->Release(), left);
  }
}

TEST_F(ObjectCore, ObjectItselfImplementsItsClassAndItsBases) {
  Meta* derived = Register("Derived", ZELSysTSTypeImplementation, nullptr, g_host);
  Obj object(derived), bare(nullptr);
  for (Meta* meta : {derived, g_host, ZELSysTSBaseUnknown::MetaObject()})
    EXPECT_EQ(Resolve(&object, meta, &Create<&g_host>), &object);
  EXPECT_FALSE(Resolve(&object, Register("Other", ZELSysTSTypeImplementation, nullptr), nullptr));
  EXPECT_TRUE(!Resolve(&bare, g_host, &Create<&g_host>) &&
              !Resolve(nullptr, g_extA, &Create<&g_extA>) && g_calls == 0);
  ZELSysTSBaseUnknown* impl = &bare;
  EXPECT_TRUE(Tie::Tie_Construct(&object, g_host, nullptr, impl) == S_OK && impl == &object);
  EXPECT_TRUE(Tie::Tie_Construct(nullptr, g_host, nullptr, impl) == E_FAIL && impl == nullptr);
}

TEST_F(ObjectCore, ChainedExtensionsAreMadeOnceCountForTheObjectAndDieWithIt) {
  auto* object = new Obj(g_host);
  // A create() that makes nothing leaves the chain as it was; the next request tries again.
  EXPECT_EQ(Resolve(object, g_extA, CreateNothing), nullptr);
  ZELSysTSBaseUnknown* a = Resolve(object, g_extA, &Create<&g_extA>);
  ZELSysTSBaseUnknown* b = Resolve(object, g_extB, &Create<&g_extB>);
  ASSERT_TRUE(a != nullptr && a != b);
  EXPECT_EQ(Resolve(object, g_extA, &Create<&g_extA>), a);
  EXPECT_TRUE(Resolve(object, g_extB, &Create<&g_extB>) == b && g_calls == 3);
  // An extension answers for its object, and its references are the object's.
  EXPECT_EQ(Query(a, ZELSysTSIID_IUnknown), Self(object));
  EXPECT_EQ((Counts{b->AddRef(), a->Release(), b->Release()}), (Counts{3, 2, 1}));
  EXPECT_EQ(g_live, 3);
  EXPECT_EQ(a->Release(), 0u);  // the last, through an extension: takes the object and its chain
}

TEST_F(ObjectCore, TransientExtensionIsNewEachTimeAndEachReferenceHoldsTheObject) {
  auto* object = new Obj(g_host);
  ZELSysTSBaseUnknown* temp = Resolve(object, g_temp, &Create<&g_temp>);
  ZELSysTSBaseUnknown* other = Resolve(object, g_temp, &Create<&g_temp>);
  ASSERT_TRUE(temp != nullptr && temp != other);
  EXPECT_EQ(Resolve(object, g_temp, CreateNothing), nullptr);
  // As after two QueryInterface calls: each transient's reference holds one on the object.
  for (int i = 0; i < 2; ++i) object->AddRef();
  EXPECT_TRUE(other->Release() == 0u && Query(temp, ZELSysTSIID_IUnknown) == Self(object));
  EXPECT_EQ((Counts{temp->AddRef(), Access::Count(object)}), (Counts{2, 4}));
  EXPECT_EQ((Counts{temp->Release(), object->Release(), object->Release()}), (Counts{1, 2, 1}));
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
      if (i < 2) results[i] = Resolve(object, g_extA, &Create<&g_extA>), ++resolved;
      while (i == 2 && resolved < 2) object->AddRef(), object->Release();
    });
    EXPECT_TRUE(results[0] == results[1] && g_calls == 1);
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
      EXPECT_TRUE(Tie::Tie_Release(tieCount, tied, last) >= 1 && last == 0);
    }
  });
  EXPECT_EQ(std::make_pair(tieCount, Access::Count(object)), std::make_pair(1, 1u));
  object->Lock();
  EXPECT_TRUE(Tie::Tie_Release(tieCount, tied, mustDelete) == 0 && mustDelete == 1 && !tied);
}

struct Counted : ZELSysTSRefCounterUnknown {
  ~Counted() override { ++g_calls; }
};

TEST(RefCounterUnknown, ExactlyTheReleaseThatReachesZeroDeletes) {
  for (int round = 0; round < 100; ++round) {
    g_calls = 0;
    auto* counted = new Counted;
    for (uint32_t i = 2; i <= 4; ++i) EXPECT_EQ(counted->AddRef(), i);
    std::atomic<int> zeros{0};
    zeltest::RunTogether(4, [&](int) { zeros += counted->Release() == 0 ? 1 : 0; });
    ASSERT_EQ(std::make_pair(g_calls.load(), zeros.load()), std::make_pair(1, 1));
  }
}

}  // namespace
