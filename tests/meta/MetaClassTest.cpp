// The meta classes on their own: the three kind tests, the effective base, the extended-class
// list, the interface table, and the search order of FindInterfaceCreator over creators that the
// dictionary store already holds (no library is loaded).
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <random>
#include <vector>

#include "LibraryManagerCounter.h"
#include "TestSupport.h"
#include "ZELSysTSFindOrCreateMetaObject.h"
#include "ZELThrLibraryManager.h"
#include "dictionary/DicoStore.h"
#include "meta/ZELSysTSMetaClassExt.h"
#include "pools/StringPool.h"

namespace {

const _GUID kRootId = {0x10, 0, 0, {0, 0, 0, 0, 0, 0, 0, 1}};
const _GUID kMiddleId = {0x20, 0, 0, {0, 0, 0, 0, 0, 0, 0, 2}};
const _GUID kLeafId = {0x30, 0, 0, {0, 0, 0, 0, 0, 0, 0, 3}};

// A meta class written outside the library: it presents stand_in as its effective meta object
// and base as its base.
class ForeignMeta : public ZELSysTSMetaClass {
 public:
  ForeignMeta(ZELSysTSMetaClass* standIn, ZELSysTSMetaClass* base)
      : stand_in_(standIn), base_(base) {}
  using ZELSysTSMetaClass::IsAKindOf;
  const char* GetClassName() override { return "Foreign"; }
  int IsAKindOf(const char*) override { return 0; }
  const _GUID* GetClassId() override { return nullptr; }
  int IsAKindOf(const _GUID*) override { return 0; }
  ZELSysTSMetaClass* GetBaseMetaObject() override { return base_; }
  ZELSysTSMetaClass* GetEffectiveMetaObject() override { return stand_in_; }

