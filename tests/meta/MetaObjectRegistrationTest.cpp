// Registration of meta objects: one per class name, the kind chosen on first registration,
// generated identifiers, the dictionary records, extensions registered more than once, and
// ZELSysTSFillDictionary.
#include <gtest/gtest.h>

#include <string>

#include "TestSupport.h"
#include "ZELSysTSFindOrCreateMetaObject.h"
#include "dictionary/DicoStore.h"
#include "dictionaryfiles/DicoLoader.h"
#include "meta/ZELSysTSMetaClassExt.h"

namespace {

const _GUID kFooId = {0xF00, 0x1, 0x2, {0xA, 0xB, 0xC, 0xD, 0xE, 0xF, 0x1, 0x2}};

ZELSysTSMetaClassBase* AsBase(ZELSysTSMetaClass* meta) {
  return static_cast<ZELSysTSMetaClassBase*>(meta);
}

TEST(MetaObjectRegistration, OneMetaObjectPerNameWhateverTheLaterArguments) {
  ZELSysTSMetaClass* plain =
      ZELSysTSFindOrCreateMetaObject("RegPlain", ZELSysTSTypeBase, &kFooId, nullptr, nullptr);
  ASSERT_NE(plain, nullptr);
  const std::string sameName = "RegPlain";
  ZELSysTSMetaClass* again = ZELSysTSFindOrCreateMetaObject(
      sameName.c_str(), ZELSysTSTypeImplementation, nullptr, plain, "Whatever");
  EXPECT_EQ(again, plain);
  // Still the plain kind, identifier and base of the first call.
  EXPECT_EQ(AsBase(again)->GetExtensionMetaClass(), nullptr);
  EXPECT_EQ(*again->GetClassId(), kFooId);
  EXPECT_EQ(again->GetBaseMetaObject(), nullptr);
  EXPECT_EQ(AsBase(again)->FindInterfaceCreator(kFooId), nullptr);
}

TEST(MetaObjectRegistration, KindChoosesTheMetaClass) {
  struct Case {
    const char* name;
    int32_t kind;
    bool impl;
    bool ext;
  };
  const Case cases[] = {{"KindBase", 0, false, false},     {"KindImpl", 1, true, false},
                        {"Kind2", 2, false, false},        {"Kind3", 3, false, false},
                        {"KindChained", 4, true, true},    {"KindTransient", 5, true, true},
                        {"KindUnknown", 77, false, false}, {"KindNegative", -1, false, false}};
  for (const Case& c : cases) {
    ZELSysTSMetaClass* meta = ZELSysTSFindOrCreateMetaObject(
        c.name, static_cast<ZELSysTSTypeOfClass>(c.kind), nullptr, nullptr, nullptr);
    ASSERT_NE(meta, nullptr) << c.name;
    EXPECT_EQ(dynamic_cast<ZELSysTSMetaClassImpl*>(meta) != nullptr, c.impl) << c.name;
    ZELSysTSMetaClassExt* ext = AsBase(meta)->GetExtensionMetaClass();
    EXPECT_EQ(ext != nullptr, c.ext) << c.name;
    if (ext != nullptr) {
      EXPECT_EQ(ext->GetTypeOfClass(), c.kind) << c.name;
    }
  }
}

TEST(MetaObjectRegistration, RecordedByNameAndByIdentifierWithoutReadingFiles) {
  ZELSysTSMetaClass* meta = ZELSysTSFindOrCreateMetaObject(
      "RegRecorded", ZELSysTSTypeImplementation, &kFooId, nullptr, nullptr);
  EXPECT_EQ(DicoStore::FindMetaObject("RegRecorded"), meta);
  DicoEntry* byIds = DicoStore::LookupByGuids(&kFooId, &CLSID_ZELSysTSMetaClass, 0);
  ASSERT_NE(byIds, nullptr);
  EXPECT_EQ(byIds, DicoStore::LookupByNames("RegRecorded", "MetaObject", 0));
  EXPECT_EQ(byIds->Creator(), static_cast<void*>(meta));
  EXPECT_EQ(byIds->library_name, nullptr);
  EXPECT_FALSE(DicoLoader::IsLoaded());
}

TEST(MetaObjectRegistration, GeneratedIdentifiersAreConsecutive) {
  ZELSysTSMetaClass* first =
      ZELSysTSFindOrCreateMetaObject("RegGen1", ZELSysTSTypeBase, nullptr, nullptr, nullptr);
  ZELSysTSMetaClass* second = ZELSysTSFindOrCreateMetaObject("RegGen2", ZELSysTSTypeImplementation,
                                                             nullptr, nullptr, nullptr);
  // Finding an existing class does not use up an identifier.
  ZELSysTSFindOrCreateMetaObject("RegGen1", ZELSysTSTypeBase, nullptr, nullptr, nullptr);
  ZELSysTSMetaClass* third =
      ZELSysTSFindOrCreateMetaObject("RegGen3", ZELSysTSTypeBase, nullptr, nullptr, nullptr);
  const _GUID one = {1, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};
  EXPECT_EQ(*first->GetClassId(), one);
  EXPECT_EQ(second->GetClassId()->Data1, 2u);
  EXPECT_EQ(third->GetClassId()->Data1, 3u);
  EXPECT_EQ(DicoStore::LookupByGuids(second->GetClassId(), &CLSID_ZELSysTSMetaClass, 0)->Creator(),
            static_cast<void*>(second));
}

TEST(MetaObjectRegistration, NullAndZELNullGiveNothing) {
  EXPECT_EQ(ZELSysTSFindOrCreateMetaObject(nullptr, ZELSysTSTypeBase, nullptr, nullptr, nullptr),
            nullptr);
  EXPECT_EQ(ZELSysTSFindOrCreateMetaObject("ZELNull", ZELSysTSTypeImplementation, &kFooId, nullptr,
                                           nullptr),
            nullptr);
  EXPECT_EQ(DicoStore::FindMetaObject("ZELNull"), nullptr);
  // Near misses are ordinary names; the refused ones used no generated identifier.
  for (const char* name : {"ZELNullX", "ZELNul", "zelnull", ""}) {
    ZELSysTSMetaClass* meta =
        ZELSysTSFindOrCreateMetaObject(name, ZELSysTSTypeBase, nullptr, nullptr, nullptr);
    ASSERT_NE(meta, nullptr) << name;
    EXPECT_STREQ(meta->GetClassName(), name);
  }
  EXPECT_EQ(DicoStore::FindMetaObject("ZELNullX")->GetClassId()->Data1, 1u);
}

TEST(MetaObjectRegistration, ExtensionRegisteredTwiceCollectsItsExtendedClasses) {
  ZELSysTSMetaClass* ext = ZELSysTSFindOrCreateMetaObject("RegExt", ZELSysTSTypeChainedExtension,
                                                          nullptr, nullptr, "ClassOne");
  ASSERT_NE(ext, nullptr);
  EXPECT_EQ(ZELSysTSFindOrCreateMetaObject("RegExt", ZELSysTSTypeTransientExtension, nullptr,
                                           nullptr, "ClassTwo"),
            ext);
  EXPECT_EQ(ZELSysTSFindOrCreateMetaObject("RegExt", ZELSysTSTypeChainedExtension, nullptr, nullptr,
                                           "ClassOne"),
            ext);
  ZELSysTSMetaClassExt* list = AsBase(ext)->GetExtensionMetaClass();
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list->GetTypeOfClass(), ZELSysTSTypeChainedExtension);
  ASSERT_EQ(list->ExtendedCountForTesting(), 2);
  EXPECT_STREQ(list->ExtendedClassForTesting(0), "ClassOne");
  EXPECT_STREQ(list->ExtendedClassForTesting(1), "ClassTwo");

