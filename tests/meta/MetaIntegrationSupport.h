// Shared set-up of the meta integration tests: a dictionary folder with the offers that the
// tests resolve, MtFoo registered, and a query helper.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>
#include <string>

#include "LibraryManagerCounter.h"
#include "MetaTestKit.h"
#include "TestSupport.h"
#include "ZELThrLibraryManager.h"

namespace zelmeta {

// The interfaces that the folder names, numbered from 1 in the order of kItfNames; interface n
// has the identifier {1BA0000n-2222-4000-9000-000000000000}.
constexpr _GUID InterfaceId(uint32_t n) {
  return {0x1BA00000u + n, 0x2222, 0x4000, {0x90, 0, 0, 0, 0, 0, 0, 0}};
}
constexpr uint32_t kBar = 1, kLeafed = 2, kRefused = 3, kUnknownLeaf = 4, kExt = 5, kNotExt = 6,
                   kGhost = 7, kMissingLib = 8, kNoFunc = 9, kInit = 10;
inline const char kItfNames[] =
    "IBar ILeafed IRefused IUnknownLeaf IExt INotExt IGhost IMissingLib INoFunc IInit";

// QueryInterface for interface n on a new object of the class `meta`. Returns the name of the
// creation function that answered (the interface must be the object itself), or "" when the
// query failed with E_NOINTERFACE. Every reference is given back.
inline std::string Resolve(ZELSysTSMetaClass* meta, uint32_t n) {
  auto* object = new MtObject(meta);
  void* itf = reinterpret_cast<void*>(0x1);
  const HRESULT hr = object->QueryInterface(InterfaceId(n), &itf);
  std::string creator = object->created_by != nullptr ? object->created_by : "(none)";
  if (SUCCEEDED(hr)) {
    EXPECT_EQ(itf, static_cast<void*>(static_cast<IUnknown*>(object)));
    static_cast<IUnknown*>(itf)->Release();
  } else {
    EXPECT_EQ(hr, E_NOINTERFACE);
    EXPECT_EQ(itf, nullptr);
    EXPECT_EQ(object->created_by, nullptr);
    creator.clear();
  }
  EXPECT_EQ(object->Release(), 0u);
  return creator;
}

class MetaResolution : public ::testing::Test {
 protected:
  void SetUp() override {
    std::istringstream names(kItfNames);
    std::string iidts, name;
    for (uint32_t n = 1; names >> name; ++n) {
      char id[40];
      std::snprintf(id, sizeof id, "{1BA%05X-2222-4000-9000-000000000000} ", n);
      iidts += id + name + "\n";
    }
    dir_.Write("meta.iidts", iidts);
    dir_.Write("meta.dicts",
               "MtFoo IBar zelmeta_impl\n"
               "MtFoo ILeafed zelmeta_impl ITFLEAF IBarLeaf\n"
               "MtFoo IRefused zelmeta_impl ITFLEAF IOtherLeaf\n"
               "MtFoo IUnknownLeaf zelmeta_impl ITFLEAF INeverRegistered\n"
               "MtFoo IExt zelmeta_init EXTENDED_BY MtFooExt\n"
               "MtBar IExt zelmeta_init EXTENDED_BY MtFooExt\n"
               "MtBar INotExt zelmeta_impl EXTENDED_BY MtFoo\n"
               "MtBar IGhost zelmeta_impl EXTENDED_BY MtGhostExt\n"
               "MtFoo IMissingLib zelmeta_no_such_library\n"
               "MtFoo INoFunc zelmeta_impl\n"
               "MtFoo IInit zelmeta_init\n");
    foo_ = Register("MtFoo", ZELSysTSTypeImplementation, nullptr, &kClsidFoo);
  }

  static ZELSysTSMetaClass* Register(const char* name, ZELSysTSTypeOfClass type,
                                     ZELSysTSMetaClass* base = nullptr, const _GUID* id = nullptr,
                                     const char* extended = nullptr) {
    ZELSysTSMetaClass* meta = ZELSysTSFindOrCreateMetaObject(name, type, id, base, extended);
    EXPECT_NE(meta, nullptr) << name;
    return meta;
  }
  static unsigned long Lookups() { return zeltest::FunctionLookups(); }
  static unsigned long Loads() { return zeltest::LibraryLoads(); }

  zeltest::TempDir dir_;
  zeltest::ScopedEnv path_{"ZELDictionaryPath", dir_.path().c_str()};
  zeltest::ScopedEnv no_fallback_{"ZELDictionaryNoPathNoFallback", nullptr};
  ZELSysTSMetaClass* foo_ = nullptr;
};

}  // namespace zelmeta
