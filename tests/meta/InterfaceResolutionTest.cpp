// Resolution of interfaces through a dictionary folder and real implementation libraries,
// driven through QueryInterface as a client drives it.
#include "MetaIntegrationSupport.h"

namespace zelmeta {
namespace {

TEST_F(MetaResolution, EachAnswerIsSearchedOnceAndFailuresAreFinal) {
  // A plain offer: one function lookup, then the class's table answers.
  EXPECT_EQ(Resolve(foo_, kBar), "ZELSysTSCreateIBarMtFoo");
  EXPECT_EQ(Lookups(), 1u);
  EXPECT_EQ(Resolve(foo_, kBar), "ZELSysTSCreateIBarMtFoo");
  EXPECT_EQ(Lookups(), 1u);
  // A library without the function and a library that does not exist: one lookup each, once.
  EXPECT_EQ(Resolve(foo_, kNoFunc), "");
  EXPECT_EQ(Resolve(foo_, kMissingLib), "");
  EXPECT_EQ(Lookups(), 3u);
  EXPECT_EQ(Resolve(foo_, kNoFunc), "");
  EXPECT_EQ(Resolve(foo_, kMissingLib), "");
  // An identifier that nothing names, and a class without entries: nothing to look up.
  EXPECT_EQ(Resolve(foo_, 0x77), "");
  EXPECT_EQ(Resolve(Register("MtLonely", ZELSysTSTypeImplementation), kBar), "");
  EXPECT_EQ(Lookups(), 3u);
  EXPECT_EQ(Loads(), 0u);
}

TEST_F(MetaResolution, BaseClassOfferServesDerivedClassesUpToAPlainMetaObject) {
  ZELSysTSMetaClass* derived = Register("MtDerived", ZELSysTSTypeImplementation, foo_);
  ZELSysTSMetaClass* plain = Register("MtPlain", ZELSysTSTypeBase, foo_);
  ZELSysTSMetaClass* belowPlain = Register("MtBelowPlain", ZELSysTSTypeImplementation, plain);
  EXPECT_EQ(Resolve(belowPlain, kBar), "");
  EXPECT_EQ(Resolve(plain, kBar), "");
  EXPECT_EQ(Lookups(), 0u);

  EXPECT_EQ(Resolve(derived, kBar), "ZELSysTSCreateIBarMtFoo");
  EXPECT_EQ(Resolve(foo_, kBar), "ZELSysTSCreateIBarMtFoo");
  EXPECT_EQ(Resolve(derived, kBar), "ZELSysTSCreateIBarMtFoo");
  EXPECT_EQ(Lookups(), 1u);
  // The negative answer stays although the base class now knows the interface.
  EXPECT_EQ(Resolve(belowPlain, kBar), "");
}

TEST_F(MetaResolution, LeafInterfaceMustDeriveFromTheRequestedOne) {
  const _GUID leafedId = InterfaceId(kLeafed);
  Register("IBarLeaf", ZELSysTSTypeBase, Register("ILeafed", ZELSysTSTypeBase, nullptr, &leafedId));
  Register("IOtherLeaf", ZELSysTSTypeBase, Register("IUnrelated", ZELSysTSTypeBase));
  // Refused before any library is asked, although both functions exist.
  EXPECT_EQ(Resolve(foo_, kRefused), "");
  EXPECT_EQ(Resolve(foo_, kUnknownLeaf), "");
  EXPECT_EQ(Lookups(), 0u);
  EXPECT_EQ(Resolve(foo_, kLeafed), "ZELSysTSCreateIBarLeafMtFoo");
}

TEST_F(MetaResolution, RegisteredExtensionServesOnlyTheClassesItLists) {
  Register("MtFooExt", ZELSysTSTypeChainedExtension, nullptr, &kClsidFooExt, "MtFoo");
  ZELSysTSMetaClass* bar = Register("MtBar", ZELSysTSTypeImplementation);
  EXPECT_EQ(Resolve(bar, kExt), "");     // MtBar is not listed
  EXPECT_EQ(Resolve(bar, kNotExt), "");  // MtFoo is no extension
  EXPECT_EQ(Lookups(), 0u);
  EXPECT_EQ(Resolve(foo_, kExt), "ZELSysTSCreateIExtMtFooExt");
  EXPECT_EQ(Loads(), 0u);
}

TEST_F(MetaResolution, ExtensionLibraryIsLoadedWhenTheExtensionIsNotRegistered) {
  EXPECT_EQ(Resolve(foo_, kExt), "ZELSysTSCreateIExtMtFooExt");
  EXPECT_EQ(Loads(), 1u);
  EXPECT_EQ(*Register("MtFooExt", ZELSysTSTypeBase)->GetClassId(), kClsidFooExt);
  // A library loaded for an extension that it does not register: refused after the load.
  EXPECT_EQ(Resolve(Register("MtBar", ZELSysTSTypeImplementation), kGhost), "");
  EXPECT_EQ(Loads(), 2u);
  EXPECT_EQ(Lookups(), 1u);
}

}  // namespace
}  // namespace zelmeta
