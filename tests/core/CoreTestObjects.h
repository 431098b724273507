// Objects and helpers shared by the object core's unit tests: a configurable object class whose
// meta object is chosen per instance, a log of destructions, class registration, and a
// creation function recorded in the dictionary without any library behind it.
#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "ZELSysTSBaseUnknown.h"
#include "ZELSysTSFindOrCreateMetaObject.h"
#include "core/ZELSysTSBaseUnknownAccess.h"
#include "dictionary/DicoStore.h"

namespace coretest {

// What happened to the test objects, in order ("~tag" for a destruction, "release:tag" for a
// Release call on an object with a tag). Single-threaded tests only.
inline std::vector<std::string>& Events() {
  static std::vector<std::string> events;
  return events;
}

// An object of the class whose meta object it is given; null gives an object without one.
class TestObject : public ZELSysTSBaseUnknown {
 public:
  TestObject(ZELSysTSMetaClass* meta, unsigned char threadSafe, std::string tag = {})
      : ZELSysTSBaseUnknown(threadSafe), meta_(meta), tag_(std::move(tag)) {}
  ~TestObject() override {
    if (!tag_.empty()) Events().push_back("~" + tag_);
  }
  ZELSysTSMetaClass* GetMetaObject() const override { return meta_; }
  uint32_t Release() override {
    if (!tag_.empty()) Events().push_back("release:" + tag_);
    return ZELSysTSBaseUnknown::Release();
  }

 private:
  ZELSysTSMetaClass* meta_;
  std::string tag_;
};

inline _GUID MakeGuid(uint32_t first) {
  return _GUID{first, 0xC0DE, 0x7E57, {0x8A, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77}};
}

inline uint32_t Count(const ZELSysTSBaseUnknown* o) {
  return ZELSysTSBaseUnknownAccess::Count(o);
}
inline int32_t LockCount(const ZELSysTSBaseUnknown* o) {
  return ZELSysTSBaseUnknownAccess::LockCount(o);
}

// Registers a class derived from ZELSysTSBaseUnknown (unless another base is given).
inline ZELSysTSMetaClass* RegisterClass(const char* name, ZELSysTSTypeOfClass type, uint32_t id,
                                        ZELSysTSMetaClass* base = nullptr,
                                        const char* extended = nullptr) {
  const _GUID clsid = MakeGuid(id);
  if (base == nullptr) base = ZELSysTSBaseUnknown::MetaObject();
  return ZELSysTSFindOrCreateMetaObject(name, type, &clsid, base, extended);
}

// Records creator as the creation function of (class, interface) as the interface resolution
// would after finding it in a library, so that QueryInterface finds it without loading one.
inline void RecordCreator(ZELSysTSMetaClass* classMeta, const char* interfaceName, const _GUID& iid,
                          ZELSysTSInterfaceCreator creator) {
  DicoEntry* entry = DicoStore::InsertByNames(classMeta->GetClassName(), interfaceName, "AnyLib",
                                              nullptr, nullptr, nullptr, nullptr);
  DicoStore::InsertByGuids(classMeta->GetClassId(), &iid, reinterpret_cast<void*>(creator), entry);
}

// An empty dictionary folder, so that resolution reads the (empty) files quietly.
class QuietDictionary {
 public:
  QuietDictionary()
      : env_("ZELDictionaryPath", dir_.path().c_str()),
        nofallback_("ZELDictionaryNoPathNoFallback", nullptr) {}

 private:
  zeltest::TempDir dir_;
  zeltest::ScopedEnv env_;
  zeltest::ScopedEnv nofallback_;
};

}  // namespace coretest
