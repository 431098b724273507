// The base object and the implementation resolution: counts, QueryInterface, the object itself
// or its extensions as implementation, extensions answering for their object, the chain's
// teardown, and the tie count moving with the object's.
#include <gtest/gtest.h>

#include <utility>

#include "CoreTestObjects.h"
#include "TestSupport.h"
#include "ZELSysTSBOAInternal.h"
#include "ZELSysTSTIEInternal.h"
#include "core/ZELSysTSChainExtension.h"
#include "dictionary/DicoStore.h"

using namespace coretest;

namespace {

const _GUID kIidIUnknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
typedef std::vector<std::string> Log;
typedef std::vector<ZELSysTSBaseUnknown*> Objects;

// What QueryInterface answers, and *ppv after it (set to non-null before the call).
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
const Answer kUnexpected{E_UNEXPECTED, nullptr};

ZELSysTSMetaClass *g_host, *g_extA, *g_extB, *g_extC, *g_transient;
// The object being resolved or queried, and what the creation functions saw of it.
ZELSysTSBaseUnknown* g_object = nullptr;
int g_calls = 0;
int32_t g_lockCountInside = -1;
unsigned char g_flag = 0xFF;
IUnknown* g_answer = nullptr;

void Seen() {
  ++g_calls;
  g_lockCountInside = g_object != nullptr ? LockCount(g_object) : -1;
}
// A new extension that logs under its class's name.
template <ZELSysTSMetaClass** Meta>
ZELSysTSBaseUnknown* Create() {
  Seen();
  return new TestObject(*Meta, 1, (*Meta)->GetClassName());
}
ZELSysTSBaseUnknown* CreateNothing() {
  Seen();
  return nullptr;
}
IUnknown* InterfaceCreator(ZELSysTSBaseUnknown*, unsigned char threadSafe) {
  Seen();
  g_flag = threadSafe;
  return g_answer;
}

constexpr auto Resolve = &ZELSysTSBOAInternal::CreateBOA;
Objects ChainOf(ZELSysTSBaseUnknown* object) {
  Objects chain;
  for (ZELSysTSChainExtension* node = ZELSysTSBaseUnknownAccess::ChainHead(object); node != nullptr;
       node = node->GetNext()) {
    ZELSysTSBaseUnknown* extension = nullptr;
    node->GetExtension(extension);
    chain.push_back(extension);
  }
  return chain;
}

class ObjectCoreTest : public ::testing::Test {
 protected:
  void SetUp() override {
    Events().clear();
    g_host = RegisterClass("Host", ZELSysTSTypeImplementation, 0x10);
    g_extA = RegisterClass("ExtA", ZELSysTSTypeChainedExtension, 0x11, nullptr, "Host");
    g_extB = RegisterClass("ExtB", ZELSysTSTypeChainedExtension, 0x12, nullptr, "Host");
    g_extC = RegisterClass("ExtC", ZELSysTSTypeChainedExtension, 0x13, nullptr, "Host");
    g_transient = RegisterClass("Temp", ZELSysTSTypeTransientExtension, 0x14, nullptr, "Host");
  }
  // An empty dictionary: lookups find nothing and print nothing.
  zeltest::TempDir dictionary_;
  zeltest::ScopedEnv path_{"ZELDictionaryPath", dictionary_.path().c_str()};
  zeltest::ScopedEnv nofallback_{"ZELDictionaryNoPathNoFallback", nullptr};
};

TEST_F(ObjectCoreTest, QueryInterfaceAnswersItselfOrAsksTheCreatorUnderTheLock) {
  const _GUID iidPrint = MakeGuid(0x21);
  DicoEntry* entry =
      DicoStore::InsertByNames("Host", "IPrint", "AnyLib", nullptr, nullptr, nullptr, nullptr);
  DicoStore::InsertByGuids(g_host->GetClassId(), &iidPrint,
                           reinterpret_cast<void*>(&InterfaceCreator), entry);
  ZELSysTSBaseUnknown answer(0);
  for (unsigned char threadSafe : {1, 0}) {
    SCOPED_TRACE(static_cast<int>(threadSafe));
    auto* object = new TestObject(g_host, threadSafe, "o");
    g_object = object;
    EXPECT_EQ(object->HasMutex(), threadSafe);
    EXPECT_EQ(object->AddRef(), 2u);
    EXPECT_EQ(Query(object, kIidIUnknown), Self(object));
    EXPECT_EQ(Query(object, CLSID_ZELSysTSBaseUnknown), Self(object));
    // Nothing else is offered: *ppv is null, the count and the lock are as they were.
    EXPECT_EQ(Query(object, MakeGuid(0x20)), kNoInterface);
    EXPECT_EQ(object->QueryInterface(kIidIUnknown, nullptr), E_UNEXPECTED);
    EXPECT_EQ(Count(object), 4u);

    // The creator runs locked once when the object has a mutex, never otherwise. The reference
    // is counted on the object; the created interface is not AddRef'd.
    g_answer = &answer;
    EXPECT_EQ(Query(object, iidPrint), Self(&answer));
    EXPECT_EQ(g_flag, threadSafe);
    EXPECT_EQ(g_lockCountInside, threadSafe);
    EXPECT_EQ(Count(object), 5u);
    EXPECT_EQ(Count(&answer), 1u);
    g_answer = nullptr;  // a creator that makes nothing
    EXPECT_EQ(Query(object, iidPrint), kNoInterface);
    EXPECT_EQ(Count(object), 5u);
    EXPECT_EQ(LockCount(object), 0);

    for (uint32_t left = 4; left > 0; --left) EXPECT_EQ(object->Release(), left);
    EXPECT_EQ(Events().back(), "release:o");
    // At count 0 the object answers nothing, not even for itself.
    Answer atDeath;
    object->at_death = [&] { atDeath = Query(object, kIidIUnknown); };
    EXPECT_EQ(object->Release(), 0u);
    EXPECT_EQ(Events().back(), "~o");
    EXPECT_EQ(atDeath, kUnexpected);
  }
  EXPECT_EQ(g_calls, 4);
}

TEST_F(ObjectCoreTest, ObjectsOwnClassOrABaseResolvesToTheObjectItself) {
  ZELSysTSMetaClass* derived =
      RegisterClass("HostDerived", ZELSysTSTypeImplementation, 0x22, g_host);
  ZELSysTSMetaClass* unrelated = RegisterClass("Unrelated", ZELSysTSTypeImplementation, 0x23);
  TestObject object(derived, 1);
  TestObject bare(nullptr, 1);
  EXPECT_EQ(Resolve(&object, derived, &Create<&g_host>), &object);
  EXPECT_EQ(Resolve(&object, g_host, &Create<&g_host>), &object);
  EXPECT_EQ(Resolve(&object, ZELSysTSBaseUnknown::MetaObject(), &Create<&g_host>), &object);
  EXPECT_EQ(Resolve(&object, unrelated, &Create<&g_host>), nullptr);
  EXPECT_EQ(Resolve(&bare, g_host, &Create<&g_host>), nullptr);
  EXPECT_EQ(Resolve(nullptr, g_extA, &Create<&g_extA>), nullptr);
  EXPECT_EQ(Resolve(&object, nullptr, &Create<&g_extA>), nullptr);
  EXPECT_EQ(Resolve(&object, g_extA, nullptr), nullptr);
  EXPECT_EQ(g_calls, 0);
  EXPECT_EQ(Count(&object), 1u);
  EXPECT_TRUE(ChainOf(&object).empty());
}

TEST_F(ObjectCoreTest, ChainedExtensionsAreMadeOnceKeptInOrderAndDestroyedWithTheObject) {
  for (unsigned char threadSafe : {1, 0}) {
    SCOPED_TRACE(static_cast<int>(threadSafe));
    g_calls = 0;
    auto* object = new TestObject(g_host, threadSafe, "host");
    g_object = object;
    ZELSysTSBaseUnknown* b = Resolve(object, g_extB, &Create<&g_extB>);
    ASSERT_NE(b, nullptr);
    EXPECT_EQ(g_lockCountInside, threadSafe);
    EXPECT_EQ(ZELSysTSBaseUnknownAccess::Extended(b), object);
    // A create() that makes nothing leaves the chain as it was; the next request tries again.
    EXPECT_EQ(Resolve(object, g_extA, &CreateNothing), nullptr);
    EXPECT_EQ(ChainOf(object), Objects{b});
    ZELSysTSBaseUnknown* a = Resolve(object, g_extA, &Create<&g_extA>);
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(Resolve(object, g_extA, &Create<&g_extA>), a);
    EXPECT_EQ(Resolve(object, g_extB, &Create<&g_extB>), b);
    ZELSysTSBaseUnknown* c = Resolve(object, g_extC, &Create<&g_extC>);
    EXPECT_EQ(g_calls, 4);
    EXPECT_EQ(ChainOf(object), (Objects{b, a, c}));
    // Resolution counts nothing: the QueryInterface around it does.
    EXPECT_EQ(Count(object), 1u);
    EXPECT_EQ(Count(a), 1u);
    EXPECT_EQ(LockCount(object), 0);

    ZELSysTSChainExtension* last = nullptr;
    for (ZELSysTSChainExtension* node = ZELSysTSBaseUnknownAccess::ChainHead(object);
         node != nullptr; node = node->GetNext()) {
      last = node;
      ZELSysTSBaseUnknown* extension = nullptr;
      node->GetExtension(extension);
      // AddressSanitizer reports the read if the node is freed before its extension.
      static_cast<TestObject*>(extension)->at_death = [node, extension] {
        ZELSysTSBaseUnknown* held = nullptr;
        node->GetExtension(held);
        EXPECT_EQ(held, extension);
      };
    }
    ASSERT_EQ(last->SetNext(new ZELSysTSChainExtension(nullptr)), S_OK);  // passed over
    Events().clear();
    EXPECT_EQ(object->Release(), 0u);
    // Destroyed outright, never released: their counts stand for the object's references.
    EXPECT_EQ(Events(), (Log{"release:host", "~ExtB", "~ExtA", "~ExtC", "~host"}));
  }
}

TEST_F(ObjectCoreTest, ExtensionsAnswerAndCountForTheirObject) {
  auto* object = new TestObject(g_host, 1, "host");
  g_object = object;
  ZELSysTSBaseUnknown* chained = Resolve(object, g_extA, &Create<&g_extA>);
  // A transient extension is new on every request and never chained.
  ZELSysTSBaseUnknown* temp = Resolve(object, g_transient, &Create<&g_transient>);
  ZELSysTSBaseUnknown* other = Resolve(object, g_transient, &Create<&g_transient>);
  ASSERT_NE(temp, nullptr);
  EXPECT_NE(temp, other);
  EXPECT_EQ(g_lockCountInside, 1);
  EXPECT_EQ(ZELSysTSBaseUnknownAccess::Extended(temp), object);
  EXPECT_EQ(Resolve(object, g_transient, &CreateNothing), nullptr);
  EXPECT_EQ(ChainOf(object), Objects{chained});
  // As after two QueryInterface calls: each transient's reference holds one on the object.
  object->AddRef();
  object->AddRef();
  EXPECT_EQ(other->Release(), 0u);
  EXPECT_EQ(Count(object), 2u);

  EXPECT_EQ(Query(chained, kIidIUnknown), Self(object));
  EXPECT_EQ(Query(temp, kIidIUnknown), Self(object));
  EXPECT_EQ(Count(object), 4u);
  // A chained extension's references are its object's; a transient one counts its own, each
  // holding one on the object.
  EXPECT_EQ(chained->AddRef(), 5u);
  EXPECT_EQ(temp->AddRef(), 2u);
  EXPECT_EQ(Count(object), 6u);
  EXPECT_EQ(Count(chained), 1u);
  EXPECT_EQ(temp->Release(), 1u);
  for (uint32_t left = 4; left > 1; --left) EXPECT_EQ(chained->Release(), left);
  Events().clear();
  EXPECT_EQ(temp->Release(), 0u);
  EXPECT_EQ(Events(), (Log{"release:Temp", "~Temp", "release:host"}));
  Events().clear();
  EXPECT_EQ(chained->Release(), 0u);  // the object's last reference: both go
  EXPECT_EQ(Events(), (Log{"release:ExtA", "release:host", "~ExtA", "~host"}));

  TestObject orphan(g_extB, 1);  // an extension without its object answers nothing
  EXPECT_EQ(Query(&orphan, kIidIUnknown), kUnexpected);
  EXPECT_EQ(LockCount(&orphan), 0);
}

TEST_F(ObjectCoreTest, TieCountMovesWithTheObjectsCount) {
  auto* object = new TestObject(g_host, 1);
  ZELSysTSBaseUnknown* tied = object;
  int tieCount = 1;  // stands for the object's one reference
  unsigned char mustDelete = 1;
  EXPECT_EQ(ZELSysTSTIEInternal::Tie_AddRef(tieCount, object), 2);
  EXPECT_EQ(Count(object), 2u);
  EXPECT_EQ(ZELSysTSTIEInternal::Tie_Release(tieCount, tied, mustDelete), 1);
  EXPECT_EQ(mustDelete, 0);
  EXPECT_EQ(tied, object);
  EXPECT_EQ(Count(object), 1u);
  EXPECT_EQ(LockCount(object), 0);
  object->Release();
}

}  // namespace
