// Interfaces resolved through a dictionary folder and the implementation library zelimpl, by
// QueryInterface as a client does, and a load of that library while others register and resolve.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LibraryManagerCounter.h"
#include "TestSupport.h"
#include "ZELSysTSObjectModeler.h"

namespace {

// Interface n of kItfNames (from 1) has the identifier {1BA0000n-2222-4000-9000-000000000000}.
constexpr _GUID Iid(uint32_t n) {
  return {0x1BA00000u + n, 0x2222, 0x4000, {0x90, 0, 0, 0, 0, 0, 0, 0}};
}
constexpr _GUID kBar = Iid(1), kLeafed = Iid(2), kRefused = Iid(3), kUnknownLeaf = Iid(4),
                kExt = Iid(5), kNotExt = Iid(6), kGhost = Iid(7), kMissingLib = Iid(8),
                kNoFunc = Iid(9);
const char* const kItfNames[] = {"IBar",    "ILeafed", "IRefused",    "IUnknownLeaf", "IExt",
                                 "INotExt", "IGhost",  "IMissingLib", "INoFunc"};

using Answers = std::vector<std::string>;  // braces keep the order of the calls

struct MtObject : ZELSysTSBaseUnknown {
  explicit MtObject(ZELSysTSMetaClass* m) : ZELSysTSBaseUnknown(1), meta(m) {}
  ZELSysTSMetaClass* GetMetaObject() const override { return meta; }
  ZELSysTSMetaClass* meta;
};

// QueryInterface for iid on a new object of the class `meta`: the name of the zelimpl creator
// that answered (see impl/ImplLib.cpp), or "" for E_NOINTERFACE. Every reference is given back.
std::string Resolve(ZELSysTSMetaClass* meta, const _GUID& iid) {
  auto* object = new MtObject(meta);
  void* itf = &itf;
  const HRESULT hr = object->QueryInterface(iid, &itf);
  EXPECT_TRUE(hr == S_OK || hr == E_NOINTERFACE) << hr;
  const std::string creator = itf != nullptr ? static_cast<const char*>(itf) : "";
  if (hr == S_OK) object->Release();
  EXPECT_EQ(object->Release(), 0u);
  return creator;
}

ZELSysTSMetaClass* Register(const char* name, ZELSysTSTypeOfClass type,
                            ZELSysTSMetaClass* base = nullptr, const _GUID* id = nullptr) {
  return ZELSysTSFindOrCreateMetaObject(name, type, id, base, nullptr);
}

class MetaResolution : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string iidts;
    for (uint32_t n = 1; n <= 9; ++n)
      iidts += "{1BA0000" + std::to_string(n) + "-2222-4000-9000-000000000000} " +
               kItfNames[n - 1] + "\n";
    dir_.Write("meta.iidts", iidts);
    dir_.Write("meta.dicts",
               "MtFoo IBar zelimpl\n"
               "MtFoo ILeafed zelimpl ITFLEAF IBarLeaf\n"
               "MtFoo IRefused zelimpl ITFLEAF IOtherLeaf\n"
               "MtFoo IUnknownLeaf zelimpl ITFLEAF INeverRegistered\n"
               "MtFoo IExt zelimpl EXTENDED_BY MtFooExt\n"
               "MtBar IExt zelimpl EXTENDED_BY MtFooExt\n"
               "MtBar INotExt zelimpl EXTENDED_BY MtFoo\n"
               "MtBar IGhost zelimpl EXTENDED_BY MtGhostExt\n"
               "MtFoo IMissingLib zelimpl_no_such_library\n"
               "MtFoo INoFunc zelimpl\n"
               "MtFoo MetaObject zelimpl\n");  // a library on the meta object's own record
    foo_ = Register("MtFoo", ZELSysTSTypeImplementation);
  }

  zeltest::DictionaryPath dir_;
  ZELSysTSMetaClass* foo_ = nullptr;
};

