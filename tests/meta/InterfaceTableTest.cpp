// The interface table of implementation meta objects (order, growth, lookups) and the search
// order of FindInterfaceCreator over creators already recorded in the dictionary store, so that
// no implementation library is loaded.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "TestSupport.h"
#include "ZELSysTSFindOrCreateMetaObject.h"
#include "ZELThrLibraryManager.h"
#include "dictionary/DicoStore.h"
#include "dictionary/GuidPool.h"
#include "meta/ZELSysTSMetaClassImpl.h"

namespace {

const _GUID kClassId = {0xC1A55, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};

_GUID FromBytes(std::initializer_list<int> bytes) {
  unsigned char raw[16] = {};
  int i = 0;
  for (int b : bytes) raw[i++] = static_cast<unsigned char>(b);
  _GUID g;
  std::memcpy(&g, raw, 16);
  return g;
}

IUnknown* CreatorA(ZELSysTSBaseUnknown*, unsigned char) {
  return nullptr;
}
IUnknown* CreatorB(ZELSysTSBaseUnknown*, unsigned char) {
  return nullptr;
}

void ExpectSorted(ZELSysTSMetaClassImpl& meta) {
  const uint16_t n = meta.ItfCountForTesting();
  for (uint16_t i = 1; i < n; ++i) {
    EXPECT_LT(ZELSysTSMetaClassImpl::CompareIid(meta.ItfEntryForTesting(i - 1).iid,
                                                meta.ItfEntryForTesting(i).iid),
              0)
        << "entries " << i - 1 << " and " << i;
  }
}

TEST(InterfaceTable, IidOrderIsFourLittleEndianWords) {
  // Memory order would put b first (byte 0: 00 < 02); word order puts a first (2 < 0x01000000).
  const _GUID a = FromBytes({2, 0, 0, 0});
  const _GUID b = FromBytes({0, 0, 0, 1});
  EXPECT_LT(ZELSysTSMetaClassImpl::CompareIid(&a, &b), 0);
  EXPECT_GT(ZELSysTSMetaClassImpl::CompareIid(&b, &a), 0);
  // The first differing word decides, whatever the later words hold.
  const _GUID c = FromBytes({1, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF});
  const _GUID d = FromBytes({2, 0, 0, 0, 0, 0, 0, 0});
  EXPECT_LT(ZELSysTSMetaClassImpl::CompareIid(&c, &d), 0);
  // Words are unsigned: 0x80000000 sorts after 0x7FFFFFFF.
  const _GUID e = FromBytes({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0x7F});
  const _GUID f = FromBytes({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x80});
  EXPECT_LT(ZELSysTSMetaClassImpl::CompareIid(&e, &f), 0);
  const _GUID g = f;
  EXPECT_EQ(ZELSysTSMetaClassImpl::CompareIid(&f, &g), 0);
}

TEST(InterfaceTable, GrowsByFourAndStaysSortedWhateverTheOrder) {
  std::vector<_GUID> iids;
  for (int i = 0; i < 13; ++i) {
    // Vary every word so that the sort has to look past the first one.
    iids.push_back(FromBytes({(i * 7) % 3, 0, 0, 0, 0, 0, 0, (i * 5) % 13, i}));
  }
  std::mt19937 shuffle(12345);
  for (int round = 0; round < 3; ++round) {
    std::shuffle(iids.begin(), iids.end(), shuffle);
    ZELSysTSMetaClassImpl meta(&kClassId, "TableGrowth", nullptr);
    EXPECT_EQ(meta.ItfCapacityForTesting(), 0);
    for (size_t i = 0; i < iids.size(); ++i) {
      meta.RecordInterface(iids[i], i % 2 ? &CreatorA : &CreatorB);
      EXPECT_EQ(meta.ItfCountForTesting(), i + 1);
      EXPECT_EQ(meta.ItfCapacityForTesting(), (i / 4 + 1) * 4);
      ExpectSorted(meta);
    }
    std::vector<const _GUID*> held, pooled;
    for (size_t i = 0; i < iids.size(); ++i) {
      EXPECT_EQ(meta.LookupInterface(iids[i]), i % 2 ? &CreatorA : &CreatorB) << i;
      held.push_back(meta.ItfEntryForTesting(static_cast<uint16_t>(i)).iid);
      pooled.push_back(GuidPool::Intern(&iids[i]));
    }
    // Entries hold the pooled identifiers, not the callers' copies.
    std::sort(held.begin(), held.end());
    std::sort(pooled.begin(), pooled.end());
    EXPECT_EQ(held, pooled);
    const _GUID unknown = FromBytes({9, 9, 9, 9});
    EXPECT_EQ(meta.LookupInterface(unknown), nullptr);
  }
}

TEST(InterfaceTable, EmptyTableAndAbsentMarker) {
  ZELSysTSMetaClassImpl meta(&kClassId, "TableAbsent", nullptr);
  EXPECT_EQ(meta.LookupInterface(kClassId), nullptr);
  meta.RecordInterface(kClassId, ZELSysTSMetaClassImpl::AbsentMarker());
  EXPECT_EQ(meta.LookupInterface(kClassId), ZELSysTSMetaClassImpl::AbsentMarker());
  // The marker is recognised and never handed out.
  EXPECT_EQ(meta.FindInterfaceCreator(kClassId), nullptr);
  EXPECT_NE(ZELSysTSMetaClassImpl::AbsentMarker(), nullptr);
  EXPECT_EQ(ZELSysTSMetaClassImpl::AbsentMarker()(nullptr, 1), nullptr);
}

// FindInterfaceCreator over creators that the store already holds: a record by identifiers with
// a creator and a library ends the search before any library is loaded.
class RecordedCreators : public ::testing::Test {
 protected:
  void SetUp() override {
    env_ = std::make_unique<zeltest::ScopedEnv>("ZELDictionaryPath", dir_.path().c_str());
  }

