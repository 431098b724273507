// Creating objects by class name (ZELSysTSCreateExternalObject) and by class identifier
// (ZELSysTSCreateInstance) from the libraries that the dictionary or the caller names.
#include "CoreIntegrationSupport.h"

using coretest::WidgetDictionaryTest;

namespace {

typedef void* (*Token)();

class ObjectCreationTest : public WidgetDictionaryTest {};

TEST_F(ObjectCreationTest, ExternalObjectWithoutClassNameIsNull) {
  const unsigned long lookups = ZELThrLibraryManager::GetFunctionAddressCalls();
  EXPECT_EQ(ZELSysTSCreateExternalObject(nullptr, "zelcore_bare", nullptr), nullptr);
  EXPECT_EQ(ZELThrLibraryManager::GetFunctionAddressCalls(), lookups);
}

TEST_F(ObjectCreationTest, CreatorRecordWinsOverAnyLibrary) {
  ASSERT_NE(ZELThrLibraryManager::LoadLibrary("zelcore_widgets"), nullptr);  // records it
  auto calls = Export<int (*)()>("zelcore_widgets", "zelcore_gadget_record_calls");
  int argument = 0;
  const unsigned long lookups = ZELThrLibraryManager::GetFunctionAddressCalls();
  EXPECT_EQ(ZELSysTSCreateExternalObject("CoreGadget", nullptr, &argument), &argument);
  // fctZELSysTSCreateCoreGadget exists in that library but is not looked up.
  EXPECT_EQ(ZELSysTSCreateExternalObject("CoreGadget", "zelcore_widgets", &argument), &argument);
  EXPECT_EQ(ZELThrLibraryManager::GetFunctionAddressCalls(), lookups);
  EXPECT_EQ(calls(), 2);
}

TEST_F(ObjectCreationTest, NoRecordUsesTheCallersLibrary) {
  void* loose = Export<Token>("zelcore_bare", "zelcore_loose_token")();
  int argument = 0;
  EXPECT_EQ(ZELSysTSCreateExternalObject("CoreLoose", "zelcore_bare", &argument), loose);
  EXPECT_EQ(ZELSysTSCreateExternalObject("CoreLoose", "libzelcore_bare.so", nullptr), loose);
  // The library lacks fctZELSysTSCreateCoreMissing; a library that does not exist at all.
  EXPECT_EQ(ZELSysTSCreateExternalObject("CoreMissing", "zelcore_bare", &argument), nullptr);
  EXPECT_EQ(ZELSysTSCreateExternalObject("CoreLoose", "zelcore_nowhere", &argument), nullptr);

  // Each call looks the function up again.
  const unsigned long lookups = ZELThrLibraryManager::GetFunctionAddressCalls();
  EXPECT_EQ(ZELSysTSCreateExternalObject("CoreLoose", "zelcore_bare", nullptr), loose);
  EXPECT_EQ(ZELSysTSCreateExternalObject("CoreLoose", "zelcore_bare", nullptr), loose);
  EXPECT_EQ(ZELThrLibraryManager::GetFunctionAddressCalls(), lookups + 2);
}

TEST_F(ObjectCreationTest, RecordWithOnlyALibraryNamesWhereToLook) {
  int argument = 0;
  // The ".dicts" line "CoreBare CreateInterface zelcore_bare".
  EXPECT_EQ(ZELSysTSCreateExternalObject("CoreBare", nullptr, &argument), &argument);
  // The caller's library takes precedence: zelcore_widgets has no fctZELSysTSCreateCoreBare.
  EXPECT_EQ(ZELSysTSCreateExternalObject("CoreBare", "zelcore_widgets", &argument), nullptr);
}

TEST_F(ObjectCreationTest, NoRecordAndNoLibraryConsultsNoLibrary) {
  const unsigned long lookups = ZELThrLibraryManager::GetFunctionAddressCalls();
  const unsigned long loads = ZELThrLibraryManager::LoadLibraryCalls();
  EXPECT_EQ(ZELSysTSCreateExternalObject("CoreLoose", nullptr, nullptr), nullptr);
  EXPECT_EQ(ZELThrLibraryManager::GetFunctionAddressCalls(), lookups);
  EXPECT_EQ(ZELThrLibraryManager::LoadLibraryCalls(), loads);
}

TEST_F(ObjectCreationTest, InstanceFailsWithoutALibraryToAsk) {
  void* untouched = &untouched;
  void* out = untouched;
  const _GUID unlisted = {0x5A1E00FF, 1, 2, {3, 4, 5, 6, 7, 8, 9, 10}};
  EXPECT_EQ(ZELSysTSCreateInstance(unlisted, IID_IWidgetInfo, &out), E_FAIL);
  EXPECT_EQ(out, untouched);
  // Listed without a library.
  EXPECT_EQ(ZELSysTSCreateInstance(CLSID_CoreWidgetDeluxe, IID_IWidgetInfo, &out), E_FAIL);
  EXPECT_EQ(out, untouched);
  // Listed with a library that exports no ZELSysTSDllGetClassObject.
  EXPECT_EQ(ZELSysTSCreateInstance(CLSID_CoreWidgetExtra, IID_IWidgetInfo, &out), E_FAIL);
  EXPECT_EQ(out, untouched);
}

TEST_F(ObjectCreationTest, InstancePassesTheLibrarysAnswerThrough) {
  void* out = nullptr;
  // Listed as "libzelcore_widgets": the name is handed to the library manager as written.
  EXPECT_EQ(ZELSysTSCreateInstance(CLSID_CoreEcho, IID_IWidgetInfo, &out), kEchoResult);
  EXPECT_EQ(out, Export<Token>("zelcore_widgets", "zelcore_echo_token")());

  ASSERT_EQ(ZELSysTSCreateInstance(CLSID_CoreWidget, IID_IWidgetInfo, &out), S_OK);
  auto* info = static_cast<IWidgetInfo*>(static_cast<IUnknown*>(out));
  EXPECT_EQ(info->Answer(), 42);
  EXPECT_EQ(info->Release(), 0u);
  EXPECT_EQ(LiveWidgets(), 0);

  const _GUID unknown = {0x0BADF00D, 1, 2, {3, 4, 5, 6, 7, 8, 9, 10}};
  out = &out;
  EXPECT_EQ(ZELSysTSCreateInstance(CLSID_CoreWidget, unknown, &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(LiveWidgets(), 0);
}

TEST(ObjectCreationWithoutDictionaryTest, InstanceReportsTheMissingPath) {
  zeltest::ScopedEnv path("ZELDictionaryPath", nullptr);
  zeltest::ScopedEnv nofallback("ZELDictionaryNoPathNoFallback", nullptr);
  zeltest::StderrCapture capture;
  void* untouched = &untouched;
  void* out = untouched;
  EXPECT_EQ(ZELSysTSCreateInstance(CLSID_CoreWidget, IID_IWidgetInfo, &out), E_FAIL);
  EXPECT_EQ(out, untouched);
  EXPECT_EQ(capture.Take(), "Error in reading dictionaries : ZELDictionaryPath is not defined.\n");
}

}  // namespace
