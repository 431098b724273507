// Classes declared with the kit, in a real implementation library reached through a dictionary:
// registration of each kind at load, the creators of basic object adapters and ties on each
// kind of implementation, and creation by class name and by class identifier. Every case checks
// that references come back and that nothing is left alive.
#include <gtest/gtest.h>

#include <string>

#include "KitComponentsFixture.h"
#include "ZELThrLibraryManager.h"

namespace {

using kittest::KitComponents;
constexpr const char* kLibrary = "KitTestComponents";

TEST_F(KitComponents, EveryClassRegistersWhenTheLibraryLoads) {
  Load();
  struct Expected {
    const char* name;
    const _GUID* id;
    const char* base;
  };
  const Expected classes[] = {
      {"KitWidget", &CLSID_KitWidget, "ZELSysTSBaseUnknown"},
      {"KitWidgetA", &CLSID_KitWidgetA, "KitWidget"},
      {"KitWidgetB", &CLSID_KitWidgetB, "KitWidget"},
      {"KitChained", &CLSID_KitChained, "ZELSysTSBaseUnknown"},
      {"KitTransient", &CLSID_KitTransient, "ZELSysTSBaseUnknown"},
  };
  for (const Expected& c : classes) {
    ZELSysTSMetaClass* meta = Registered(c.name);
    ASSERT_NE(meta, nullptr) << c.name;
    EXPECT_STREQ(meta->GetClassName(), c.name);
    ASSERT_NE(meta->GetClassId(), nullptr);
    EXPECT_TRUE(*meta->GetClassId() == *c.id) << c.name;
    ASSERT_NE(meta->GetBaseMetaObject(), nullptr) << c.name;
    EXPECT_EQ(meta->GetBaseMetaObject(), Registered(c.base)) << c.name;
  }
  EXPECT_EQ(Registered("ZELSysTSBaseUnknown"), ZELSysTSBaseUnknown::MetaObject());

  // Without an identifier of its own a class gets a generated one, {n-0000-0000-0000-...}.
  ZELSysTSMetaClass* anonymous = Registered("KitAnonymous");
  ASSERT_NE(anonymous->GetClassId(), nullptr);
  const _GUID& generated = *anonymous->GetClassId();
  EXPECT_NE(generated.Data1, 0u);
  EXPECT_TRUE(generated.Data2 == 0 && generated.Data3 == 0 && generated.Data4[0] == 0 &&
              generated.Data4[7] == 0);

  // The interface registered for ITFLEAF: class identifier = its IID, base = its parent's.
  ZELSysTSMetaClass* leaf = Registered("IKitLeaf");
  EXPECT_TRUE(*leaf->GetClassId() == ZELSysTSIIDOf<IKitLeaf>());
  EXPECT_EQ(leaf->IsAKindOf(&ZELSysTSIIDOf<IKitBase>()), 1);
}

TEST_F(KitComponents, ObjectsSeeThemselvesAsTheirOwnClass) {
  ZELSysTSPtr<ZELSysTSBaseUnknown> a = Make("KitWidgetA");
  ASSERT_TRUE(a);
  EXPECT_STREQ(a->IsA(), "KitWidgetA");
  EXPECT_EQ(a->IsAKindOf("KitWidget"), 1);
  EXPECT_EQ(a->IsAKindOf("ZELSysTSBaseUnknown"), 1);
  EXPECT_EQ(a->IsAKindOf("KitWidgetB"), 0);
  EXPECT_EQ(a->GetMetaObject(), Registered("KitWidgetA"));
  EXPECT_EQ(CountOf(a.Get()), 1u);  // the factory's reference was handed over, not kept
}

TEST_F(KitComponents, BasicAdapterOnTheObjectThroughItsBaseClass) {
  ZELSysTSPtr<ZELSysTSBaseUnknown> b = Make("KitWidgetB");
  ASSERT_TRUE(b);
  {
    ZELSysTSPtr<IKitName> name = b;  // the dictionary offers IKitName for KitWidget only
    ASSERT_TRUE(name);
    EXPECT_EQ(name->Name(), "KitWidgetB");
    EXPECT_EQ(CountOf(b.Get()), 2u);
    ZELSysTSPtr<ZELSysTSBaseUnknown> same = name;
    EXPECT_EQ(same.Get(), b.Get());  // carried by the object itself
  }
  EXPECT_EQ(CountOf(b.Get()), 1u);
}

TEST_F(KitComponents, LeafInterfaceServesItsParent) {
  ZELSysTSPtr<ZELSysTSBaseUnknown> a = Make("KitWidgetA");
  ZELSysTSPtr<IKitBase> base = a;
  ASSERT_TRUE(base);
  EXPECT_EQ(base->Kind(), "leaf");
  EXPECT_EQ(static_cast<IKitLeaf*>(base.Get())->Depth(), 2);
}

TEST_F(KitComponents, ChainedExtensionIsOnePerObjectForEachExtendedClass) {
  ZELSysTSPtr<ZELSysTSBaseUnknown> a = Make("KitWidgetA");
  ZELSysTSPtr<ZELSysTSBaseUnknown> b = Make("KitWidgetB");
  ZELSysTSPtr<ZELSysTSBaseUnknown> c = Make("KitWidgetC");
  ASSERT_TRUE(a && b && c);
  ASSERT_EQ(LiveObjects(), 3);

  ZELSysTSPtr<IKitCounter> first = a;
  ASSERT_TRUE(first);
  EXPECT_EQ(first->Next(), 1);
  EXPECT_EQ(CountOf(a.Get()), 2u);  // a reference on the extension is one on its object
  first.Release();
  EXPECT_EQ(CountOf(a.Get()), 1u);
  ZELSysTSPtr<IKitCounter> second = a;
  ASSERT_TRUE(second);
  EXPECT_EQ(second->Next(), 2);  // the same extension, which kept its state
  EXPECT_EQ(LiveObjects(), 4);

  // The second extended class reaches the extension's list too; a third that is not listed
  // does not, although the dictionary names the extension for it.
  ZELSysTSPtr<IKitCounter> ofB = b;
  ASSERT_TRUE(ofB);
  EXPECT_NE(ofB->Serial(), second->Serial());
  ZELSysTSPtr<IKitCounter> ofC = c;
  EXPECT_FALSE(ofC);
  EXPECT_EQ(CountOf(c.Get()), 1u);
  EXPECT_EQ(LiveObjects(), 5);

  second.Release();
  a.Release();  // the object takes its chained extension with it
  EXPECT_EQ(LiveObjects(), 3);
}

TEST_F(KitComponents, TransientExtensionIsNewForEveryRequestAndHoldsItsObject) {
  ZELSysTSPtr<ZELSysTSBaseUnknown> a = Make("KitWidgetA");
  ASSERT_TRUE(a);
  ZELSysTSPtr<IKitTicket> one = a;
  ZELSysTSPtr<IKitTicket> two = a;
  ASSERT_TRUE(one && two);
  EXPECT_NE(one->Serial(), two->Serial());
  EXPECT_EQ(LiveObjects(), 3);
  EXPECT_EQ(CountOf(a.Get()), 3u);
  one.Release();
  EXPECT_EQ(LiveObjects(), 2);
  EXPECT_EQ(CountOf(a.Get()), 2u);

  // The extension outlives the caller's own reference on the object, and gives its back last.
  a.Release();
  EXPECT_EQ(LiveObjects(), 2);
  two.Release();
  EXPECT_EQ(LiveObjects(), 0);
}

TEST_F(KitComponents, TieOnTheObjectItself) {
  ZELSysTSPtr<ZELSysTSBaseUnknown> a = Make("KitWidgetA");
  ASSERT_TRUE(a);
  ZELSysTSPtr<IKitLabel> label = a;
  ASSERT_TRUE(label);
  EXPECT_EQ(LiveTies(), 1);
  EXPECT_EQ(label->Label().rfind("KitWidgetA#", 0), 0u) << label->Label();
  EXPECT_NE(static_cast<void*>(label.Get()), static_cast<void*>(a.Get()));
  EXPECT_EQ(CountOf(a.Get()), 2u);

  // Tie count and object count move together.
  EXPECT_EQ(label->AddRef(), 2u);
  EXPECT_EQ(CountOf(a.Get()), 3u);
  EXPECT_EQ(label->Release(), 1u);
  EXPECT_EQ(CountOf(a.Get()), 2u);

  // QueryInterface on a tie is QueryInterface on its object.
  ZELSysTSPtr<ZELSysTSBaseUnknown> behind = label;
  EXPECT_EQ(behind.Get(), a.Get());
  ZELSysTSPtr<IKitName> name = label;
  ASSERT_TRUE(name);
  EXPECT_EQ(name->Name(), "KitWidgetA");
  behind.Release();
  name.Release();

  // The last reference on the object may go through the tie.
  a.Release();
  EXPECT_EQ(LiveObjects(), 1);
  label.Release();
  EXPECT_EQ(LiveTies(), 0);
  EXPECT_EQ(LiveObjects(), 0);
}

TEST_F(KitComponents, TieOnAChainedExtensionSharesItWithTheAdapter) {
  ZELSysTSPtr<ZELSysTSBaseUnknown> a = Make("KitWidgetA");
  ASSERT_TRUE(a);
  ZELSysTSPtr<IKitCounter> counter = a;
  ASSERT_TRUE(counter);
  ZELSysTSPtr<IKitChainedLabel> label = a;
  ASSERT_TRUE(label);
  EXPECT_EQ(label->Label(), "KitChained#" + std::to_string(counter->Serial()));
  EXPECT_EQ(LiveObjects(), 2);
  EXPECT_EQ(CountOf(a.Get()), 3u);
  label.Release();
  EXPECT_EQ(LiveObjects(), 2);  // the tie does not own the object's extension
  EXPECT_EQ(CountOf(a.Get()), 2u);
  counter.Release();
}

TEST_F(KitComponents, TieOnATransientExtensionOwnsIt) {
  ZELSysTSPtr<ZELSysTSBaseUnknown> a = Make("KitWidgetA");
  ASSERT_TRUE(a);
  {
    ZELSysTSPtr<IKitTransientLabel> label = a;
    ASSERT_TRUE(label);
    EXPECT_EQ(label->Label().rfind("KitTransient#", 0), 0u) << label->Label();
    EXPECT_EQ(LiveObjects(), 2);
    // One reference for the tie, one that the extension gives back when it goes.
    EXPECT_EQ(CountOf(a.Get()), 3u);
    ZELSysTSPtr<IKitTransientLabel> copy = label;
    EXPECT_EQ(CountOf(a.Get()), 4u);
  }
  EXPECT_EQ(LiveTies(), 0);
  EXPECT_EQ(LiveObjects(), 1);
  EXPECT_EQ(CountOf(a.Get()), 1u);

  // With the tie holding the only references, its end takes the object with it.
  ZELSysTSPtr<IKitTransientLabel> last = a;
  ASSERT_TRUE(last);
  a.Release();
  EXPECT_EQ(LiveObjects(), 2);
  last.Release();
  EXPECT_EQ(LiveObjects(), 0);
}

TEST_F(KitComponents, CreationByClassNameHandsOverTheOnlyReference) {
  ZELSysTSPtr<IKitName> name = ZELSysTSCreateObject<IKitName>("KitWidgetB");
  Load();
  ASSERT_TRUE(name);
  EXPECT_EQ(name->Name(), "KitWidgetB");
  EXPECT_EQ(CountOf(name.Get()), 1u);
  name.Release();
  EXPECT_EQ(LiveObjects(), 0);

  // An object that lacks the interface is destroyed at once.
  ZELSysTSPtr<IKitTicket> ticket = ZELSysTSCreateObject<IKitTicket>("KitWidgetB");
  EXPECT_FALSE(ticket);
  EXPECT_EQ(LiveObjects(), 0);
}

TEST_F(KitComponents, CreationByClassIdentifier) {
  HRESULT hr = E_UNEXPECTED;
  ZELSysTSPtr<IKitName> a = ZELSysTSCreateInstanceOf<IKitName>(CLSID_KitWidgetA, &hr);
  Load();
  EXPECT_EQ(hr, S_OK);
  ASSERT_TRUE(a);
  EXPECT_EQ(a->Name(), "KitWidgetA");
  EXPECT_EQ(CountOf(a.Get()), 1u);

  ZELSysTSPtr<IKitTicket> ticket = ZELSysTSCreateInstanceOf<IKitTicket>(CLSID_KitWidgetB, &hr);
  EXPECT_EQ(hr, E_NOINTERFACE);
  EXPECT_FALSE(ticket);
  EXPECT_EQ(LiveObjects(), 1);

  // Listed in the dictionary, but not among the library's class objects.
  ZELSysTSPtr<IKitName> c = ZELSysTSCreateInstanceOf<IKitName>(CLSID_KitWidgetC, &hr);
  EXPECT_EQ(hr, E_FAIL);
  EXPECT_FALSE(c);

  using GetClassObject = HRESULT (*)(const _GUID&, const _GUID&, void**);
  auto fn = reinterpret_cast<GetClassObject>(
      ZELThrLibraryManager::GetFunctionAddress(kLibrary, "ZELSysTSDllGetClassObject"));
  ASSERT_NE(fn, nullptr);
  EXPECT_EQ(fn(CLSID_KitWidgetA, ZELSysTSIIDOf<IKitName>(), nullptr), E_FAIL);
  EXPECT_EQ(LiveObjects(), 1);
}

}  // namespace
