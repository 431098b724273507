// Resolution of interfaces through dictionary folders and real implementation libraries, driven
// through QueryInterface as a client drives it.
#include "MetaIntegrationSupport.h"

namespace zelmeta {
namespace {

TEST_F(MetaResolution, PlainOfferIsLookedUpOnceThenAnsweredFromTheTable) {
  const unsigned long before = Lookups();
  EXPECT_EQ(QueryOnNewObject(foo_, kIidBar), S_OK);
  EXPECT_EQ(LastCreator(), "ZELSysTSCreateIBarMtFoo");
  EXPECT_EQ(Lookups(), before + 1);

  EXPECT_EQ(QueryOnNewObject(foo_, kIidBar), S_OK);
  EXPECT_EQ(ZelMetaProbeHits(), 2);
  EXPECT_EQ(Lookups(), before + 1);
  EXPECT_EQ(Loads(), 0u);
}

TEST_F(MetaResolution, OfferForTheBaseClassServesTheDerivedAndIsRecordedForBoth) {
  ZELSysTSMetaClass* derived = Register("MtDerived", ZELSysTSTypeImplementation, foo_);
  const unsigned long before = Lookups();
  EXPECT_EQ(QueryOnNewObject(derived, kIidBar), S_OK);
  EXPECT_EQ(LastCreator(), "ZELSysTSCreateIBarMtFoo");
  EXPECT_EQ(Lookups(), before + 1);
  // Both meta objects answer from their tables now.
  EXPECT_EQ(QueryOnNewObject(foo_, kIidBar), S_OK);
  EXPECT_EQ(QueryOnNewObject(derived, kIidBar), S_OK);
  EXPECT_EQ(Lookups(), before + 1);
  EXPECT_EQ(ZelMetaProbeHits(), 3);
}

TEST_F(MetaResolution, PlainMetaObjectInBetweenStopsTheWalk) {
  ZELSysTSMetaClass* middle = Register("MtMiddle", ZELSysTSTypeBase, foo_);
  ZELSysTSMetaClass* lower = Register("MtLower", ZELSysTSTypeImplementation, middle);
  EXPECT_EQ(QueryOnNewObject(lower, kIidBar), E_NOINTERFACE);
  EXPECT_EQ(QueryOnNewObject(middle, kIidBar), E_NOINTERFACE);
  EXPECT_EQ(ZelMetaProbeHits(), 0);
  // The offer itself exists.
  EXPECT_EQ(QueryOnNewObject(foo_, kIidBar), S_OK);
}

TEST_F(MetaResolution, LeafInterfaceDerivedFromTheRequestedOneNamesTheFunction) {
  // ILeafed is registered as a class of its own (so it names its identifier); IBarLeaf derives
  // from it.
  ZELSysTSMetaClass* leafed = Register("ILeafed", ZELSysTSTypeBase, nullptr, &kIidLeafed);
  Register("IBarLeaf", ZELSysTSTypeBase, leafed);
  EXPECT_EQ(QueryOnNewObject(foo_, kIidLeafed), S_OK);
  EXPECT_EQ(LastCreator(), "ZELSysTSCreateIBarLeafMtFoo");
}

TEST_F(MetaResolution, LeafInterfaceUnrelatedOrUnknownIsRefused) {
  ZELSysTSMetaClass* unrelated = Register("IUnrelated", ZELSysTSTypeBase);
  Register("IOtherLeaf", ZELSysTSTypeBase, unrelated);
  const unsigned long before = Lookups();
  EXPECT_EQ(QueryOnNewObject(foo_, kIidRefused), E_NOINTERFACE);
  EXPECT_EQ(QueryOnNewObject(foo_, kIidUnknownLeaf), E_NOINTERFACE);
  // Refused before any library was asked, although both functions exist.
  EXPECT_EQ(Lookups(), before);
  EXPECT_EQ(ZelMetaProbeHits(), 0);
}

TEST_F(MetaResolution, ExtensionListingTheClassNamesTheFunction) {
  Register("MtFooExt", ZELSysTSTypeChainedExtension, nullptr, &kClsidFooExt, "MtFoo");
  EXPECT_EQ(QueryOnNewObject(foo_, kIidExt), S_OK);
  EXPECT_EQ(LastCreator(), "ZELSysTSCreateIExtMtFooExt");
  EXPECT_EQ(Loads(), 0u);
}

TEST_F(MetaResolution, ExtensionLibraryIsLoadedWhenTheExtensionIsNotRegistered) {
  EXPECT_EQ(QueryOnNewObject(foo_, kIidExt), S_OK);
  EXPECT_EQ(LastCreator(), "ZELSysTSCreateIExtMtFooExt");
  EXPECT_EQ(Loads(), 1u);
  // The library's initialisation registered the extension under its own identifier.
  ZELSysTSMetaClass* ext = Register("MtFooExt", ZELSysTSTypeBase);
  EXPECT_EQ(*ext->GetClassId(), kClsidFooExt);
}

TEST_F(MetaResolution, ExtensionThatDoesNotServeTheClassIsRefused) {
  Register("MtFooExt", ZELSysTSTypeChainedExtension, nullptr, &kClsidFooExt, "MtFoo");
  ZELSysTSMetaClass* bar = Register("MtBar", ZELSysTSTypeImplementation);
  const unsigned long before = Lookups();
  EXPECT_EQ(QueryOnNewObject(bar, kIidExt), E_NOINTERFACE);     // MtBar is not listed
  EXPECT_EQ(QueryOnNewObject(bar, kIidNotExt), E_NOINTERFACE);  // MtFoo is no extension
  EXPECT_EQ(Lookups(), before);
  EXPECT_EQ(Loads(), 0u);
  // Loading the library does not register MtGhostExt either.
  EXPECT_EQ(QueryOnNewObject(bar, kIidGhost), E_NOINTERFACE);
  EXPECT_EQ(Loads(), 1u);
  EXPECT_EQ(Lookups(), before);
  EXPECT_EQ(ZelMetaProbeHits(), 0);
}

TEST_F(MetaResolution, LibraryThatDoesNotExist) {
  const unsigned long before = Lookups();
  EXPECT_EQ(QueryOnNewObject(foo_, kIidMissingLib), E_NOINTERFACE);
  EXPECT_EQ(Lookups(), before + 1);
}

TEST_F(MetaResolution, MissingFunctionFailsAgainWithoutAnotherLookup) {
  const unsigned long before = Lookups();
  EXPECT_EQ(QueryOnNewObject(foo_, kIidNoFunc), E_NOINTERFACE);
  EXPECT_EQ(Lookups(), before + 1);
  EXPECT_EQ(QueryOnNewObject(foo_, kIidNoFunc), E_NOINTERFACE);
  EXPECT_EQ(Lookups(), before + 1);
  // Other interfaces of the library still resolve.
  EXPECT_EQ(QueryOnNewObject(foo_, kIidBar), S_OK);
}

TEST_F(MetaResolution, UnknownInterfaceAndClassWithoutEntries) {
  const _GUID nobody = {0xDEAD, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};
  EXPECT_EQ(QueryOnNewObject(foo_, nobody), E_NOINTERFACE);
  ZELSysTSMetaClass* lonely = Register("MtLonely", ZELSysTSTypeImplementation);
  EXPECT_EQ(QueryOnNewObject(lonely, kIidBar), E_NOINTERFACE);
  EXPECT_EQ(Lookups(), 0u);
}

}  // namespace
}  // namespace zelmeta
