// Objects and helpers shared by the object core's unit tests: an object whose meta object is
// chosen per instance and that logs its Release calls and its destruction, and class
// registration.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "ZELSysTSBaseUnknown.h"
#include "ZELSysTSFindOrCreateMetaObject.h"
#include "core/ZELSysTSBaseUnknownAccess.h"

namespace coretest {

// "release:tag" for a Release call and "~tag" for a destruction, in order. One thread only.
inline std::vector<std::string>& Events() {
  static std::vector<std::string> events;
  return events;
}

class TestObject : public ZELSysTSBaseUnknown {
 public:
  TestObject(ZELSysTSMetaClass* meta, unsigned char threadSafe, std::string tag = {})
      : ZELSysTSBaseUnknown(threadSafe), meta_(meta), tag_(std::move(tag)) {}
  ~TestObject() override {
    if (at_death) at_death();
    if (!tag_.empty()) Events().push_back("~" + tag_);
  }
  ZELSysTSMetaClass* GetMetaObject() const override { return meta_; }
  uint32_t Release() override {
    if (!tag_.empty()) Events().push_back("release:" + tag_);
    return ZELSysTSBaseUnknown::Release();
  }

  // Runs first in the destructor, before the base object releases its locks.
  std::function<void()> at_death;

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

// A class derived from ZELSysTSBaseUnknown, or from base when one is given.
inline ZELSysTSMetaClass* RegisterClass(const char* name, ZELSysTSTypeOfClass type, uint32_t id,
                                        ZELSysTSMetaClass* base = nullptr,
                                        const char* extended = nullptr) {
  const _GUID clsid = MakeGuid(id);
  return ZELSysTSFindOrCreateMetaObject(
      name, type, &clsid, base != nullptr ? base : ZELSysTSBaseUnknown::MetaObject(), extended);
}

}  // namespace coretest
