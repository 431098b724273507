// Shared set-up of the meta integration tests: one dictionary folder with the offers that the
// tests resolve, a minimal object class, and a query helper.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>

#include "MetaTestIds.h"
#include "TestSupport.h"
#include "ZELSysTSObjectModeler.h"
#include "ZELThrLibraryManager.h"

namespace zelmeta {

// An object whose class is given by the meta object it is built with.
class MtObject : public ZELSysTSBaseUnknown {
 public:
  explicit MtObject(ZELSysTSMetaClass* meta, unsigned char threadSafe = 1)
      : ZELSysTSBaseUnknown(threadSafe), meta_(meta) {}
  ZELSysTSMetaClass* GetMetaObject() const override { return meta_; }

 private:
  ZELSysTSMetaClass* meta_;
};

inline std::string GuidText(const _GUID& g) {
  char text[40];
  std::snprintf(text, sizeof text, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", g.Data1,
                g.Data2, g.Data3, g.Data4[0], g.Data4[1], g.Data4[2], g.Data4[3], g.Data4[4],
                g.Data4[5], g.Data4[6], g.Data4[7]);
  return text;
}

// QueryInterface for iid on a new object of the class `meta`; on success the interface must be
// the object itself (the test creators answer so). Every reference is given back.
inline HRESULT QueryOnNewObject(ZELSysTSMetaClass* meta, const _GUID& iid) {
  auto* object = new MtObject(meta);
  void* itf = reinterpret_cast<void*>(0x1);
  const HRESULT hr = object->QueryInterface(iid, &itf);
  if (SUCCEEDED(hr)) {
    EXPECT_EQ(itf, static_cast<void*>(static_cast<IUnknown*>(object)));
    static_cast<IUnknown*>(itf)->Release();
  } else {
    EXPECT_EQ(itf, nullptr);
  }
  EXPECT_EQ(object->Release(), 0u);
  return hr;
}

class MetaResolution : public ::testing::Test {
 protected:
  void SetUp() override {
    const struct {
      const _GUID* iid;
      const char* name;
    } interfaces[] = {{&kIidBar, "IBar"},         {&kIidLeafed, "ILeafed"},
                      {&kIidRefused, "IRefused"}, {&kIidUnknownLeaf, "IUnknownLeaf"},
                      {&kIidExt, "IExt"},         {&kIidNotExt, "INotExt"},
                      {&kIidGhost, "IGhost"},     {&kIidMissingLib, "IMissingLib"},
                      {&kIidNoFunc, "INoFunc"},   {&kIidInit, "IInit"}};
    std::string iidts;
    for (const auto& i : interfaces) iidts += GuidText(*i.iid) + " " + i.name + "\n";
    dir_.Write("meta.iidts", iidts);
    dir_.Write("meta.dicts",
               "MtFoo IBar zelmeta_impl\n"
               "MtFoo ILeafed zelmeta_impl ITFLEAF IBarLeaf\n"
               "MtFoo IRefused zelmeta_impl ITFLEAF IOtherLeaf\n"
               "MtFoo IUnknownLeaf zelmeta_impl ITFLEAF INeverRegistered\n"
               "MtFoo IExt zelmeta_ext EXTENDED_BY MtFooExt\n"
               "MtBar IExt zelmeta_ext EXTENDED_BY MtFooExt\n"
               "MtBar INotExt zelmeta_impl EXTENDED_BY MtFoo\n"
               "MtBar IGhost zelmeta_impl EXTENDED_BY MtGhostExt\n"
               "MtFoo IMissingLib zelmeta_no_such_library\n"
               "MtFoo INoFunc zelmeta_impl\n"
               "MtFoo IInit zelmeta_init\n");
    path_ = std::make_unique<zeltest::ScopedEnv>("ZELDictionaryPath", dir_.path().c_str());
    no_fallback_ = std::make_unique<zeltest::ScopedEnv>("ZELDictionaryNoPathNoFallback", nullptr);
    foo_ = ZELSysTSFindOrCreateMetaObject("MtFoo", ZELSysTSTypeImplementation, &kClsidFoo, nullptr,
                                          nullptr);
    ASSERT_NE(foo_, nullptr);
  }

  static ZELSysTSMetaClass* Register(const char* name, ZELSysTSTypeOfClass type,
                                     ZELSysTSMetaClass* base = nullptr, const _GUID* id = nullptr,
                                     const char* extended = nullptr) {
    ZELSysTSMetaClass* meta = ZELSysTSFindOrCreateMetaObject(name, type, id, base, extended);
    EXPECT_NE(meta, nullptr) << name;
    return meta;
  }

  static unsigned long Lookups() { return ZELThrLibraryManager::GetFunctionAddressCalls(); }
  static unsigned long Loads() { return ZELThrLibraryManager::LoadLibraryCalls(); }
  static std::string LastCreator() {
    const char* last = ZelMetaProbeLast();
    return last != nullptr ? last : "";
  }

  zeltest::TempDir dir_;
  std::unique_ptr<zeltest::ScopedEnv> path_;
  std::unique_ptr<zeltest::ScopedEnv> no_fallback_;
  ZELSysTSMetaClass* foo_ = nullptr;
};

}  // namespace zelmeta
