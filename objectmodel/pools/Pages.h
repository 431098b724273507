// How the pools' large blocks (arena blocks, index arrays) get their memory pages. These blocks
// are filled once and kept to the end of the process, so a large dictionary touches many new
// pages; taking them one page fault at a time costs more than the rest of its load (a fault is
// several microseconds, far more in a virtual machine).
//
// - Populate asks the kernel for the pages of a range in one call (MADV_POPULATE_WRITE), which
//   costs a fraction of the faults it spares. An owner populates only what it is about to write.
// - A block of kHugePage bytes or more is asked for with kHugePage bytes of slack, and its user
//   starts at the first huge-page boundary inside it, which is advised for huge pages (fewer
//   faults and TLB misses); the slack before it is never touched, so it costs address space only.
// Both are advice: on a kernel without them nothing changes but the speed.
#pragma once

#include <cstddef>

constexpr size_t kHugePage = size_t(2) << 20;

// Makes the whole pages inside [begin, end) present.
void Populate(void* begin, void* end);

// The bytes to allocate for a block whose user needs `bytes`.
size_t HugePageBlockBytes(size_t bytes);
// Where the user of a block (raw, of HugePageBlockBytes(bytes) bytes) starts, at least `header`
// bytes in, with the rest of the block advised for huge pages.
char* HugePageBlockStart(void* raw, size_t bytes, size_t header);
