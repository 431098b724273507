// Queries over the dictionary store: which of them have the dictionary files read, the meta
// object of a class name or class identifier, and the name of a GUID.
#include <gtest/gtest.h>

#include "TestSupport.h"
#include "ZELSysTSMetaClass.h"
#include "dictionary/DicoStore.h"
#include "dictionaryfiles/DicoLoader.h"

namespace {

using zeltest::ScopedEnv;
using zeltest::StderrCapture;
using zeltest::TempDir;

// A meta object that only knows its name and identifier.
class NamedMeta : public ZELSysTSMetaClass {
 public:
  NamedMeta(const char* name, const _GUID& id) : name_(name), id_(id) {}
  using ZELSysTSMetaClass::IsAKindOf;
  const char* GetClassName() const override { return name_; }
  int IsAKindOf(const char*) const override { return 0; }
  const _GUID* GetClassId() const override { return &id_; }
  int IsAKindOf(const _GUID*) const override { return 0; }
  ZELSysTSMetaClass* GetBaseMetaObject() const override { return nullptr; }
  ZELSysTSMetaClass* GetEffectiveMetaObject() override { return this; }

 private:
  const char* name_;
  _GUID id_;
};

// {12345678-9ABC-DEF0-0123-456789ABCDEF}
const _GUID kGadgetId = {
    0x12345678, 0x9ABC, 0xDEF0, {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF}};
// {0C1D2E3F-4A5B-6C7D-8E9F-A0B1C2D3E4F5}
const _GUID kFileOnlyId = {
    0x0C1D2E3F, 0x4A5B, 0x6C7D, {0x8E, 0x9F, 0xA0, 0xB1, 0xC2, 0xD3, 0xE4, 0xF5}};
// {F5E4D3C2-B1A0-9F8E-7D6C-5B4A3F2E1D0C}
const _GUID kNamelessId = {
    0xF5E4D3C2, 0xB1A0, 0x9F8E, {0x7D, 0x6C, 0x5B, 0x4A, 0x3F, 0x2E, 0x1D, 0x0C}};
const _GUID kUnknownId = {0xDEADBEEF, 0, 0, {0}};
const _GUID kSomeItf = {0x00000001, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

// A dictionary folder with one ".dicts" and one ".iidts" file, named by ZELDictionaryPath.
class DicoStoreQueriesTest : public ::testing::Test {
 protected:
  DicoStoreQueriesTest() : env_("ZELDictionaryPath", dir_.path().c_str()) {
    dir_.Write("vehicles.dicts", "Vehicle IVehicle libVehicleImpl\n");
    dir_.Write("names.iidts",
               "{12345678-9ABC-DEF0-0123-456789ABCDEF} IGadgetFromFile\n"
               "{0C1D2E3F-4A5B-6C7D-8E9F-A0B1C2D3E4F5} IFileOnly\n"
               "{F5E4D3C2-B1A0-9F8E-7D6C-5B4A3F2E1D0C} INameless\n");
  }

  void RegisterMeta(NamedMeta* meta, const char* name) {
    ASSERT_NE(nullptr, DicoStore::Register(meta->GetClassId(), &CLSID_ZELSysTSMetaClass, name,
                                           "MetaObject", nullptr, meta));
  }

  TempDir dir_;
  ScopedEnv env_;
  StderrCapture err_;
};

TEST_F(DicoStoreQueriesTest, OnlyLoadFlagOneHasTheFilesRead) {
  ASSERT_NE(nullptr, DicoStore::InsertByNames("Early", "IEarly", nullptr, nullptr, nullptr, nullptr,
                                              nullptr));
  ASSERT_NE(nullptr, DicoStore::InsertByGuids(&kGadgetId, &kSomeItf, &dir_, nullptr));

  EXPECT_NE(nullptr, DicoStore::LookupByNames("Early", "IEarly", 0));
  EXPECT_NE(nullptr, DicoStore::LookupByGuids(&kGadgetId, &kSomeItf, 2));
  EXPECT_EQ(nullptr, DicoStore::LookupByNames("Vehicle", "IVehicle", 0));
  EXPECT_EQ(nullptr, DicoStore::LookupByNames("Vehicle", "IVehicle", 2));
  EXPECT_EQ(nullptr, DicoStore::LookupByNames("Vehicle", "IVehicle", -1));
  EXPECT_EQ(nullptr, DicoStore::LookupByNames(nullptr, "IVehicle", 1));
  EXPECT_FALSE(DicoLoader::IsLoaded());

  DicoEntry* vehicle = DicoStore::LookupByNames("Vehicle", "IVehicle", 1);
  EXPECT_TRUE(DicoLoader::IsLoaded());
  ASSERT_NE(nullptr, vehicle);
  EXPECT_STREQ("VehicleImpl", vehicle->library_name);
  EXPECT_EQ(vehicle, DicoStore::LookupByNames("Vehicle", "IVehicle", 0));
  EXPECT_EQ("", err_.Take());
}

TEST_F(DicoStoreQueriesTest, LookupByGuidsWithLoadFlagOneHasTheFilesRead) {
  EXPECT_EQ(nullptr, DicoStore::LookupByGuids(&kGadgetId, &kSomeItf, 1));
  EXPECT_TRUE(DicoLoader::IsLoaded());
  EXPECT_EQ("", err_.Take());
}

TEST_F(DicoStoreQueriesTest, FindMetaObjectNeverReadsTheFiles) {
  static NamedMeta gadget("Gadget", kGadgetId);
  RegisterMeta(&gadget, "Gadget");
  EXPECT_EQ(&gadget, DicoStore::FindMetaObject("Gadget"));
  EXPECT_EQ(nullptr, DicoStore::FindMetaObject("Vehicle"));
  EXPECT_EQ(nullptr, DicoStore::FindMetaObject(nullptr));
  EXPECT_FALSE(DicoLoader::IsLoaded());
  EXPECT_EQ("", err_.Take());
}

TEST_F(DicoStoreQueriesTest, MetaObjectOfClassIdReadsTheFilesFirst) {
  static NamedMeta gadget("Gadget", kGadgetId);
  RegisterMeta(&gadget, "Gadget");
  EXPECT_EQ(&gadget, DicoStore::MetaObjectOfClassId(&kGadgetId));
  EXPECT_TRUE(DicoLoader::IsLoaded());
  EXPECT_EQ(nullptr, DicoStore::MetaObjectOfClassId(&kUnknownId));
  EXPECT_NE(nullptr, DicoStore::FindByNames("Vehicle", "IVehicle"));
  EXPECT_EQ("", err_.Take());
}

TEST_F(DicoStoreQueriesTest, NameOfGuidPrefersTheMetaObjectThenTheInterfaceTable) {
  static NamedMeta gadget("Gadget", kGadgetId);
  static NamedMeta nameless(nullptr, kNamelessId);
  RegisterMeta(&gadget, "Gadget");
  RegisterMeta(&nameless, "Nameless");
  EXPECT_STREQ("Gadget", DicoStore::NameOfGuid(&kGadgetId));
  EXPECT_STREQ("IFileOnly", DicoStore::NameOfGuid(&kFileOnlyId));
  EXPECT_STREQ("INameless", DicoStore::NameOfGuid(&kNamelessId));
  EXPECT_EQ(nullptr, DicoStore::NameOfGuid(&kUnknownId));
  EXPECT_TRUE(DicoLoader::IsLoaded());
  EXPECT_EQ("", err_.Take());
}

}  // namespace
