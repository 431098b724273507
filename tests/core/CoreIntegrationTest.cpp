// A client's view of the object core: an object made by a real implementation library, with its
// chained extension, and the two creation entry points, by class name and by class identifier.
#include <gtest/gtest.h>

#include <cstdint>

#include "LibraryManagerCounter.h"
#include "TestSupport.h"
#include "ZELThrLibraryManager.h"
#include "impl/CoreWidgetInterfaces.h"

namespace {

const _GUID kUnlisted = {0x0BADF00D, 1, 2, {3, 4, 5, 6, 7, 8, 9, 10}};
const _GUID kClsidCoreBare = {0x5A1E00B0, 1, 2, {3, 4, 5, 6, 7, 8, 9, 10}};

// A dictionary describing zelcore_widgets and zelcore_bare, named by ZELDictionaryPath before
// the first lookup. Standard error must stay silent throughout.
class CoreIntegrationTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_.Write("core.dicts",
               "CoreWidget IWidgetExtra zelcore_widgets EXTENDED_BY CoreWidgetExtra\n"
               "CoreBare CreateInterface zelcore_bare\n");
    dir_.Write("core.iidts", "{1F0E0001-AB01-4C22-8102-0A0B0C0D0E0F} IWidgetExtra\n");
    dir_.Write("core.clsidts",
               "{5A1E0001-0C0E-4A11-9001-102030405060} CoreWidget zelcore_widgets\n"
               "{5A1E0002-0C0E-4A11-9001-102030405060} CoreWidgetExtra\n"
               "{5A1E00B0-0001-0002-0304-05060708090A} CoreBare zelcore_bare\n");
  }
  void TearDown() override { EXPECT_EQ(stderr_.Take(), ""); }

  static int LiveWidgets() {
    void* live =
        ZELThrLibraryManager::GetFunctionAddress("zelcore_widgets", "zelcore_widgets_live");
    return live != nullptr ? reinterpret_cast<int (*)()>(live)() : -1;
  }

 private:
  zeltest::TempDir dir_;
  zeltest::ScopedEnv path_{"ZELDictionaryPath", dir_.path().c_str()};
  zeltest::ScopedEnv nofallback_{"ZELDictionaryNoPathNoFallback", nullptr};
  zeltest::StderrCapture stderr_;
};

TEST_F(CoreIntegrationTest, LibraryObjectLivesByItsReferencesWithItsChainedExtension) {
  ASSERT_NE(ZELThrLibraryManager::LoadLibrary("zelcore_widgets"), nullptr);
  auto* widget = static_cast<ZELSysTSBaseUnknown*>(
      ZELSysTSCreateExternalObject("CoreWidget", "zelcore_widgets", nullptr));
  ASSERT_NE(widget, nullptr);
  EXPECT_EQ(LiveWidgets(), 1);
  EXPECT_STREQ(widget->IsA(), "CoreWidget");
  EXPECT_EQ(widget->IsAKindOf("ZELSysTSBaseUnknown"), 1);
  EXPECT_EQ(widget->IsAKindOf("CoreWidgetExtra"), 0);
  widget->Lock();
  widget->Lock();  // the lock is recursive
  EXPECT_EQ(widget->AddRef(), 2u);
  widget->Unlock();
  widget->Unlock();

  void* out = nullptr;
  EXPECT_EQ(widget->QueryInterface(kIidIUnknown, &out), S_OK);
  EXPECT_EQ(out, static_cast<IUnknown*>(widget));
  out = &out;
  EXPECT_EQ(widget->QueryInterface(kUnlisted, &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);

  // One chained extension serves every request, and counts on the widget.
  void* first = nullptr;
  void* second = nullptr;
  ASSERT_EQ(widget->QueryInterface(IID_IWidgetExtra, &first), S_OK);
  ASSERT_EQ(widget->QueryInterface(IID_IWidgetExtra, &second), S_OK);
  EXPECT_EQ(first, second);
  EXPECT_EQ(LiveWidgets(), 2);
  auto* extra = static_cast<ZELSysTSBaseUnknown*>(static_cast<IUnknown*>(first));
  EXPECT_STREQ(extra->IsA(), "CoreWidgetExtra");
  EXPECT_EQ(extra->QueryInterface(kIidIUnknown, &out), S_OK);
  EXPECT_EQ(out, static_cast<IUnknown*>(widget));
  EXPECT_EQ(extra->AddRef(), 7u);
  for (uint32_t left = 6; left > 0; --left) EXPECT_EQ(extra->Release(), left);
  EXPECT_EQ(LiveWidgets(), 2);
  EXPECT_EQ(widget->Release(), 0u);  // takes the extension with it
  EXPECT_EQ(LiveWidgets(), 0);
}

TEST_F(CoreIntegrationTest, ExternalObjectComesFromTheRecordOrTheNamedLibrary) {
  ASSERT_NE(ZELThrLibraryManager::LoadLibrary("zelcore_widgets"), nullptr);  // records CoreGadget
  int argument = 0;
  const struct {
    const char* className;
    const char* library;
    bool made;
    unsigned long lookups;
  } cases[] = {
      {nullptr, "zelcore_bare", false, 0},
      {"CoreGadget", nullptr, true, 0},            // the record's creator...
      {"CoreGadget", "zelcore_widgets", true, 0},  // ...wins over the library's function
      {"CoreBare", nullptr, true, 1},              // the record names the library
      {"CoreBare", nullptr, true, 1},              // looked up again: nothing is cached
      {"CoreBare", "zelcore_widgets", false, 1},   // the caller's library comes first
      {"CoreMissing", "zelcore_bare", false, 1},
      {"CoreBare", "zelcore_nowhere", false, 1},
      {"CoreNothing", nullptr, false, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    const unsigned long lookups = zeltest::FunctionLookups();
    EXPECT_EQ(ZELSysTSCreateExternalObject(c.className, c.library, &argument),
              c.made ? &argument : nullptr);
    EXPECT_EQ(zeltest::FunctionLookups() - lookups, c.lookups);
  }
}

TEST_F(CoreIntegrationTest, InstanceComesFromTheListedLibrarysClassObjectGetter) {
  void* out = &out;
  // Unlisted; listed without a library; listed with a library that has no getter.
  for (const _GUID& clsid : {kUnlisted, CLSID_CoreWidgetExtra, kClsidCoreBare}) {
    EXPECT_EQ(ZELSysTSCreateInstance(clsid, IID_IWidgetExtra, &out), E_FAIL);
    EXPECT_EQ(out, &out);
  }
  EXPECT_EQ(ZELSysTSCreateInstance(CLSID_CoreWidget, IID_IWidgetExtra, &out), kEchoResult);
  EXPECT_EQ(out, reinterpret_cast<void*>(static_cast<uintptr_t>(IID_IWidgetExtra.Data1)));
}

TEST(CoreCreationWithoutDictionaryTest, InstanceReportsTheMissingPath) {
  zeltest::ScopedEnv path("ZELDictionaryPath", nullptr);
  zeltest::ScopedEnv nofallback("ZELDictionaryNoPathNoFallback", nullptr);
  zeltest::StderrCapture capture;
  void* out = &out;
  EXPECT_EQ(ZELSysTSCreateInstance(CLSID_CoreWidget, IID_IWidgetExtra, &out), E_FAIL);
  EXPECT_EQ(out, &out);
  EXPECT_EQ(capture.Take(), "Error in reading dictionaries : ZELDictionaryPath is not defined.\n");
}

}  // namespace
