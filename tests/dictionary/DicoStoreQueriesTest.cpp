// Meta object records and the queries over the dictionary store: registration merged with the
// record of a dictionary line, which queries have the dictionary files read, the meta object of
// a class name or identifier, and the name of a GUID.
#include <gtest/gtest.h>

#include <string>

#include "TestSupport.h"
#include "dictionary/DicoStore.h"
#include "dictionaryfiles/DicoLoader.h"
#include "meta/ZELSysTSMetaClassBase.h"

namespace {

int g_fn;
// The first three are named in the folder's ".iidts" file.
const _GUID kGadgetId = {1, 0, 0, {0}}, kFileOnlyId = {2, 0, 0, {0}}, kNamelessId = {3, 0, 0, {0}};
const _GUID kUnknownId = {0xDEADBEEF, 0, 0, {0}};

DicoEntry* RegisterMeta(ZELSysTSMetaClassBase* meta, const char* name) {
  return DicoStore::Register(meta->GetClassId(), &CLSID_ZELSysTSMetaClass, name, "MetaObject",
                             nullptr, meta);
}

class DicoStoreQueriesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_.Write("vehicles.dicts", "Vehicle IVehicle libVehicleImpl\n");
    dir_.Write("names.iidts",
               "{00000001-0000-0000-0000-000000000000} IGadgetFromFile\n"
               "{00000002-0000-0000-0000-000000000000} IFileOnly\n"
               "{00000003-0000-0000-0000-000000000000} INameless\n");
  }
  zeltest::TempDir dir_;
  zeltest::ScopedEnv env_{"ZELDictionaryPath", dir_.path().c_str()};
  zeltest::StderrCapture err_;
};

TEST_F(DicoStoreQueriesTest, RegistrationMergesWithTheNamesRecordAndNeverReadsTheFiles) {
  DicoEntry* line =
      DicoStore::InsertByNames("Car", "ICar", "libCarImpl", nullptr, nullptr, nullptr, nullptr);
  EXPECT_EQ(line, DicoStore::Register(&kGadgetId, &kFileOnlyId, "Car", "ICar", nullptr, &g_fn));
  EXPECT_STREQ("CarImpl", line->library_name);
  EXPECT_EQ(&g_fn, line->Creator());
  EXPECT_EQ(line, DicoStore::FindByGuids(&kGadgetId, &kFileOnlyId));
  EXPECT_EQ(1, DicoStore::NameChainForTesting(DicoStore::NameBucket("Car", "ICar"), nullptr, 0));

  // Both identifiers without both names: by identifiers only. Names and one identifier: by names.
  DicoEntry* byIds = DicoStore::Register(&kNamelessId, &kGadgetId, "Car", nullptr, "lib", &g_fn);
  ASSERT_NE(nullptr, byIds);
  EXPECT_EQ(byIds, DicoStore::FindByGuids(&kNamelessId, &kGadgetId));
  EXPECT_EQ(nullptr, byIds->class_name);
  EXPECT_EQ(nullptr, byIds->library_name);
  DicoEntry* byNames = DicoStore::Register(&kGadgetId, nullptr, "Solo", "ISolo", "libSo", &g_fn);
  ASSERT_NE(nullptr, byNames);
  EXPECT_EQ(byNames, DicoStore::FindByNames("Solo", "ISolo"));
  EXPECT_EQ(nullptr, byNames->class_id);
  EXPECT_EQ(nullptr, DicoStore::Register(nullptr, &kGadgetId, "Solo", nullptr, nullptr, &g_fn));

  // A second meta object for a class fails in both tables; the first stays.
  static ZELSysTSMetaClassBase gadget(&kGadgetId, "Gadget", nullptr);
  static ZELSysTSMetaClassBase other(&kGadgetId, "Gadget", nullptr);
  DicoEntry* reg = RegisterMeta(&gadget, "Gadget");
  EXPECT_EQ(nullptr, RegisterMeta(&other, "Gadget"));
  EXPECT_EQ("Problem allocating structure dico\nProblem allocating structure dico\n", err_.Take());
  EXPECT_EQ(&gadget, DicoStore::FindMetaObject("Gadget"));
  EXPECT_EQ(reg, DicoStore::FindByGuids(&kGadgetId, &CLSID_ZELSysTSMetaClass));
  EXPECT_EQ(nullptr, DicoStore::FindMetaObject("Vehicle"));
  EXPECT_EQ(nullptr, DicoStore::FindMetaObject(nullptr));
  EXPECT_FALSE(DicoLoader::IsLoaded());
}

TEST_F(DicoStoreQueriesTest, OnlyLoadFlagOneHasLookupByNamesReadTheFiles) {
  DicoStore::InsertByNames("Early", "IEarly", nullptr, nullptr, nullptr, nullptr, nullptr);
  EXPECT_NE(nullptr, DicoStore::LookupByNames("Early", "IEarly", 0));
  for (int16_t flag : {0, 2, -1}) {
    EXPECT_EQ(nullptr, DicoStore::LookupByNames("Vehicle", "IVehicle", flag));
    EXPECT_EQ(nullptr, DicoStore::LookupByGuids(&kGadgetId, &kUnknownId, flag));
  }
  EXPECT_EQ(nullptr, DicoStore::LookupByNames(nullptr, "IVehicle", 1));
  EXPECT_FALSE(DicoLoader::IsLoaded());

  DicoEntry* vehicle = DicoStore::LookupByNames("Vehicle", "IVehicle", 1);
  EXPECT_TRUE(DicoLoader::IsLoaded());
  ASSERT_NE(nullptr, vehicle);
  EXPECT_STREQ("VehicleImpl", vehicle->library_name);
  EXPECT_EQ("", err_.Take());
}

TEST_F(DicoStoreQueriesTest, LoadFlagOneHasLookupByGuidsReadTheFiles) {
  EXPECT_EQ(nullptr, DicoStore::LookupByGuids(&kGadgetId, &kUnknownId, 1));
  EXPECT_TRUE(DicoLoader::IsLoaded());
  EXPECT_EQ("", err_.Take());
}

TEST_F(DicoStoreQueriesTest, MetaObjectByIdentifierAndNameOfGuidReadTheFiles) {
  static ZELSysTSMetaClassBase gadget(&kGadgetId, "Gadget", nullptr);
  static ZELSysTSMetaClassBase nameless(&kNamelessId, nullptr, nullptr);
  ASSERT_NE(nullptr, RegisterMeta(&gadget, "Gadget"));
  ASSERT_NE(nullptr, RegisterMeta(&nameless, "Nameless"));
  EXPECT_EQ(&gadget, DicoStore::MetaObjectOfClassId(&kGadgetId));
  EXPECT_TRUE(DicoLoader::IsLoaded());
  EXPECT_EQ(nullptr, DicoStore::MetaObjectOfClassId(&kUnknownId));
  // The meta object's name first (even when the file names the GUID), then the file's.
  EXPECT_STREQ("Gadget", DicoStore::NameOfGuid(&kGadgetId));
  EXPECT_STREQ("IFileOnly", DicoStore::NameOfGuid(&kFileOnlyId));
  EXPECT_STREQ("INameless", DicoStore::NameOfGuid(&kNamelessId));
  EXPECT_EQ(nullptr, DicoStore::NameOfGuid(&kUnknownId));
  EXPECT_EQ("", err_.Take());
}

}  // namespace
