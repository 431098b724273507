#include "pools/Pages.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

#ifndef MADV_POPULATE_WRITE
#define MADV_POPULATE_WRITE 23  // Linux 5.14; older kernels refuse it, and nothing changes
#endif

void Populate(void* begin, void* end) {
  static const uintptr_t page = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
  const uintptr_t first = (reinterpret_cast<uintptr_t>(begin) + page - 1) & ~(page - 1);
  const uintptr_t last = reinterpret_cast<uintptr_t>(end) & ~(page - 1);
  if (last > first) madvise(reinterpret_cast<void*>(first), last - first, MADV_POPULATE_WRITE);
}

size_t HugePageBlockBytes(size_t bytes) {
  return bytes >= kHugePage ? bytes + kHugePage : bytes;
}

char* HugePageBlockStart(void* raw, size_t bytes, size_t header) {
  char* const first = static_cast<char*>(raw) + header;
  if (bytes < kHugePage) return first;
  const uintptr_t start =
      (reinterpret_cast<uintptr_t>(first) + kHugePage - 1) & ~uintptr_t(kHugePage - 1);
  const uintptr_t end =
      (reinterpret_cast<uintptr_t>(raw) + HugePageBlockBytes(bytes)) & ~uintptr_t(kHugePage - 1);
  if (end > start) madvise(reinterpret_cast<void*>(start), end - start, MADV_HUGEPAGE);
  return reinterpret_cast<char*>(start);
}
