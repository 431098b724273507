// Classes declared with the kit, in a real implementation library reached through a dictionary:
// registration of each kind, the creators of basic object adapters, extensions and ties, and
// creation by class name and by class identifier. Every reference comes back and nothing is left
// alive. Built twice: with KIT_THREADS it holds only the case where threads share one object.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "KitTestInterfaces.h"
#include "TestSupport.h"

namespace {

using ObjectPtr = ZELSysTSPtr<ZELSysTSBaseUnknown>;

// Opens the library for its live counts, which must be back to 0 when a case ends; the system
// finds it already loaded, through the dictionaries of the test.
class KitComponents : public ::testing::Test {
 protected:
  void SetUp() override {
    handle_ = dlopen("libKitTestComponents.so", RTLD_NOW | RTLD_GLOBAL);
    ASSERT_NE(handle_, nullptr) << dlerror();
    live_ = reinterpret_cast<KitLiveFunction>(dlsym(handle_, "KitTestLive"));
    ASSERT_NE(live_, nullptr);
  }
  void TearDown() override {
    if (live_ == nullptr) return;
    EXPECT_EQ(LiveObjects(), 0) << "objects of the test library left alive";
    EXPECT_EQ(LiveTies(), 0) << "ties of the test library left alive";
    dlclose(handle_);
  }
  int LiveObjects() const { return live_(0); }
  int LiveTies() const { return live_(1); }
  static ObjectPtr Make(const char* className) {
    return ZELSysTSCreateObject<ZELSysTSBaseUnknown>(className);
  }
  static uint32_t CountOf(IUnknown* p) {
    p->AddRef();
    return p->Release();
  }

