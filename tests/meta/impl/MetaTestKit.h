// What the meta integration tests share with their implementation libraries: the identifiers,
// the object class that the tests query, and the shape of an exported creation function.
#pragma once

#include "ZELSysTSObjectModeler.h"

namespace zelmeta {

inline constexpr _GUID kClsidFoo = {0x5EA10001, 0x1111, 0x4000, {0x80, 0, 0, 0, 0, 0, 0, 1}};
inline constexpr _GUID kClsidFooExt = {0x5EA10002, 0x1111, 0x4000, {0x80, 0, 0, 0, 0, 0, 0, 2}};
inline constexpr _GUID kClsidInitThread = {0x5EA10003, 0x1111, 0x4000, {0x80, 0, 0, 0, 0, 0, 0, 3}};

// An object whose class is the meta object it is built with. The creation functions of the test
// libraries note their own name in created_by (they run under the object's mutex).
class MtObject : public ZELSysTSBaseUnknown {
 public:
  explicit MtObject(ZELSysTSMetaClass* meta) : ZELSysTSBaseUnknown(1), meta_(meta) {}
  ZELSysTSMetaClass* GetMetaObject() const override { return meta_; }
  const char* created_by = nullptr;

 private:
  ZELSysTSMetaClass* meta_;
};

}  // namespace zelmeta

// An exported creation function that notes its name in the queried MtObject and answers with
// the object itself (QueryInterface counts the reference on it).
#define ZELMETA_CREATOR(fn)                                             \
  extern "C" IUnknown* fn(ZELSysTSBaseUnknown* object, unsigned char) { \
    static_cast<zelmeta::MtObject*>(object)->created_by = #fn;          \
    return object;                                                      \
  }
