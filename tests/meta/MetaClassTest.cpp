// The meta classes on their own: kinds, the three kind tests, the effective base, and the
// extended-class list of extension meta objects.
#include <gtest/gtest.h>

#include "dictionary/StringPool.h"
#include "meta/ZELSysTSMetaClassExt.h"

namespace {

const _GUID kRootId = {0x10, 0, 0, {0, 0, 0, 0, 0, 0, 0, 1}};
const _GUID kMiddleId = {0x20, 0, 0, {0, 0, 0, 0, 0, 0, 0, 2}};
const _GUID kLeafId = {0x30, 0, 0, {0, 0, 0, 0, 0, 0, 0, 3}};
const _GUID kOtherId = {0x40, 0, 0, {0, 0, 0, 0, 0, 0, 0, 4}};

// A meta class written outside the library: it presents `stand_in` as its effective meta object
// and `base` as its base.
class ForeignMeta : public ZELSysTSMetaClass {
 public:
  ForeignMeta(ZELSysTSMetaClass* standIn, ZELSysTSMetaClass* base)
      : stand_in_(standIn), base_(base) {}
  using ZELSysTSMetaClass::IsAKindOf;
  const char* GetClassName() const override { return "Foreign"; }
  int IsAKindOf(const char*) const override { return 0; }
  const _GUID* GetClassId() const override { return nullptr; }
  int IsAKindOf(const _GUID*) const override { return 0; }
  ZELSysTSMetaClass* GetBaseMetaObject() const override { return base_; }
  ZELSysTSMetaClass* GetEffectiveMetaObject() override { return stand_in_; }

 private:
  ZELSysTSMetaClass* stand_in_;
  ZELSysTSMetaClass* base_;
};

// Root <- Middle <- Leaf, built as registration would build them (meta objects are never
// deleted in the library; the tests free them to keep leak checkers quiet).
struct Chain {
  ZELSysTSMetaClassBase root{&kRootId, "Root", nullptr};
  ZELSysTSMetaClassImpl middle{&kMiddleId, "Middle", &root};
  ZELSysTSMetaClassExt leaf{&kLeafId, "Leaf", &middle, ZELSysTSTypeTransientExtension};
};

TEST(MetaClass, ConstructionInternsNameAndIdentifier) {
  const char name[] = "Interned";
  _GUID id = kOtherId;
  ZELSysTSMetaClassBase meta(&id, name, nullptr);
  EXPECT_EQ(meta.GetClassName(), StringPool::Intern("Interned"));
  EXPECT_NE(meta.GetClassName(), name);
  ASSERT_NE(meta.GetClassId(), nullptr);
  EXPECT_NE(meta.GetClassId(), &id);
  EXPECT_EQ(*meta.GetClassId(), kOtherId);
  EXPECT_EQ(meta.GetBaseMetaObject(), nullptr);
  EXPECT_EQ(meta.GetEffectiveMetaObject(), &meta);
}

TEST(MetaClass, KindsAnswerExtensionAndCreatorQueries) {
  Chain c;
  EXPECT_EQ(c.root.GetExtensionMetaClass(), nullptr);
  EXPECT_EQ(c.middle.GetExtensionMetaClass(), nullptr);
  EXPECT_EQ(c.leaf.GetExtensionMetaClass(), &c.leaf);
  EXPECT_EQ(c.leaf.GetTypeOfClass(), ZELSysTSTypeTransientExtension);
  ZELSysTSMetaClassExt chained(&kOtherId, "Chained", nullptr, ZELSysTSTypeChainedExtension);
  EXPECT_EQ(chained.GetTypeOfClass(), ZELSysTSTypeChainedExtension);

  // A plain meta object has no creator for anything and never records.
  for (const _GUID* iid : {&kRootId, &kLeafId, &CLSID_ZELSysTSMetaClass}) {
    EXPECT_EQ(c.root.FindInterfaceCreator(*iid), nullptr);
  }
}

TEST(MetaClass, IsAKindOfByMetaObject) {
  Chain c;
  EXPECT_EQ(c.leaf.IsAKindOf(static_cast<const ZELSysTSMetaClass*>(&c.leaf)), 1);
  EXPECT_EQ(c.leaf.IsAKindOf(static_cast<const ZELSysTSMetaClass*>(&c.middle)), 1);
  EXPECT_EQ(c.leaf.IsAKindOf(static_cast<const ZELSysTSMetaClass*>(&c.root)), 1);
  EXPECT_EQ(c.root.IsAKindOf(static_cast<const ZELSysTSMetaClass*>(&c.leaf)), 0);
  EXPECT_EQ(c.middle.IsAKindOf(static_cast<const ZELSysTSMetaClass*>(nullptr)), 0);

  // The walk goes through the virtual GetBaseMetaObject, so a foreign class's own chain counts.
  ForeignMeta foreign(nullptr, &c.middle);
  EXPECT_EQ(foreign.IsAKindOf(static_cast<const ZELSysTSMetaClass*>(&c.root)), 1);
  EXPECT_EQ(foreign.IsAKindOf(static_cast<const ZELSysTSMetaClass*>(&c.leaf)), 0);
}

TEST(MetaClass, IsAKindOfByName) {
  Chain c;
  EXPECT_EQ(c.leaf.IsAKindOf("Leaf"), 1);
  EXPECT_EQ(c.leaf.IsAKindOf("Middle"), 1);
  // Compared by content, not by pooled address.
  std::string root = "Ro";
  root += "ot";
  EXPECT_EQ(c.leaf.IsAKindOf(root.c_str()), 1);
  EXPECT_EQ(c.root.IsAKindOf("Leaf"), 0);
  EXPECT_EQ(c.leaf.IsAKindOf("Unrelated"), 0);
  EXPECT_EQ(c.leaf.IsAKindOf("Lea"), 0);
  EXPECT_EQ(c.leaf.IsAKindOf(static_cast<const char*>(nullptr)), 0);
}

TEST(MetaClass, IsAKindOfByIdentifier) {
  Chain c;
  _GUID copy = kRootId;
  EXPECT_EQ(c.leaf.IsAKindOf(&copy), 1);
  EXPECT_EQ(c.leaf.IsAKindOf(&kMiddleId), 1);
  EXPECT_EQ(c.leaf.IsAKindOf(&kLeafId), 1);
  EXPECT_EQ(c.middle.IsAKindOf(&kLeafId), 0);
  // Every byte counts, the last one included.
  _GUID nearly = kRootId;
  nearly.Data4[7] ^= 0x80;
  EXPECT_EQ(c.leaf.IsAKindOf(&nearly), 0);
}

TEST(MetaClass, StoresTheEffectiveMetaObjectOfItsBase) {
  ZELSysTSMetaClassBase real(&kRootId, "RealBase", nullptr);
  ForeignMeta foreign(&real, nullptr);
  ZELSysTSMetaClassImpl derived(&kLeafId, "Derived", &foreign);
  EXPECT_EQ(derived.GetBaseMetaObject(), &real);
  // The name and identifier walks follow the stored base, not the pointer given.
  EXPECT_EQ(derived.IsAKindOf("RealBase"), 1);
  EXPECT_EQ(derived.IsAKindOf(&kRootId), 1);
  EXPECT_EQ(derived.IsAKindOf("Foreign"), 0);
}

TEST(MetaClass, ExtendedClassListKeepsOneEntryPerNameAndGrowsByThree) {
  ZELSysTSMetaClassExt ext(&kOtherId, "Ext", nullptr, ZELSysTSTypeChainedExtension);
  EXPECT_EQ(ext.ExtendedCapacityForTesting(), 0);
  EXPECT_EQ(ext.IsExtending(StringPool::Intern("A")), 0);

  ext.AddExtendedClass("A");
  std::string again = "A";
  ext.AddExtendedClass(again.c_str());
  EXPECT_EQ(ext.ExtendedCountForTesting(), 1);
  EXPECT_EQ(ext.ExtendedCapacityForTesting(), 3);

  ext.AddExtendedClass("B");
  ext.AddExtendedClass("C");
  EXPECT_EQ(ext.ExtendedCapacityForTesting(), 3);
  ext.AddExtendedClass("D");
  ext.AddExtendedClass("B");
  EXPECT_EQ(ext.ExtendedCountForTesting(), 4);
  EXPECT_EQ(ext.ExtendedCapacityForTesting(), 6);
  const char* expected[] = {"A", "B", "C", "D"};
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(ext.ExtendedClassForTesting(i), StringPool::Intern(expected[i])) << i;
  }

