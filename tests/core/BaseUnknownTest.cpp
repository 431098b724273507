// The base object: counting, QueryInterface, the extension view, chain teardown and locks.
#include <gtest/gtest.h>

#include "CoreTestObjects.h"
#include "TestSupport.h"
#include "core/ZELSysTSChainExtension.h"

using coretest::Count;
using coretest::Events;
using coretest::LockCount;
using coretest::MakeGuid;
using coretest::RegisterClass;
using coretest::TestObject;

namespace {

const _GUID kIidIUnknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

// What the probe creator saw on its last call, and what it answers.
struct CreatorProbe {
  int calls = 0;
  ZELSysTSBaseUnknown* object = nullptr;
  unsigned char flag = 0xFF;
  int32_t lockCountInside = -1;
  IUnknown* answer = nullptr;
};
CreatorProbe g_probe;

IUnknown* ProbeCreator(ZELSysTSBaseUnknown* object, unsigned char threadSafe) {
  ++g_probe.calls;
  g_probe.object = object;
  g_probe.flag = threadSafe;
  g_probe.lockCountInside = LockCount(object);
  return g_probe.answer;
}

class BaseUnknownTest : public ::testing::Test {
 protected:
  void SetUp() override { Events().clear(); }
  coretest::QuietDictionary dictionary_;
};

// Appends a chained extension to object's chain the way the resolution does.
TestObject* Chain(TestObject* object, ZELSysTSMetaClass* meta, const char* tag,
                  ZELSysTSChainExtension** last) {
  auto* extension = new TestObject(meta, 1, tag);
  auto* node = new ZELSysTSChainExtension(extension);
  if (*last == nullptr) {
    ZELSysTSBaseUnknownAccess::SetLink(object, node);
  } else {
    EXPECT_EQ((*last)->SetNext(node), S_OK);
  }
  *last = node;
  ZELSysTSBaseUnknownAccess::SetLink(extension, object);
  return extension;
}

TEST_F(BaseUnknownTest, CountsFromOneAndTheLastReleaseDestroys) {
  for (unsigned char threadSafe : {0, 1}) {
    auto* object = new TestObject(ZELSysTSBaseUnknown::MetaObject(), threadSafe, "o");
    EXPECT_EQ(object->HasMutex(), threadSafe);
    EXPECT_EQ(Count(object), 1u);
    EXPECT_EQ(LockCount(object), 0);
    EXPECT_EQ(ZELSysTSBaseUnknownAccess::Link(object), nullptr);
    EXPECT_EQ(object->AddRef(), 2u);
    EXPECT_EQ(object->Release(), 1u);
    EXPECT_TRUE(Events() == std::vector<std::string>({"release:o"}));
    EXPECT_EQ(object->Release(), 0u);
    EXPECT_TRUE(Events() == std::vector<std::string>({"release:o", "release:o", "~o"}));
    Events().clear();
  }
}

TEST_F(BaseUnknownTest, AnswersIUnknownAndItsClassIdWithItself) {
  for (unsigned char threadSafe : {0, 1}) {
    auto* object = new ZELSysTSBaseUnknown(threadSafe);
    void* out = &out;
    EXPECT_EQ(object->QueryInterface(kIidIUnknown, &out), S_OK);
    EXPECT_EQ(out, static_cast<IUnknown*>(object));
    EXPECT_EQ(Count(object), 2u);
    out = nullptr;
    EXPECT_EQ(object->QueryInterface(CLSID_ZELSysTSBaseUnknown, &out), S_OK);
    EXPECT_EQ(out, static_cast<IUnknown*>(object));
    EXPECT_EQ(Count(object), 3u);
    EXPECT_EQ(LockCount(object), 0);
    // A plain class offers nothing else.
    out = &out;
    EXPECT_EQ(object->QueryInterface(MakeGuid(0x100), &out), E_NOINTERFACE);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(Count(object), 3u);
    EXPECT_EQ(LockCount(object), 0);
    EXPECT_EQ(object->Release(), 2u);
    EXPECT_EQ(object->Release(), 1u);
    EXPECT_EQ(object->Release(), 0u);
  }
}

TEST_F(BaseUnknownTest, ClassQueriesUseTheActualClass) {
  ZELSysTSMetaClass* base = ZELSysTSBaseUnknown::MetaObject();
  ASSERT_NE(base, nullptr);
  EXPECT_EQ(ZELSysTSBaseUnknown::meta_object, base);
  EXPECT_EQ(ZELSysTSBaseUnknown::MetaObject(), base);
  EXPECT_STREQ(ZELSysTSBaseUnknown::ClassName(), "ZELSysTSBaseUnknown");
  ASSERT_NE(ZELSysTSBaseUnknown::ClassId(), nullptr);
  EXPECT_TRUE(*ZELSysTSBaseUnknown::ClassId() == CLSID_ZELSysTSBaseUnknown);
  // The registered meta object is the one the dictionary knows by name.
  EXPECT_EQ(DicoStore::FindMetaObject("ZELSysTSBaseUnknown"), base);

  ZELSysTSMetaClass* vehicle = RegisterClass("Vehicle", ZELSysTSTypeImplementation, 0x200);
  ZELSysTSMetaClass* car = RegisterClass("Car", ZELSysTSTypeImplementation, 0x201, vehicle);
  TestObject object(car, 0);
  EXPECT_STREQ(object.IsA(), "Car");
  EXPECT_EQ(object.IsAKindOf("Vehicle"), 1);
  EXPECT_EQ(object.IsAKindOf("Boat"), 0);
  EXPECT_EQ(object.IsAKindOf(nullptr), 0);

  ZELSysTSBaseUnknown plain(0);
  EXPECT_STREQ(plain.IsA(), "ZELSysTSBaseUnknown");
  EXPECT_EQ(plain.IsAKindOf("Vehicle"), 0);
}

TEST_F(BaseUnknownTest, ObjectWithoutMetaObjectIsAPlainCounter) {
  auto* object = new TestObject(nullptr, 1, "bare");
  EXPECT_EQ(object->IsA(), nullptr);
  EXPECT_EQ(object->IsAKindOf("ZELSysTSBaseUnknown"), 0);
  void* out = &out;
  EXPECT_EQ(object->QueryInterface(kIidIUnknown, &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(object->AddRef(), 2u);
  EXPECT_EQ(object->Release(), 1u);
  EXPECT_EQ(object->Release(), 0u);
  EXPECT_EQ(Events().back(), "~bare");
}

// A class that asks itself for an interface while it is being destroyed: its count is 0.
class SelfQueryingObject : public ZELSysTSBaseUnknown {
 public:
  explicit SelfQueryingObject(HRESULT* result) : ZELSysTSBaseUnknown(1), result_(result) {}
  ~SelfQueryingObject() override {
    void* out = &out;
    *result_ = QueryInterface(kIidIUnknown, &out);
    if (out != nullptr) *result_ = S_OK;  // *ppv must be null after a failure
  }

 private:
  HRESULT* result_;
};

TEST_F(BaseUnknownTest, QueryAtCountZeroIsUnexpected) {
  HRESULT result = S_OK;
  (new SelfQueryingObject(&result))->Release();
  EXPECT_EQ(result, E_UNEXPECTED);
}

TEST_F(BaseUnknownTest, CreatorRunsUnderTheLockAndItsResultIsCounted) {
  ZELSysTSMetaClass* meta = RegisterClass("Printer", ZELSysTSTypeImplementation, 0x300);
  const _GUID iidPrint = MakeGuid(0x301);
  coretest::RecordCreator(meta, "IPrint", iidPrint, &ProbeCreator);
  ZELSysTSBaseUnknown answer(0);
  g_probe.answer = &answer;

  for (unsigned char threadSafe : {1, 0}) {
    g_probe.calls = 0;
    auto* object = new TestObject(meta, threadSafe);
    void* out = nullptr;
    ASSERT_EQ(object->QueryInterface(iidPrint, &out), S_OK);
    EXPECT_EQ(out, static_cast<IUnknown*>(&answer));
    EXPECT_EQ(g_probe.calls, 1);
    EXPECT_EQ(g_probe.object, object);
    EXPECT_EQ(g_probe.flag, threadSafe);
    // Locked once around the creator when the object has a mutex; never locked otherwise.
    EXPECT_EQ(g_probe.lockCountInside, threadSafe ? 1 : 0);
    EXPECT_EQ(LockCount(object), 0);
    // The reference is counted on the object; the created pointer is not AddRef'd.
    EXPECT_EQ(Count(object), 2u);
    EXPECT_EQ(Count(&answer), 1u);
    object->Release();
    object->Release();
  }

  // A creator that makes nothing; an interface that the class does not offer at all.
  g_probe = CreatorProbe{};
  auto* object = new TestObject(meta, 1);
  void* out = &out;
  EXPECT_EQ(object->QueryInterface(iidPrint, &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(g_probe.calls, 1);
  EXPECT_EQ(object->QueryInterface(MakeGuid(0x302), &out), E_NOINTERFACE);
  EXPECT_EQ(g_probe.calls, 1);
  EXPECT_EQ(Count(object), 1u);
  EXPECT_EQ(LockCount(object), 0);
  object->Release();
}

TEST_F(BaseUnknownTest, ExtensionsAnswerForTheirObject) {
  ZELSysTSMetaClass* host = RegisterClass("Host", ZELSysTSTypeImplementation, 0x500);
  ZELSysTSMetaClass* chained =
      RegisterClass("HostChained", ZELSysTSTypeChainedExtension, 0x501, nullptr, "Host");
  ZELSysTSMetaClass* transient =
      RegisterClass("HostTransient", ZELSysTSTypeTransientExtension, 0x502, nullptr, "Host");

  auto* object = new TestObject(host, 1, "host");
  ZELSysTSChainExtension* last = nullptr;
  TestObject* ext = Chain(object, chained, "chained", &last);
  auto* temp = new TestObject(transient, 1, "transient");
  ZELSysTSBaseUnknownAccess::SetLink(temp, object);
  object->AddRef();  // the reference that the transient's own count stands for

  for (ZELSysTSBaseUnknown* extension :
       {static_cast<ZELSysTSBaseUnknown*>(ext), static_cast<ZELSysTSBaseUnknown*>(temp)}) {
    const uint32_t before = Count(object);
    void* out = nullptr;
    EXPECT_EQ(extension->QueryInterface(kIidIUnknown, &out), S_OK);
    EXPECT_EQ(out, static_cast<IUnknown*>(object));
    EXPECT_EQ(Count(object), before + 1);
    EXPECT_EQ(Count(extension), 1u);
    EXPECT_EQ(LockCount(extension), 0);
  }
  EXPECT_EQ(Count(object), 4u);
  object->Release();
  object->Release();

  // Without its object an extension answers nothing, whatever is asked.
  TestObject orphan(chained, 1);
  void* out = &out;
  EXPECT_EQ(orphan.QueryInterface(kIidIUnknown, &out), E_UNEXPECTED);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(LockCount(&orphan), 0);

  Events().clear();
  EXPECT_EQ(temp->Release(), 0u);
  EXPECT_EQ(Count(object), 1u);
  EXPECT_EQ(object->Release(), 0u);
  EXPECT_TRUE(Events() ==
              std::vector<std::string>({"release:transient", "~transient", "release:host",
                                        "release:host", "~chained", "~host"}));
}

TEST_F(BaseUnknownTest, ChainedExtensionCountsOnItsObject) {
  ZELSysTSMetaClass* host = RegisterClass("Host", ZELSysTSTypeImplementation, 0x600);
  ZELSysTSMetaClass* chained =
      RegisterClass("HostChained", ZELSysTSTypeChainedExtension, 0x601, nullptr, "Host");
  auto* object = new TestObject(host, 1, "host");
  ZELSysTSChainExtension* last = nullptr;
  TestObject* ext = Chain(object, chained, "chained", &last);

  EXPECT_EQ(ext->AddRef(), 2u);
  EXPECT_EQ(Count(object), 2u);
  EXPECT_EQ(Count(ext), 1u);
  EXPECT_EQ(ext->Release(), 1u);
  EXPECT_EQ(Count(ext), 1u);
  Events().clear();
  // The extension's last reference is its object's last: both go.
  EXPECT_EQ(ext->Release(), 0u);
  EXPECT_TRUE(Events() ==
              std::vector<std::string>({"release:chained", "release:host", "~chained", "~host"}));
}

TEST_F(BaseUnknownTest, TransientExtensionHoldsOneObjectReferencePerOwnReference) {
  ZELSysTSMetaClass* host = RegisterClass("Host", ZELSysTSTypeImplementation, 0x700);
  ZELSysTSMetaClass* transient =
      RegisterClass("HostTransient", ZELSysTSTypeTransientExtension, 0x701, nullptr, "Host");
  auto* object = new TestObject(host, 1, "host");
  auto* temp = new TestObject(transient, 1, "transient");
  ZELSysTSBaseUnknownAccess::SetLink(temp, object);
  object->AddRef();  // the reference the transient's initial count stands for

  EXPECT_EQ(temp->AddRef(), 2u);
  EXPECT_EQ(Count(object), 3u);
  EXPECT_EQ(temp->Release(), 1u);
  EXPECT_EQ(Count(object), 2u);
  Events().clear();
  EXPECT_EQ(temp->Release(), 0u);
  EXPECT_TRUE(Events() ==
              std::vector<std::string>({"release:transient", "~transient", "release:host"}));
  EXPECT_EQ(Count(object), 1u);
  EXPECT_EQ(object->Release(), 0u);
}

TEST_F(BaseUnknownTest, LastReleaseDestroysTheChainInOrderWithoutReleasingIt) {
  ZELSysTSMetaClass* host = RegisterClass("Host", ZELSysTSTypeImplementation, 0x800);
  ZELSysTSMetaClass* a =
      RegisterClass("ExtA", ZELSysTSTypeChainedExtension, 0x801, nullptr, "Host");
  ZELSysTSMetaClass* b =
      RegisterClass("ExtB", ZELSysTSTypeChainedExtension, 0x802, nullptr, "Host");
  ZELSysTSMetaClass* c =
      RegisterClass("ExtC", ZELSysTSTypeChainedExtension, 0x803, nullptr, "Host");
  auto* object = new TestObject(host, 1, "host");
  ZELSysTSChainExtension* last = nullptr;
  Chain(object, a, "a", &last);
  Chain(object, b, "b", &last);
  Chain(object, c, "c", &last);
  // A node without an extension is passed over.
  auto* empty = new ZELSysTSChainExtension(nullptr);
  ASSERT_EQ(last->SetNext(empty), S_OK);

  Events().clear();
  EXPECT_EQ(object->Release(), 0u);
  EXPECT_TRUE(Events() == std::vector<std::string>({"release:host", "~a", "~b", "~c", "~host"}));
}

}  // namespace