  // An extended class given to a class that is not an extension is ignored.
  ZELSysTSMetaClass* impl = ZELSysTSFindOrCreateMetaObject("RegNotExt", ZELSysTSTypeImplementation,
                                                           nullptr, nullptr, "ClassOne");
  EXPECT_EQ(AsBase(impl)->GetExtensionMetaClass(), nullptr);
}

TEST(MetaObjectRegistration, RefusedRecordStillGivesAWorkingMetaObject) {
  // The identifier is already taken by another class's meta object record: the store refuses
  // the second record (with its own line) and the new meta object is returned anyway.
  ZELSysTSMetaClass* first =
      ZELSysTSFindOrCreateMetaObject("RegOwner", ZELSysTSTypeBase, &kFooId, nullptr, nullptr);
  zeltest::StderrCapture capture;
  ZELSysTSMetaClass* second =
      ZELSysTSFindOrCreateMetaObject("RegIntruder", ZELSysTSTypeBase, &kFooId, nullptr, nullptr);
  const std::string err = capture.Take();
  ASSERT_NE(second, nullptr);
  EXPECT_NE(second, first);
  EXPECT_STREQ(second->GetClassName(), "RegIntruder");
  EXPECT_NE(err.find("Problem allocating structure dico\n"), std::string::npos);
  EXPECT_EQ(DicoStore::LookupByGuids(&kFooId, &CLSID_ZELSysTSMetaClass, 0)->Creator(),
            static_cast<void*>(first));
}

IUnknown* MakeSomething(ZELSysTSBaseUnknown*, unsigned char) {
  return nullptr;
}

TEST(FillDictionary, RecordsOnlyCreateInterface) {
  ZELSysTSFillDictionary recorded("FillClass", "CreateInterface", &MakeSomething);
  DicoEntry* entry = DicoStore::LookupByNames("FillClass", "CreateInterface", 0);
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(entry->Creator(), reinterpret_cast<void*>(&MakeSomething));
  EXPECT_EQ(entry->library_name, nullptr);

  ZELSysTSFillDictionary other("FillOther", "IOther", &MakeSomething);
  ZELSysTSFillDictionary nearly("FillOther", "CreateInterfaces", &MakeSomething);
  ZELSysTSFillDictionary noCreator("FillOther", "CreateInterface", nullptr);
  ZELSysTSFillDictionary noClass(nullptr, "CreateInterface", &MakeSomething);
  ZELSysTSFillDictionary noItf("FillOther", nullptr, &MakeSomething);
  ZELSysTSFillDictionary byMeta(static_cast<const ZELSysTSMetaClass*>(nullptr), nullptr,
                                &MakeSomething);
  EXPECT_EQ(DicoStore::LookupByNames("FillOther", "IOther", 0), nullptr);
  EXPECT_EQ(DicoStore::LookupByNames("FillOther", "CreateInterfaces", 0), nullptr);
  EXPECT_EQ(DicoStore::LookupByNames("FillOther", "CreateInterface", 0), nullptr);
  EXPECT_EQ(ZELSysTSFillDictionary::InitMetaClasses(nullptr, nullptr), 1);
  EXPECT_FALSE(DicoLoader::IsLoaded());
}

}  // namespace
