// The fixture of the tests that load the kit's test components: the dictionary folder, the
// library, and its counters of live objects and ties, which must be back to 0 at the end of
// every case.
#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "KitTestInterfaces.h"
#include "TestSupport.h"

namespace kittest {

class KitComponents : public ::testing::Test {
 protected:
  void SetUp() override {
    dictionaries_ = zeltest::SourceDir() + "/tests/kit/dictionaries";
    path_ = std::make_unique<zeltest::ScopedEnv>("ZELDictionaryPath", dictionaries_.c_str());
  }
  void TearDown() override {
    if (handle_ != nullptr) {
      EXPECT_EQ(LiveObjects(), 0) << "objects of the test library left alive";
      EXPECT_EQ(LiveTies(), 0) << "ties of the test library left alive";
      dlclose(handle_);
    }
  }

  // Loads the library as the system does (same name mapping); its classes register now.
  void Load() {
    handle_ = dlopen("libKitTestComponents.so", RTLD_NOW | RTLD_GLOBAL);
    ASSERT_NE(handle_, nullptr) << dlerror();
    live_objects_ = reinterpret_cast<KitLiveCountFunction>(dlsym(handle_, "KitTestLiveObjects"));
    live_ties_ = reinterpret_cast<KitLiveCountFunction>(dlsym(handle_, "KitTestLiveTies"));
    ASSERT_NE(live_objects_, nullptr);
    ASSERT_NE(live_ties_, nullptr);
  }
  int LiveObjects() const { return live_objects_(); }
  int LiveTies() const { return live_ties_(); }

  // A new object of the class, by name, held through its base object.
  ZELSysTSPtr<ZELSysTSBaseUnknown> Make(const char* className) {
    ZELSysTSPtr<ZELSysTSBaseUnknown> object = ZELSysTSCreateObject<ZELSysTSBaseUnknown>(className);
    if (handle_ == nullptr) Load();
    return object;
  }

  static uint32_t CountOf(IUnknown* p) {
    p->AddRef();
    return p->Release();
  }

  // The meta object registered under a name; the arguments would make a different one if the
  // library had not registered it first.
  static ZELSysTSMetaClass* Registered(const char* className) {
    static const _GUID kProbeId = ZELSysTSGuid("{99999999-9999-9999-9999-999999999999}");
    return ZELSysTSFindOrCreateMetaObject(className, ZELSysTSTypeBase, &kProbeId, nullptr, nullptr);
  }

 private:
  std::string dictionaries_;
  std::unique_ptr<zeltest::ScopedEnv> path_;
  void* handle_ = nullptr;
  KitLiveCountFunction live_objects_ = nullptr;
  KitLiveCountFunction live_ties_ = nullptr;
};

}  // namespace kittest