TEST_F(MetaResolution, EachAnswerIsSearchedOnceAndFailuresAreRemembered) {
  for (int round = 0; round < 2; ++round) EXPECT_EQ(Resolve(foo_, kBar), "ZELSysTSCreateIBarMtFoo");
  EXPECT_EQ(zeltest::FunctionLookups(), 1u);
  // A library without the function and a library that does not exist: one lookup each, once.
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ((Answers{Resolve(foo_, kNoFunc), Resolve(foo_, kMissingLib)}), (Answers{"", ""}));
    EXPECT_EQ(zeltest::FunctionLookups(), 3u);
  }
  // An identifier that nothing names, a class without entries, and the class's own meta object
  // record (its creator is the meta object, whatever library a line adds): nothing offered.
  EXPECT_EQ((Answers{Resolve(foo_, Iid(0x77)),
                     Resolve(Register("MtLonely", ZELSysTSTypeImplementation), kBar),
                     Resolve(foo_, CLSID_ZELSysTSMetaClass)}),
            (Answers{"", "", ""}));
  EXPECT_TRUE(zeltest::FunctionLookups() == 3u && zeltest::LibraryLoads() == 0u);
}

TEST_F(MetaResolution, BaseClassAnswerServesDerivedClassesUpToAPlainMetaObject) {
  ZELSysTSMetaClass* derived = Register("MtDerived", ZELSysTSTypeImplementation, foo_);
  ZELSysTSMetaClass* plain = Register("MtPlain", ZELSysTSTypeBase, foo_);
  ZELSysTSMetaClass* belowPlain = Register("MtBelowPlain", ZELSysTSTypeImplementation, plain);
  EXPECT_EQ((Answers{Resolve(belowPlain, kBar), Resolve(plain, kBar)}), (Answers{"", ""}));
  EXPECT_EQ(zeltest::FunctionLookups(), 0u);
  for (int round = 0; round < 2; ++round)
    EXPECT_EQ(Resolve(derived, kBar), "ZELSysTSCreateIBarMtFoo");
  EXPECT_EQ(zeltest::FunctionLookups(), 1u);
}

TEST_F(MetaResolution, LeafInterfaceMustDeriveFromTheRequestedOne) {
  Register("IBarLeaf", ZELSysTSTypeBase, Register("ILeafed", ZELSysTSTypeBase, nullptr, &kLeafed));
  Register("IOtherLeaf", ZELSysTSTypeBase, Register("IUnrelated", ZELSysTSTypeBase));
  EXPECT_EQ((Answers{Resolve(foo_, kRefused), Resolve(foo_, kUnknownLeaf)}), (Answers{"", ""}));
  EXPECT_EQ(zeltest::FunctionLookups(), 0u);  // refused before any library is asked
  EXPECT_EQ(Resolve(foo_, kLeafed), "ZELSysTSCreateIBarLeafMtFoo");
}

TEST_F(MetaResolution, ExtensionLibraryIsLoadedOnceAndTheExtensionMustListTheClass) {
  ZELSysTSMetaClass* bar = Register("MtBar", ZELSysTSTypeImplementation);
  // MtFooExt is not registered yet: its library is loaded, and it extends MtFoo only.
  EXPECT_TRUE(Resolve(bar, kExt).empty() && zeltest::LibraryLoads() == 1u);
  EXPECT_EQ(Resolve(foo_, kExt), "ZELSysTSCreateIExtMtFooExt");
  EXPECT_TRUE(zeltest::LibraryLoads() == 1u && Resolve(bar, kNotExt).empty());  // no extension
  // A library loaded for an extension that it does not register: refused after the load.
  EXPECT_TRUE(Resolve(bar, kGhost).empty() && zeltest::LibraryLoads() == 2u &&
              zeltest::FunctionLookups() == 1u);
}

// The first resolution loads zelimpl, whose initialisation registers classes from the loading
// thread and from a thread of its own, while other threads register and resolve: the load runs
// under no lock that they need.
TEST_F(MetaResolution, LibraryLoadRegistersWhileOthersRegisterAndResolve) {
  zeltest::RunTogether(4, [&](int t) {
    for (int i = 0; i < 20; ++i) {
      const std::string name = "MtOwn" + std::to_string(t) + "_" + std::to_string(i);
      if (t >= 2) Register(name.c_str(), ZELSysTSTypeImplementation, foo_);
      EXPECT_EQ(Resolve(foo_, kBar), "ZELSysTSCreateIBarMtFoo");
    }
  });
  // Registered by the library, under the identifiers it gave.
  EXPECT_EQ(Register("MtFooExt", ZELSysTSTypeBase)->GetClassId()->Data1, 0x5EA10002u);
  EXPECT_EQ(Register("MtInitThread", ZELSysTSTypeBase)->GetClassId()->Data1, 0x5EA10003u);
}

}  // namespace
