#include "ZELSysTSRefCounterUnknown.h"

ZELSysTSRefCounterUnknown::ZELSysTSRefCounterUnknown() : count(1) {}

ZELSysTSRefCounterUnknown::~ZELSysTSRefCounterUnknown() = default;

uint32_t ZELSysTSRefCounterUnknown::AddRef() {
  return count.fetch_add(1, std::memory_order_seq_cst) + 1;
}

uint32_t ZELSysTSRefCounterUnknown::Release() {
  const uint32_t previous = count.fetch_add(static_cast<uint32_t>(-1), std::memory_order_seq_cst);
  // Only the Release that fetched 1 deletes; the object is not touched afterwards.
  if (previous == 1) delete this;
  return previous - 1;
}
