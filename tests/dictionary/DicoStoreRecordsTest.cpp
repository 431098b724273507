// Registration: one record under identifiers and names at once, merged with the record that a
// dictionary line made for the names.
#include <gtest/gtest.h>

#include <string>

#include "TestSupport.h"
#include "dictionary/DicoStore.h"

namespace {

using zeltest::StderrCapture;

const std::string kMessage = "Problem allocating structure dico\n";

int g_first;
int g_second;
void* const kFirst = &g_first;
void* const kSecond = &g_second;

const _GUID kVehicleClass = {0x0C1D2E3F, 0x4A5B, 0x6C7D, {0x8E, 0x9F, 0xA0, 0xB1, 0xC2, 0xD3}};
const _GUID kVehicleItf = {0xF5E4D3C2, 0xB1A0, 0x9F8E, {0x7D, 0x6C, 0x5B, 0x4A, 0x3F, 0x2E}};
const _GUID kMetaId = {0xdc9a2804, 0x3801, 0x43de, {0xad, 0x64, 0x97, 0x1f, 0xae, 0x3c}};

TEST(DicoStoreRegisterTest, RegistrationCompletesTheRecordOfADictionaryLine) {
  DicoEntry* line = DicoStore::InsertByNames("Vehicle", "IVehicle", "libVehicleImpl", nullptr,
                                             nullptr, nullptr, nullptr);
  ASSERT_NE(nullptr, line);
  StderrCapture err;
  DicoEntry* reg =
      DicoStore::Register(&kVehicleClass, &kVehicleItf, "Vehicle", "IVehicle", nullptr, kFirst);
  EXPECT_EQ("", err.Take());
  EXPECT_EQ(line, reg);
  EXPECT_STREQ("VehicleImpl", line->library_name);
  ASSERT_NE(nullptr, line->class_id);
  ASSERT_NE(nullptr, line->interface_id);
  EXPECT_TRUE(*line->class_id == kVehicleClass);
  EXPECT_TRUE(*line->interface_id == kVehicleItf);
  EXPECT_EQ(kFirst, line->Creator());
  EXPECT_EQ(line, DicoStore::FindByGuids(&kVehicleClass, &kVehicleItf));
  EXPECT_EQ(
      1, DicoStore::NameChainForTesting(DicoStore::NameBucket("Vehicle", "IVehicle"), nullptr, 0));
}

TEST(DicoStoreRegisterTest, IdentifiersWithoutBothNamesAreRecordedByIdentifiersOnly) {
  DicoEntry* reg = DicoStore::Register(&kVehicleClass, &kMetaId, nullptr, nullptr, "lib", kFirst);
  ASSERT_NE(nullptr, reg);
  EXPECT_EQ(reg, DicoStore::FindByGuids(&kVehicleClass, &kMetaId));
  EXPECT_EQ(nullptr, reg->class_name);
  EXPECT_EQ(nullptr, reg->library_name);

  DicoEntry* halfNamed =
      DicoStore::Register(&kVehicleItf, &kMetaId, "IVehicle", nullptr, nullptr, kSecond);
  ASSERT_NE(nullptr, halfNamed);
  EXPECT_EQ(nullptr, halfNamed->class_name);
  EXPECT_EQ(kSecond, halfNamed->Creator());
}

TEST(DicoStoreRegisterTest, NamesWithOneIdentifierAreRecordedByNamesOnly) {
  DicoEntry* reg =
      DicoStore::Register(&kVehicleClass, nullptr, "Solo", "ISolo", "libSoloImpl", kFirst);
  ASSERT_NE(nullptr, reg);
  EXPECT_EQ(reg, DicoStore::FindByNames("Solo", "ISolo"));
  EXPECT_EQ(nullptr, reg->class_id);
  EXPECT_EQ(nullptr, reg->interface_id);
  EXPECT_STREQ("SoloImpl", reg->library_name);
  EXPECT_EQ(kFirst, reg->Creator());

  StderrCapture err;
  EXPECT_EQ(nullptr, DicoStore::Register(nullptr, &kMetaId, "Solo", nullptr, nullptr, kFirst));
  EXPECT_EQ(nullptr,
            DicoStore::Register(&kVehicleClass, &kMetaId, nullptr, nullptr, nullptr, nullptr));
  EXPECT_EQ("", err.Take());
}

TEST(DicoStoreRegisterTest, ASecondMetaObjectFailsInBothTablesAndTheFirstStays) {
  DicoEntry* reg =
      DicoStore::Register(&kVehicleClass, &kMetaId, "Widget", "MetaObject", nullptr, kFirst);
  ASSERT_NE(nullptr, reg);
  StderrCapture err;
  EXPECT_EQ(nullptr, DicoStore::Register(&kVehicleClass, &kMetaId, "Widget", "MetaObject", nullptr,
                                         kSecond));
  EXPECT_EQ(kMessage + kMessage, err.Take());
  EXPECT_EQ(kFirst, reg->Creator());
  EXPECT_EQ(reg, DicoStore::FindByNames("Widget", "MetaObject"));
  EXPECT_EQ(reg, DicoStore::FindByGuids(&kVehicleClass, &kMetaId));
}

}  // namespace