  static void Offer(ZELSysTSMetaClass* meta, const char* itfName, const _GUID& iid,
                    ZELSysTSInterfaceCreator fn) {
    DicoEntry* byNames = DicoStore::InsertByNames(meta->GetClassName(), itfName, "NoSuchLibrary",
                                                  nullptr, nullptr, nullptr, nullptr);
    ASSERT_NE(byNames, nullptr);
    ASSERT_EQ(
        DicoStore::InsertByGuids(meta->GetClassId(), &iid, reinterpret_cast<void*>(fn), byNames),
        byNames);
  }

  static ZELSysTSMetaClassImpl* Impl(ZELSysTSMetaClass* meta) {
    return static_cast<ZELSysTSMetaClassImpl*>(meta);
  }

  zeltest::TempDir dir_;
  std::unique_ptr<zeltest::ScopedEnv> env_;
};

const _GUID kIidOffered = {0x0FFE, 1, 2, {3, 4, 5, 6, 7, 8, 9, 10}};

TEST_F(RecordedCreators, InheritedAnswerIsRecordedInBothTables) {
  ZELSysTSMetaClass* base = ZELSysTSFindOrCreateMetaObject("RcBase", ZELSysTSTypeImplementation,
                                                           nullptr, nullptr, nullptr);
  ZELSysTSMetaClass* derived = ZELSysTSFindOrCreateMetaObject(
      "RcDerived", ZELSysTSTypeImplementation, nullptr, base, nullptr);
  Offer(base, "IOffered", kIidOffered, &CreatorA);
  const unsigned long lookups = ZELThrLibraryManager::GetFunctionAddressCalls();

  EXPECT_EQ(Impl(derived)->FindInterfaceCreator(kIidOffered), &CreatorA);
  EXPECT_EQ(Impl(derived)->LookupInterface(kIidOffered), &CreatorA);
  EXPECT_EQ(Impl(base)->LookupInterface(kIidOffered), &CreatorA);
  EXPECT_EQ(ZELThrLibraryManager::GetFunctionAddressCalls(), lookups);
  EXPECT_EQ(ZELThrLibraryManager::LoadLibraryCalls(), 0u);
}

TEST_F(RecordedCreators, PlainMetaObjectEndsTheWalkAndTheFailureIsRemembered) {
  ZELSysTSMetaClass* base = ZELSysTSFindOrCreateMetaObject("RpBase", ZELSysTSTypeImplementation,
                                                           nullptr, nullptr, nullptr);
  ZELSysTSMetaClass* plain =
      ZELSysTSFindOrCreateMetaObject("RpPlain", ZELSysTSTypeBase, nullptr, base, nullptr);
  ZELSysTSMetaClass* derived = ZELSysTSFindOrCreateMetaObject(
      "RpDerived", ZELSysTSTypeImplementation, nullptr, plain, nullptr);
  Offer(base, "IOffered", kIidOffered, &CreatorB);

  EXPECT_EQ(Impl(derived)->FindInterfaceCreator(kIidOffered), nullptr);
  EXPECT_EQ(Impl(derived)->LookupInterface(kIidOffered), ZELSysTSMetaClassImpl::AbsentMarker());
  EXPECT_EQ(Impl(base)->ItfCountForTesting(), 0);  // never asked
  EXPECT_EQ(Impl(base)->FindInterfaceCreator(kIidOffered), &CreatorB);
}

TEST_F(RecordedCreators, RecordWithoutLibraryIsNoImplementation) {
  // The meta object's own record holds a creator (the meta object) and no library.
  ZELSysTSMetaClass* meta = ZELSysTSFindOrCreateMetaObject("RnClass", ZELSysTSTypeImplementation,
                                                           nullptr, nullptr, nullptr);
  EXPECT_EQ(Impl(meta)->FindInterfaceCreator(CLSID_ZELSysTSMetaClass), nullptr);
  EXPECT_EQ(Impl(meta)->LookupInterface(CLSID_ZELSysTSMetaClass),
            ZELSysTSMetaClassImpl::AbsentMarker());
  EXPECT_EQ(ZELThrLibraryManager::LoadLibraryCalls(), 0u);
  EXPECT_EQ(ZELThrLibraryManager::GetFunctionAddressCalls(), 0u);
}

}  // namespace