  // Membership is by pooled address: an equal text that is not the pooled copy is not found.
  EXPECT_EQ(ext.IsExtending(StringPool::Intern("C")), 1);
  std::string unpooled = "C";
  EXPECT_EQ(ext.IsExtending(unpooled.c_str()), 0);
  EXPECT_EQ(ext.IsExtending(static_cast<const char*>(nullptr)), 0);
  ext.AddExtendedClass(nullptr);
  EXPECT_EQ(ext.ExtendedCountForTesting(), 4);
}

TEST(MetaClass, IsExtendingAMetaObjectUsesItsClassName) {
  Chain c;
  ZELSysTSMetaClassExt ext(&kOtherId, "Ext", nullptr, ZELSysTSTypeChainedExtension);
  ext.AddExtendedClass("Middle");
  EXPECT_EQ(ext.IsExtending(static_cast<ZELSysTSMetaClass*>(&c.middle)), 1);
  EXPECT_EQ(ext.IsExtending(static_cast<ZELSysTSMetaClass*>(&c.root)), 0);
  EXPECT_EQ(ext.IsExtending(static_cast<ZELSysTSMetaClass*>(nullptr)), 0);
}

TEST(MetaClass, AddExtendedClassToReachesOnlyExtensions) {
  Chain c;
  ZELSysTSMetaClassExt ext(&kOtherId, "Ext", nullptr, ZELSysTSTypeChainedExtension);
  // Through a foreign meta object whose effective meta object is the extension.
  ForeignMeta front(&ext, nullptr);
  AddExtendedClassTo(&front, "Root");
  EXPECT_EQ(ext.IsExtending(StringPool::Intern("Root")), 1);

  AddExtendedClassTo(&c.middle, "Root");  // not an extension: nothing happens
  AddExtendedClassTo(nullptr, "Root");
  AddExtendedClassTo(&ext, nullptr);
  ForeignMeta nowhere(nullptr, nullptr);
  AddExtendedClassTo(&nowhere, "Root");
  EXPECT_EQ(ext.ExtendedCountForTesting(), 1);
}

}  // namespace