 private:
  zeltest::ScopedEnv path_{"ZELDictionaryPath",
                           (zeltest::SourceDir() + "/tests/kit/dictionaries").c_str()};
  void* handle_ = nullptr;
  KitLiveFunction live_ = nullptr;
};

#ifndef KIT_THREADS

TEST_F(KitComponents, EveryKindRegistersWhenTheLibraryLoads) {
  // Asked with a probe identifier, which would make a new meta object of a name not registered.
  static const _GUID kProbe = ZELSysTSGuid("{99999999-9999-9999-9999-999999999999}");
  const auto registered = [](const char* name) {
    return ZELSysTSFindOrCreateMetaObject(name, ZELSysTSTypeBase, &kProbe, nullptr, nullptr);
  };
  const struct {
    const char* name;
    const _GUID* id;
    const char* base;
  } classes[] = {{"KitWidget", &CLSID_KitWidget, "ZELSysTSBaseUnknown"},
                 {"KitWidgetA", &CLSID_KitWidgetA, "KitWidget"},
                 {"KitChained", &CLSID_KitChained, "ZELSysTSBaseUnknown"},
                 {"KitTransient", &CLSID_KitTransient, "ZELSysTSBaseUnknown"}};
  for (const auto& c : classes) {
    ZELSysTSMetaClass* meta = registered(c.name);
    ASSERT_TRUE(meta != nullptr && meta->GetClassId() != nullptr) << c.name;
    EXPECT_TRUE(*meta->GetClassId() == *c.id) << c.name;
    EXPECT_EQ(meta->GetBaseMetaObject(), registered(c.base)) << c.name;
  }
  // Without an identifier of its own a class gets a generated one, {n-0000-0000-0000-...}.
  const _GUID* generated = registered("KitAnonymous")->GetClassId();
  ASSERT_NE(generated, nullptr);
  EXPECT_TRUE(generated->Data1 != 0 && generated->Data2 == 0 && generated->Data4[7] == 0);
}

TEST_F(KitComponents, CreationAndBasicAdapterOnTheObjectThroughItsBaseClass) {
  ZELSysTSPtr<IKitName> byName = ZELSysTSCreateObject<IKitName>("KitWidgetB");
  ASSERT_TRUE(byName);  // the dictionary offers IKitName for KitWidget only
  EXPECT_EQ(byName->Name(), "KitWidgetB");
  EXPECT_EQ(CountOf(byName.Get()), 1u);  // the factory's reference was handed over, not kept
  ObjectPtr object = byName;
  EXPECT_EQ(CountOf(byName.Get()), 2u);
  EXPECT_EQ(dynamic_cast<void*>(object.Get()), dynamic_cast<void*>(byName.Get()));  // no tie
  EXPECT_EQ(object->IsAKindOf("KitWidget"), 1);
  EXPECT_FALSE(ZELSysTSCreateObject<IKitTicket>("KitWidgetB"));  // destroyed at once

  HRESULT hr = E_UNEXPECTED;
  ZELSysTSPtr<IKitName> byId = ZELSysTSCreateInstanceOf<IKitName>(CLSID_KitWidgetA, &hr);
  EXPECT_EQ(hr, S_OK);
  ASSERT_TRUE(byId);
  EXPECT_EQ(byId->Name(), "KitWidgetA");
  EXPECT_EQ(CountOf(byId.Get()), 1u);
  EXPECT_FALSE(ZELSysTSCreateInstanceOf<IKitTicket>(CLSID_KitWidgetB, &hr));
  EXPECT_EQ(hr, E_NOINTERFACE);
  // Listed in the dictionary, but not among the library's class objects.
  EXPECT_FALSE(ZELSysTSCreateInstanceOf<IKitName>(CLSID_KitWidgetC, &hr));
  EXPECT_EQ(hr, E_FAIL);
  using GetClassObject = HRESULT (*)(const _GUID&, const _GUID&, void**);
  auto get = reinterpret_cast<GetClassObject>(dlsym(RTLD_DEFAULT, "ZELSysTSDllGetClassObject"));
  ASSERT_NE(get, nullptr);
  EXPECT_EQ(get(CLSID_KitWidgetA, ZELSysTSIIDOf<IKitName>(), nullptr), E_FAIL);
}

TEST_F(KitComponents, ChainedExtensionIsOnePerObjectTransientOneIsNewPerRequest) {
  ObjectPtr a = Make("KitWidgetA");
  ObjectPtr b = Make("KitWidgetB");
  ObjectPtr c = Make("KitWidgetC");
  ASSERT_TRUE(a && b && c);
  ZELSysTSPtr<IKitCounter> counter = a;
  ASSERT_TRUE(counter);
  EXPECT_EQ(counter->Next(), 1);
  EXPECT_EQ(CountOf(a.Get()), 2u);  // a reference on the extension is one on its object
  counter = nullptr;
  EXPECT_EQ(CountOf(a.Get()), 1u);
  counter = a;
  EXPECT_EQ(counter->Next(), 2);  // the same extension, which kept its state
  // The second extended class has one of its own; a class not listed has none, although the
  // dictionary names the extension for it.
  ZELSysTSPtr<IKitCounter> ofB = b;
  ASSERT_TRUE(ofB);
  EXPECT_NE(ofB->Serial(), counter->Serial());
  EXPECT_FALSE(ZELSysTSPtr<IKitCounter>(c));
  EXPECT_EQ(CountOf(c.Get()), 1u);
  EXPECT_EQ(LiveObjects(), 5);

  ZELSysTSPtr<IKitTicket> one = a;
  ZELSysTSPtr<IKitTicket> two = a;
  ASSERT_TRUE(one && two);
  EXPECT_NE(one->Serial(), two->Serial());
  EXPECT_EQ(CountOf(a.Get()), 4u);
  one = nullptr;
  EXPECT_EQ(LiveObjects(), 6);
  EXPECT_EQ(CountOf(a.Get()), 3u);
  counter = nullptr;
  a = nullptr;  // the transient extension keeps the object alive, and gives its reference last
  EXPECT_EQ(LiveObjects(), 6);
  two = nullptr;  // the object goes, and takes its chained extension with it
  EXPECT_EQ(LiveObjects(), 3);
}

TEST_F(KitComponents, TiesOnTheObjectOnItsChainedExtensionAndOnATransientOne) {
  ObjectPtr a = Make("KitWidgetA");
  ASSERT_TRUE(a);
  ZELSysTSPtr<IKitLabel> label = a;
  ASSERT_TRUE(label);
  EXPECT_EQ(label->Label().rfind("KitWidgetA#", 0), 0u) << label->Label();
  EXPECT_EQ(CountOf(a.Get()), 2u);
  EXPECT_EQ(label->AddRef(), 2u);  // tie count and object count move together
  EXPECT_EQ(CountOf(a.Get()), 3u);
  EXPECT_EQ(label->Release(), 1u);
  EXPECT_EQ(ObjectPtr(label).Get(), a.Get());  // its QueryInterface is the object's

  // On the chained extension: shared with the adapter, not owned by the tie.
  ZELSysTSPtr<IKitCounter> counter = a;
  ZELSysTSPtr<IKitChainedLabel> chained = a;
  ASSERT_TRUE(counter && chained);
  EXPECT_EQ(chained->Label(), "KitChained#" + std::to_string(counter->Serial()));
  chained = nullptr;
  counter = nullptr;
  EXPECT_EQ(LiveObjects(), 2);

  // On a transient extension: one reference for the tie and one that the extension gives back.
  ZELSysTSPtr<IKitTransientLabel> transient = a;
  ASSERT_TRUE(transient);
  EXPECT_EQ(transient->Label().rfind("KitTransient#", 0), 0u) << transient->Label();
  EXPECT_EQ(CountOf(a.Get()), 4u);
  // The last references on the object may be the ties', which take it with them.
  a = nullptr;
  label = nullptr;
  EXPECT_EQ(LiveTies(), 1);
  EXPECT_EQ(LiveObjects(), 3);
}

#else

TEST_F(KitComponents, SharedObjectAcrossThreads) {
  ObjectPtr a = Make("KitWidgetA");
  ZELSysTSPtr<IKitCounter> shared = a;  // the chained extension, made before the threads start
  ASSERT_TRUE(shared);
  std::atomic<int> failures{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 200; ++i) {
        ZELSysTSPtr<IKitCounter> counter = shared;
        ZELSysTSPtr<IKitTicket> ticket = counter;
        ZELSysTSPtr<IKitLabel> label = ticket;
        ZELSysTSPtr<IKitChainedLabel> chained = a;
        ZELSysTSPtr<IKitTransientLabel> owned = label;
        if (!ticket || !label || !chained || !owned || counter->Serial() != shared->Serial()) {
          ++failures;
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(failures.load(), 0);
  shared = nullptr;
  EXPECT_EQ(CountOf(a.Get()), 1u);
  EXPECT_EQ(LiveObjects(), 2);  // the object and its chained extension
}

#endif

}  // namespace
