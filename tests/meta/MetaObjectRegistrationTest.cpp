// Registration of meta objects: one per class name, the kind chosen on first registration,
// generated identifiers, the dictionary records (refused ones too), extensions registered more
// than once, and ZELSysTSFillDictionary.
#include <gtest/gtest.h>

#include <string>

#include "TestSupport.h"
#include "ZELSysTSFindOrCreateMetaObject.h"
#include "dictionary/DicoStore.h"
#include "dictionaryfiles/DicoLoader.h"
#include "meta/ZELSysTSMetaClassExt.h"

namespace {

const _GUID kFooId = {0xF00, 0x1, 0x2, {0xA, 0xB, 0xC, 0xD, 0xE, 0xF, 0x1, 0x2}};

ZELSysTSMetaClass* Reg(const char* name, int kind, const _GUID* id = nullptr,
                       ZELSysTSMetaClass* base = nullptr, const char* extended = nullptr) {
  return ZELSysTSFindOrCreateMetaObject(name, static_cast<ZELSysTSTypeOfClass>(kind), id, base,
                                        extended);
}

ZELSysTSMetaClassExt* ExtensionOf(ZELSysTSMetaClass* meta) {
  return static_cast<ZELSysTSMetaClassBase*>(meta)->GetExtensionMetaClass();
}

TEST(MetaObjectRegistration, KindChoosesTheMetaClassAndTheFirstRegistrationWins) {
  // Kind, then the meta class built: B plain, I implementation, E extension.
  for (auto [kind, built] : {std::pair{0, 'B'},
                             {1, 'I'},
                             {2, 'B'},
                             {3, 'B'},
                             {4, 'E'},
                             {5, 'E'},
                             {77, 'B'},
                             {-1, 'B'}}) {
    const std::string name = "Kind" + std::to_string(kind);
    SCOPED_TRACE(name);
    ZELSysTSMetaClass* meta = Reg(name.c_str(), kind);
    ASSERT_NE(meta, nullptr);
    EXPECT_EQ(dynamic_cast<ZELSysTSMetaClassImpl*>(meta) != nullptr, built != 'B');
    ZELSysTSMetaClassExt* ext = ExtensionOf(meta);
    EXPECT_EQ(ext != nullptr, built == 'E');
    EXPECT_EQ(ext != nullptr ? ext->GetTypeOfClass() : kind, kind);
    if (built == 'B') {
      EXPECT_EQ(static_cast<ZELSysTSMetaClassBase*>(meta)->FindInterfaceCreator(kFooId), nullptr);
    }
    // Recorded under both keys, with no library.
    EXPECT_EQ(DicoStore::FindMetaObject(name.c_str()), meta);
    DicoEntry* byIds = DicoStore::LookupByGuids(meta->GetClassId(), &CLSID_ZELSysTSMetaClass, 0);
    ASSERT_NE(byIds, nullptr);
    EXPECT_EQ(byIds->Creator(), static_cast<void*>(meta));
    EXPECT_EQ(byIds->library_name, nullptr);

    // A later registration of the name gets the same object, whatever it asks for.
    EXPECT_EQ(Reg(std::string(name).c_str(), built == 'E' ? 0 : 4, &kFooId, meta), meta);
    EXPECT_EQ(ExtensionOf(meta), ext);
    EXPECT_NE(*meta->GetClassId(), kFooId);
    EXPECT_EQ(meta->GetBaseMetaObject(), nullptr);
  }
  EXPECT_FALSE(DicoLoader::IsLoaded());
}

TEST(MetaObjectRegistration, GeneratedIdentifiersAreConsecutiveAndZELNullTakesNone) {
  auto generated = [](uint32_t n) { return _GUID{n, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}}; };
  EXPECT_EQ(*Reg("Gen1", 0)->GetClassId(), generated(1));
  ZELSysTSMetaClass* given = Reg("Given", 1, &kFooId);
  EXPECT_EQ(*given->GetClassId(), kFooId);
  Reg("Gen1", 1);
  EXPECT_EQ(Reg(nullptr, 0), nullptr);
  EXPECT_EQ(Reg("ZELNull", 1, &kFooId), nullptr);
  EXPECT_EQ(DicoStore::FindMetaObject("ZELNull"), nullptr);
  // Near misses are ordinary names.
  uint32_t next = 2;
  for (const char* name : {"ZELNullX", "ZELNul", "zelnull", ""}) {
    SCOPED_TRACE(name);
    ZELSysTSMetaClass* meta = Reg(name, 0);
    ASSERT_NE(meta, nullptr);
    EXPECT_STREQ(meta->GetClassName(), name);
    EXPECT_EQ(*meta->GetClassId(), generated(next++));
  }
  // A second class under a taken identifier: the store refuses its record, the meta object works.
  zeltest::StderrCapture capture;
  ZELSysTSMetaClass* intruder = Reg("Intruder", 0, &kFooId);
  EXPECT_EQ(capture.Take(), "Problem allocating structure dico\n");
  ASSERT_NE(intruder, nullptr);
  EXPECT_STREQ(intruder->GetClassName(), "Intruder");
  EXPECT_EQ(DicoStore::LookupByGuids(&kFooId, &CLSID_ZELSysTSMetaClass, 0)->Creator(),
            static_cast<void*>(given));
}

TEST(MetaObjectRegistration, ExtensionRegisteredTwiceCollectsItsExtendedClasses) {
  ZELSysTSMetaClass* ext = Reg("RegExt", 4, nullptr, nullptr, "ClassOne");
  EXPECT_EQ(Reg("RegExt", 5, nullptr, nullptr, "ClassTwo"), ext);
  EXPECT_EQ(Reg("RegExt", 4, nullptr, nullptr, "ClassOne"), ext);
  ZELSysTSMetaClassExt* list = ExtensionOf(ext);
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list->GetTypeOfClass(), ZELSysTSTypeChainedExtension);
  ASSERT_EQ(list->ExtendedCountForTesting(), 2);
  EXPECT_STREQ(list->ExtendedClassForTesting(0), "ClassOne");
  EXPECT_STREQ(list->ExtendedClassForTesting(1), "ClassTwo");
  EXPECT_EQ(ExtensionOf(Reg("RegNotExt", 1, nullptr, nullptr, "ClassOne")), nullptr);
}

TEST(FillDictionary, RecordsOnlyCreateInterfaceWithACreator) {
  const ZELSysTSInterfaceCreator make = [](ZELSysTSBaseUnknown*, unsigned char) -> IUnknown* {
    return nullptr;
  };
  ZELSysTSFillDictionary recorded("FillClass", "CreateInterface", make);
  ZELSysTSFillDictionary otherName("FillOther", "CreateInterfaces", make);
  ZELSysTSFillDictionary noCreator("FillOther", "CreateInterface", nullptr);
  DicoEntry* entry = DicoStore::LookupByNames("FillClass", "CreateInterface", 0);
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(entry->Creator(), reinterpret_cast<void*>(make));
  EXPECT_EQ(DicoStore::LookupByNames("FillOther", "CreateInterfaces", 0), nullptr);
  EXPECT_EQ(DicoStore::LookupByNames("FillOther", "CreateInterface", 0), nullptr);
  EXPECT_FALSE(DicoLoader::IsLoaded());
}

}  // namespace
