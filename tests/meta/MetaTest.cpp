// Meta objects on their own: the kind tests, the interface table, and registration. Nothing here
// reads a dictionary file or loads a library.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "TestSupport.h"
#include "ZELSysTSObjectModeler.h"
#include "dictionary/DicoStore.h"
#include "dictionaryfiles/DicoLoader.h"
#include "meta/ZELSysTSMetaClassExt.h"

namespace {

const _GUID kRootId = {0x10, 0, 0, {0, 0, 0, 0, 0, 0, 0, 1}};
const _GUID kLeafId = {0x30, 0, 0, {0, 0, 0, 0, 0, 0, 0, 3}};
const _GUID kFooId = {0xF00, 0x1, 0x2, {0xA, 0xB, 0xC, 0xD, 0xE, 0xF, 0x1, 0x2}};

ZELSysTSMetaClass* Reg(const char* name, int kind, const _GUID* id = nullptr,
                       const char* extended = nullptr, ZELSysTSMetaClass* base = nullptr) {
  return ZELSysTSFindOrCreateMetaObject(name, static_cast<ZELSysTSTypeOfClass>(kind), id, base,
                                        extended);
}

const auto ExtensionOf = [](ZELSysTSMetaClass* meta) {
  return static_cast<ZELSysTSMetaClassBase*>(meta)->GetExtensionMetaClass();
};

TEST(MetaClass, IsAKindOfWalksTheBaseChainByNameAndIdentifier) {
  ZELSysTSMetaClassBase root(&kRootId, "Root", nullptr);
  ZELSysTSMetaClassExt leaf(&kLeafId, "Leaf", &root, ZELSysTSTypeTransientExtension);
  _GUID id = kRootId, other = kRootId;  // copies: compared by content
  other.Data4[7] ^= 0x80;               // every byte counts, the last one included
  EXPECT_EQ((std::vector<int>{leaf.IsAKindOf(std::string("Root").c_str()), leaf.IsAKindOf("Lea"),
                              leaf.IsAKindOf(&id), leaf.IsAKindOf(&other)}),
            (std::vector<int>{1, 0, 1, 0}));
}

// IIDs equal but for one of their four 32-bit words (word 1: Data2, Data3): each finds its own.
TEST(InterfaceTable, EachIidFindsItsOwnCreatorWhicheverWordTellsThemApart) {
  const std::vector<_GUID> iids = {
      {0x1BA00001, 0x2222, 0x4000, {0x90, 0, 0, 0, 0, 0, 0, 1}},
      {0x9BA00001, 0x2222, 0x4000, {0x90, 0, 0, 0, 0, 0, 0, 1}},     // word 0
      {0x1BA00001, 0x2223, 0x4000, {0x90, 0, 0, 0, 0, 0, 0, 1}},     // word 1: Data2
      {0x1BA00001, 0x2222, 0xC000, {0x90, 0, 0, 0, 0, 0, 0, 1}},     // word 1: Data3
      {0x1BA00001, 0xA222, 0x4001, {0x90, 0, 0, 0, 0, 0, 0, 1}},     // word 1: both
      {0x1BA00001, 0x2222, 0x4000, {0x10, 0, 0, 0x80, 0, 0, 0, 1}},  // word 2
      {0x1BA00001, 0x2222, 0x4000, {0x90, 0, 0, 0, 0, 0, 0, 0x81}},  // word 3
  };
  static int creators[7];  // distinct values, compared and never called
  auto creator = [](size_t i) { return reinterpret_cast<ZELSysTSInterfaceCreator>(&creators[i]); };
  ZELSysTSMetaClassImpl meta(&kRootId, "Table", nullptr);
  for (size_t i = 0; i < iids.size(); ++i) meta.RecordInterface(iids[i], creator(i));
  for (size_t i = 0; i < iids.size(); ++i) EXPECT_EQ(meta.LookupInterface(iids[i]), creator(i));
  EXPECT_FALSE(meta.LookupInterface({0x1BA00001, 0x2222, 0x4000, {0x90, 0, 0, 0, 0, 0, 0, 2}}));
}

// Filled to its largest size, 65,535 entries recorded out of order (each odd IID lands before
// the even one recorded just before it), the table finds every entry with its own creator; the
// next one is not recorded and leaves the others intact.
TEST(InterfaceTable, HoldsUpTo65535EntriesAndRecordsNothingPastThem) {
  static int creators[2];
  const auto creator = [](uint32_t i) {
    return reinterpret_cast<ZELSysTSInterfaceCreator>(&creators[i & 1]);
  };
  const auto iid = [](uint32_t i) { return _GUID{i ^ 1, 0, 0, {0xFA, 0, 0, 0, 0, 0, 0, 0}}; };
  ZELSysTSMetaClassImpl meta(&kRootId, "Full", nullptr);
  for (uint32_t i = 0; i <= 0xFFFF; ++i) meta.RecordInterface(iid(i), creator(i));
  uint32_t found = 0;
  for (uint32_t i = 0; i < 0xFFFF; ++i) found += meta.LookupInterface(iid(i)) == creator(i);
  EXPECT_EQ(found, 0xFFFFu);
  EXPECT_EQ(meta.LookupInterface(iid(0xFFFF)), nullptr);
}

TEST(MetaObjectRegistration, KindChoosesTheMetaClassAndTheFirstRegistrationWins) {
  // Kind, then the meta class built: B plain, I implementation, E extension.
  for (auto [kind, built] :
       {std::pair{0, 'B'}, {1, 'I'}, {2, 'B'}, {3, 'B'}, {4, 'E'}, {5, 'E'}, {77, 'B'}}) {
    const std::string name = "Kind" + std::to_string(kind);
    SCOPED_TRACE(name);
    ZELSysTSMetaClass* meta = Reg(name.c_str(), kind);
    ASSERT_NE(meta, nullptr);
    EXPECT_EQ(dynamic_cast<ZELSysTSMetaClassImpl*>(meta) != nullptr, built != 'B');
    ZELSysTSMetaClassExt* ext = ExtensionOf(meta);
    EXPECT_EQ(ext != nullptr ? ext->GetTypeOfClass() : -1, built == 'E' ? kind : -1);
    EXPECT_EQ(DicoStore::LookupByGuids(meta->GetClassId(), &CLSID_ZELSysTSMetaClass, 0)->Creator(),
              static_cast<void*>(meta));
    EXPECT_EQ(Reg(name.c_str(), built == 'E' ? 1 : 4, &kFooId), meta);  // whatever it asks for
  }
  EXPECT_FALSE(DicoLoader::IsLoaded());
}

TEST(MetaObjectRegistration, GeneratedIdentifiersCountFromOneAndZELNullIsRefused) {
  auto generated = [](uint32_t n) { return _GUID{n, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}}; };
  EXPECT_EQ(*Reg("Gen1", 0)->GetClassId(), generated(1));
  EXPECT_EQ(*Reg("Given", 1, &kFooId)->GetClassId(), kFooId);
  EXPECT_TRUE(!Reg(nullptr, 0) && !Reg("ZELNull", 1) && !DicoStore::FindMetaObject("ZELNull"));
  // A near miss is an ordinary name, and ZELNull took no identifier.
  EXPECT_EQ(*Reg("ZELNullX", 0)->GetClassId(), generated(2));
}

