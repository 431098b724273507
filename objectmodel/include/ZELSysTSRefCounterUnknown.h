// ZELSysTSRefCounterUnknown: the smallest shared-ownership object, with an atomic count and no
// mutex, meta object or QueryInterface. Derive from it and call AddRef/Release from any thread;
// exactly one Release, the one that takes the count from 1 to 0, deletes the object through the
// virtual destructor.
#pragma once

#include <atomic>
#include <cstdint>

#include "ZELSysTSExport.h"

class ZELSYSTS_EXPORT ZELSysTSRefCounterUnknown {
 public:
  // Count 1: the reference of the creator.
  ZELSysTSRefCounterUnknown();
  // Returns the new count.
  uint32_t AddRef();
  // Returns the new count; deletes the object when it reaches 0.
  uint32_t Release();
  virtual ~ZELSysTSRefCounterUnknown();

  ZELSysTSRefCounterUnknown(const ZELSysTSRefCounterUnknown&) = delete;
  ZELSysTSRefCounterUnknown& operator=(const ZELSysTSRefCounterUnknown&) = delete;

 private:
  std::atomic<uint32_t> count;
};
