// A client's view: load an implementation library, create its objects, count, lock, ask their
// class, and reach interfaces served by the object itself (through a tie), by a chained and by
// a transient extension. AddressSanitizer checks that nothing leaks or is freed twice.
#include "CoreIntegrationSupport.h"

using coretest::WidgetDictionaryTest;

namespace {

const _GUID kIidIUnknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
typedef void* (*Factory)(void*);

class CoreEndToEndTest : public WidgetDictionaryTest {
 protected:
  void SetUp() override {
    ASSERT_NE(ZELThrLibraryManager::LoadLibrary("zelcore_widgets"), nullptr);
  }

  ZELSysTSBaseUnknown* NewWidget(const char* function = "fctZELSysTSCreateCoreWidget",
                                 void* argument = nullptr) {
    auto* object =
        static_cast<ZELSysTSBaseUnknown*>(Export<Factory>("zelcore_widgets", function)(argument));
    EXPECT_NE(object, nullptr);
    return object;
  }
};

TEST_F(CoreEndToEndTest, WidgetLivesByItsReferences) {
  ZELSysTSBaseUnknown* widget = NewWidget();
  ASSERT_NE(widget, nullptr);
  EXPECT_EQ(LiveWidgets(), 1);
  EXPECT_EQ(widget->HasMutex(), 1);
  EXPECT_STREQ(widget->IsA(), "CoreWidget");
  EXPECT_EQ(widget->IsAKindOf("CoreWidget"), 1);
  EXPECT_EQ(widget->IsAKindOf("ZELSysTSBaseUnknown"), 1);
  EXPECT_EQ(widget->IsAKindOf("CoreWidgetDeluxe"), 0);
  ASSERT_NE(widget->GetMetaObject(), nullptr);
  EXPECT_TRUE(*widget->GetMetaObject()->GetClassId() == CLSID_CoreWidget);
  EXPECT_STREQ(ZELSysTSBaseUnknown::ClassName(), "ZELSysTSBaseUnknown");

  widget->Lock();
  widget->Lock();
  EXPECT_EQ(widget->AddRef(), 2u);  // the lock is recursive
  widget->Unlock();
  widget->Unlock();

  void* out = nullptr;
  EXPECT_EQ(widget->QueryInterface(kIidIUnknown, &out), S_OK);
  EXPECT_EQ(out, static_cast<IUnknown*>(widget));
  EXPECT_EQ(widget->QueryInterface(CLSID_ZELSysTSBaseUnknown, &out), S_OK);
  EXPECT_EQ(out, static_cast<IUnknown*>(widget));
  // An interface that nothing offers.
  const _GUID unknown = {0x0BADF00D, 1, 2, {3, 4, 5, 6, 7, 8, 9, 10}};
  out = &out;
  EXPECT_EQ(widget->QueryInterface(unknown, &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);

  EXPECT_EQ(widget->Release(), 3u);
  EXPECT_EQ(widget->Release(), 2u);
  EXPECT_EQ(widget->Release(), 1u);
  EXPECT_EQ(widget->Release(), 0u);
  EXPECT_EQ(LiveWidgets(), 0);
}

TEST_F(CoreEndToEndTest, TieCarriesAnInterfaceForTheObject) {
  for (unsigned char threadSafe : {1, 0}) {
    ZELSysTSBaseUnknown* widget = NewWidget("fctZELSysTSCreateCoreWidget", &threadSafe);
    ASSERT_NE(widget, nullptr);
    EXPECT_EQ(widget->HasMutex(), threadSafe);
    void* out = nullptr;
    ASSERT_EQ(widget->QueryInterface(IID_IWidgetInfo, &out), S_OK);
    auto* info = static_cast<IWidgetInfo*>(static_cast<IUnknown*>(out));
    EXPECT_EQ(info->Answer(), 42);
    EXPECT_EQ(LiveWidgets(), 2);  // the widget and its tie

    // Tie references are references on the widget.
    EXPECT_EQ(info->AddRef(), 2u);
    EXPECT_EQ(widget->Release(), 2u);  // the creator's reference; the tie's two remain
    void* again = nullptr;
    EXPECT_EQ(info->QueryInterface(kIidIUnknown, &again), S_OK);
    EXPECT_EQ(again, static_cast<IUnknown*>(widget));
    EXPECT_EQ(widget->Release(), 2u);

    EXPECT_EQ(info->Release(), 1u);
    EXPECT_EQ(LiveWidgets(), 2);
    EXPECT_EQ(info->Release(), 0u);  // the widget's last reference: both are gone
    EXPECT_EQ(LiveWidgets(), 0);
  }
}

TEST_F(CoreEndToEndTest, ChainedExtensionIsOnePerObjectAndDiesWithIt) {
  ZELSysTSBaseUnknown* widget = NewWidget();
  ZELSysTSBaseUnknown* other = NewWidget();
  ASSERT_NE(widget, nullptr);
  ASSERT_NE(other, nullptr);
  void* out = nullptr;
  ASSERT_EQ(widget->QueryInterface(IID_IWidgetExtra, &out), S_OK);
  auto* first = static_cast<IWidgetExtra*>(static_cast<IUnknown*>(out));
  ASSERT_EQ(widget->QueryInterface(IID_IWidgetExtra, &out), S_OK);
  auto* second = static_cast<IWidgetExtra*>(static_cast<IUnknown*>(out));
  ASSERT_EQ(other->QueryInterface(IID_IWidgetExtra, &out), S_OK);
  auto* others = static_cast<IWidgetExtra*>(static_cast<IUnknown*>(out));

  EXPECT_EQ(first->Identity(), second->Identity());
  EXPECT_NE(first->Identity(), others->Identity());
  EXPECT_EQ(first->Owner(), widget);
  EXPECT_EQ(others->Owner(), other);
  EXPECT_EQ(LiveWidgets(), 4);

  // Counts on the extension are counts on the widget.
  EXPECT_EQ(first->AddRef(), 4u);
  EXPECT_EQ(first->Release(), 3u);
  EXPECT_EQ(first->Release(), 2u);
  EXPECT_EQ(widget->Release(), 1u);
  EXPECT_EQ(LiveWidgets(), 4);
  EXPECT_EQ(second->Release(), 0u);  // the widget and its extension go together
  EXPECT_EQ(LiveWidgets(), 2);
  EXPECT_EQ(others->Release(), 1u);
  EXPECT_EQ(other->Release(), 0u);
  EXPECT_EQ(LiveWidgets(), 0);
}

TEST_F(CoreEndToEndTest, TransientExtensionIsNewPerRequestAndHoldsTheObject) {
  ZELSysTSBaseUnknown* widget = NewWidget();
  ASSERT_NE(widget, nullptr);
  void* out = nullptr;
  ASSERT_EQ(widget->QueryInterface(IID_IWidgetTemp, &out), S_OK);
  auto* first = static_cast<IWidgetTemp*>(static_cast<IUnknown*>(out));
  ASSERT_EQ(widget->QueryInterface(IID_IWidgetTemp, &out), S_OK);
  auto* second = static_cast<IWidgetTemp*>(static_cast<IUnknown*>(out));
  EXPECT_NE(first->Serial(), second->Serial());
  EXPECT_EQ(LiveWidgets(), 3);

  EXPECT_EQ(widget->Release(), 2u);  // the two transients keep it
  EXPECT_EQ(first->AddRef(), 2u);
  EXPECT_EQ(first->Release(), 1u);
  EXPECT_EQ(first->Release(), 0u);
  EXPECT_EQ(LiveWidgets(), 2);
  EXPECT_EQ(second->Release(), 0u);
  EXPECT_EQ(LiveWidgets(), 0);
}

TEST_F(CoreEndToEndTest, DerivedClassIsAKindOfItsBaseAndInheritsItsInterfaces) {
  ZELSysTSBaseUnknown* deluxe = NewWidget("fctZELSysTSCreateCoreWidgetDeluxe");
  ASSERT_NE(deluxe, nullptr);
  EXPECT_STREQ(deluxe->IsA(), "CoreWidgetDeluxe");
  EXPECT_EQ(deluxe->IsAKindOf("CoreWidget"), 1);
  void* out = nullptr;
  ASSERT_EQ(deluxe->QueryInterface(IID_IWidgetInfo, &out), S_OK);
  auto* info = static_cast<IWidgetInfo*>(static_cast<IUnknown*>(out));
  EXPECT_EQ(info->Answer(), 4242);  // the tie calls the object itself
  EXPECT_EQ(deluxe->Release(), 1u);
  EXPECT_EQ(info->Release(), 0u);
  EXPECT_EQ(LiveWidgets(), 0);
}

}  // namespace