 private:
  ZELSysTSMetaClass* stand_in_;
  ZELSysTSMetaClass* base_;
};

// Distinct creator values for the tables; they are stored and compared, never called.
int g_creators[2];
const auto kCreatorA = reinterpret_cast<ZELSysTSInterfaceCreator>(&g_creators[0]);
const auto kCreatorB = reinterpret_cast<ZELSysTSInterfaceCreator>(&g_creators[1]);

TEST(MetaClass, IsAKindOfWalksTheBaseChainByMetaObjectNameAndIdentifier) {
  ZELSysTSMetaClassBase root(&kRootId, "Root", nullptr);
  ZELSysTSMetaClassImpl middle(&kMiddleId, "Middle", &root);
  ZELSysTSMetaClassExt leaf(&kLeafId, "Leaf", &middle, ZELSysTSTypeTransientExtension);
  EXPECT_EQ(leaf.IsAKindOf(&leaf), 1);
  EXPECT_EQ(leaf.IsAKindOf(&root), 1);
  EXPECT_EQ(root.IsAKindOf(&leaf), 0);
  EXPECT_EQ(middle.IsAKindOf(static_cast<const ZELSysTSMetaClass*>(nullptr)), 0);
  // The walk by meta object goes through the virtual GetBaseMetaObject.
  ForeignMeta foreign(nullptr, &middle);
  EXPECT_EQ(foreign.IsAKindOf(&root), 1);
  EXPECT_EQ(foreign.IsAKindOf(&leaf), 0);

  const std::string rootName = std::string("Ro") + "ot";  // compared by content
  EXPECT_EQ(leaf.IsAKindOf(rootName.c_str()), 1);
  EXPECT_EQ(leaf.IsAKindOf("Leaf"), 1);
  EXPECT_EQ(root.IsAKindOf("Middle"), 0);
  EXPECT_EQ(leaf.IsAKindOf("Lea"), 0);
  EXPECT_EQ(leaf.IsAKindOf(static_cast<const char*>(nullptr)), 0);

  const _GUID rootCopy = kRootId;
  EXPECT_EQ(leaf.IsAKindOf(&rootCopy), 1);
  EXPECT_EQ(leaf.IsAKindOf(&kLeafId), 1);
  EXPECT_EQ(middle.IsAKindOf(&kLeafId), 0);
  _GUID nearly = kRootId;
  nearly.Data4[7] ^= 0x80;  // every byte counts, the last one included
  EXPECT_EQ(leaf.IsAKindOf(&nearly), 0);
}

TEST(MetaClass, StoresTheEffectiveMetaObjectOfItsBase) {
  ZELSysTSMetaClassBase real(&kRootId, "RealBase", nullptr);
  ForeignMeta front(&real, nullptr);
  ZELSysTSMetaClassImpl derived(&kLeafId, "Derived", &front);
  EXPECT_EQ(derived.GetBaseMetaObject(), &real);
}

TEST(MetaClass, ExtendedClassListKeepsOneEntryPerNameAndGrowsByThree) {
  ZELSysTSMetaClassExt ext(&kLeafId, "Ext", nullptr, ZELSysTSTypeChainedExtension);
  ext.AddExtendedClass("A");
  ext.AddExtendedClass(std::string("A").c_str());
  EXPECT_EQ(ext.ExtendedCountForTesting(), 1);
  EXPECT_EQ(ext.ExtendedCapacityForTesting(), 3);
  for (const char* name : {"B", "C", "D", "B", static_cast<const char*>(nullptr)}) {
    ext.AddExtendedClass(name);
  }
  EXPECT_EQ(ext.ExtendedCapacityForTesting(), 6);
  ASSERT_EQ(ext.ExtendedCountForTesting(), 4);
  const char* expected[] = {"A", "B", "C", "D"};
  for (int i = 0; i < 4; ++i)
    EXPECT_EQ(ext.ExtendedClassForTesting(i), StringPool::Intern(expected[i]));

  // Membership is by pooled address; a meta object is looked up by its class name.
  EXPECT_EQ(ext.IsExtending(StringPool::Intern("C")), 1);
  EXPECT_EQ(ext.IsExtending(static_cast<const char*>(nullptr)), 0);
  ZELSysTSMetaClassBase c(&kRootId, "C", nullptr);
  ZELSysTSMetaClassBase e(&kRootId, "E", nullptr);
  EXPECT_EQ(ext.IsExtending(&c), 1);
  EXPECT_EQ(ext.IsExtending(&e), 0);

  // AddExtendedClassTo reaches an extension through an effective meta object, nothing else.
  ForeignMeta front(&ext, nullptr);
  AddExtendedClassTo(&front, "E");
  EXPECT_EQ(ext.IsExtending(&e), 1);
  ForeignMeta nowhere(nullptr, nullptr);
  AddExtendedClassTo(&nowhere, "F");
  AddExtendedClassTo(&c, "F");
  AddExtendedClassTo(nullptr, "F");
  AddExtendedClassTo(&ext, nullptr);
  EXPECT_EQ(ext.ExtendedCountForTesting(), 5);
}

// The IID order, written independently: four little-endian 32-bit words, compared in turn.
std::array<uint32_t, 4> IidWords(const _GUID* iid) {
  const auto* b = reinterpret_cast<const unsigned char*>(iid);
  std::array<uint32_t, 4> words{};
  for (int i = 0; i < 16; ++i) words[i / 4] |= static_cast<uint32_t>(b[i]) << (8 * (i % 4));
  return words;
}

TEST(InterfaceTable, GrowsByFourAndStaysSortedInIidOrderWhateverTheInsertionOrder) {
  // Memory order would sort on byte 0 first; IID order on byte 3 (unsigned: 0x80 after 0x40),
  // and among equal first words on byte 15, the top byte of the last word, which crosses 0x80.
  std::vector<_GUID> iids;
  for (uint32_t i = 0; i < 13; ++i) {
    iids.push_back({(i % 3) << 30 | (i % 2), 0, 0, {0, 0, 0, 0, 0, 0, 0, uint8_t(i * 20)}});
  }
  std::mt19937 shuffle(12345);
  for (int round = 0; round < 3; ++round) {
    std::shuffle(iids.begin(), iids.end(), shuffle);
    ZELSysTSMetaClassImpl meta(&kRootId, "TableGrowth", nullptr);
    for (size_t i = 0; i < iids.size(); ++i) {
      meta.RecordInterface(iids[i], i % 2 ? kCreatorA : kCreatorB);
      EXPECT_EQ(meta.ItfCapacityForTesting(), (i / 4 + 1) * 4);
      ASSERT_EQ(meta.ItfCountForTesting(), i + 1);
      for (uint16_t k = 1; k <= i; ++k) {
        EXPECT_LT(IidWords(meta.ItfEntryForTesting(k - 1).iid),
                  IidWords(meta.ItfEntryForTesting(k).iid));
      }
    }
    for (size_t i = 0; i < iids.size(); ++i) {
      EXPECT_EQ(meta.LookupInterface(iids[i]), i % 2 ? kCreatorA : kCreatorB) << i;
    }
    EXPECT_EQ(meta.LookupInterface(kMiddleId), nullptr);
  }
}

// A creator that the store holds for (class id, iid) with a library ends the search there.
void Offer(ZELSysTSMetaClass* meta, const _GUID& iid, ZELSysTSInterfaceCreator fn) {
  DicoEntry* byNames = DicoStore::InsertByNames(meta->GetClassName(), "IOffered", "NoSuchLibrary",
                                                nullptr, nullptr, nullptr, nullptr);
  ASSERT_EQ(
      DicoStore::InsertByGuids(meta->GetClassId(), &iid, reinterpret_cast<void*>(fn), byNames),
      byNames);
}

TEST(InterfaceSearch, BaseAnswersAreRecordedInBothTablesAndRecordsWithoutLibraryAreNone) {
  zeltest::TempDir dir;
  zeltest::ScopedEnv path("ZELDictionaryPath", dir.path().c_str());
  auto reg = [](const char* name, ZELSysTSTypeOfClass type, ZELSysTSMetaClass* base) {
    return ZELSysTSFindOrCreateMetaObject(name, type, nullptr, base, nullptr);
  };
  auto* base =
      static_cast<ZELSysTSMetaClassImpl*>(reg("SBase", ZELSysTSTypeImplementation, nullptr));
  auto* derived =
      static_cast<ZELSysTSMetaClassImpl*>(reg("SDerived", ZELSysTSTypeImplementation, base));
  Offer(base, kMiddleId, kCreatorA);
  EXPECT_EQ(derived->FindInterfaceCreator(kMiddleId), kCreatorA);
  EXPECT_EQ(derived->LookupInterface(kMiddleId), kCreatorA);
  EXPECT_EQ(base->LookupInterface(kMiddleId), kCreatorA);
  // A meta object's own record holds a creator (the meta object) and no library.
  EXPECT_EQ(derived->FindInterfaceCreator(CLSID_ZELSysTSMetaClass), nullptr);
  EXPECT_EQ(derived->LookupInterface(CLSID_ZELSysTSMetaClass),
            ZELSysTSMetaClassImpl::AbsentMarker());
  EXPECT_EQ(zeltest::LibraryLoads(), 0u);
  EXPECT_EQ(zeltest::FunctionLookups(), 0u);
}

}  // namespace