// A base slow to hand out its effective meta object, which registration asks for between the
// lookup of a new name and its record: threads registering one name at once overlap there.
struct SlowBase : ZELSysTSMetaClassBase {
  using ZELSysTSMetaClassBase::ZELSysTSMetaClassBase;
  ZELSysTSMetaClass* GetEffectiveMetaObject() override {
    std::this_thread::sleep_for(std::chrono::microseconds(500));
    return this;
  }
};

TEST(MetaObjectRegistration, RacingRegistrationsOfANameGetOneMetaObject) {
  static SlowBase slow(&kRootId, "Slow", nullptr);
  for (int round = 0; round < 10; ++round) {
    std::vector<ZELSysTSMetaClass*> got(4);
    const std::string name = "Raced" + std::to_string(round);
    zeltest::RunTogether(4, [&](int t) { got[t] = Reg(name.c_str(), 1, nullptr, nullptr, &slow); });
    for (ZELSysTSMetaClass* meta : got) EXPECT_EQ(meta, got[0]);
  }
}

TEST(MetaObjectRegistration, ExtensionRegisteredAgainAddsTheClassItExtends) {
  ZELSysTSMetaClass* ext = Reg("RegExt", 4, nullptr, "ClassOne");
  EXPECT_EQ(Reg("RegExt", 5, nullptr, "ClassTwo"), ext);
  EXPECT_EQ(ExtensionOf(ext)->GetTypeOfClass(), ZELSysTSTypeChainedExtension);
  for (auto [name, extends] : {std::pair{"ClassOne", 1}, {"ClassTwo", 1}, {"ClassThree", 0}})
    EXPECT_EQ(ExtensionOf(ext)->IsExtending(Reg(name, 1)), extends) << name;
}

// A meta class written by a client: its own effective meta object, with the base it is given.
struct ForeignMeta final : ZELSysTSMetaClass {
  ZELSysTSMetaClass* base = nullptr;
  const char* GetClassName() override { return "Foreign"; }
  int IsAKindOf(const char*) override { return 0; }
  const _GUID* GetClassId() override { return &kLeafId; }
  int IsAKindOf(const _GUID*) override { return 0; }
  ZELSysTSMetaClass* GetBaseMetaObject() override { return base; }
  ZELSysTSMetaClass* GetEffectiveMetaObject() override { return this; }
};
struct ForeignObject final : ZELSysTSBaseUnknown {
  ForeignObject() : ZELSysTSBaseUnknown(1) {}
  ZELSysTSMetaClass* meta = nullptr;
  ZELSysTSMetaClass* GetMetaObject() const override { return meta; }
};

// Never taken for one of the library's own meta objects (no downcast, no call through it as
// one), and a base chain that loops back through it ends every walk.
TEST(MetaClass, AMetaClassWrittenElsewhereIsNeverTakenForTheLibrarysOwn) {
  zeltest::DictionaryPath empty;
  ForeignMeta foreign;
  ZELSysTSMetaClass* derived = Reg("OverForeign", 1, &kFooId, nullptr, &foreign);
  foreign.base = derived;
  EXPECT_EQ(EffectiveMetaOf(&foreign), nullptr);
  EXPECT_FALSE(derived->IsAKindOf("Elsewhere") || derived->IsAKindOf(&kRootId) ||
               foreign.ZELSysTSMetaClass::IsAKindOf(Reg("Unrelated", 0)));
  EXPECT_EQ(EffectiveMetaOf(derived)->FindInterfaceCreator(kRootId), nullptr);
  ForeignObject object;
  void* out = &object;
  object.meta = &foreign;
  EXPECT_EQ(object.QueryInterface(kRootId, &out), E_NOINTERFACE);
  object.meta = derived;
  EXPECT_EQ(object.QueryInterface(kRootId, &out), E_NOINTERFACE);
  EXPECT_TRUE(object.AddRef() == 2u && object.Release() == 1u);
}

}  // namespace
