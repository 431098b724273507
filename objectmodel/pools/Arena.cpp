#include "pools/Arena.h"

#include "pools/Pages.h"

bool Arena::NewBlock(size_t least) {
  const size_t header = 16;  // the link, padded so that items may be 16-byte aligned
  size_t bytes = block_bytes_;
  while (bytes < least + header) bytes *= 2;
  // Only the largest blocks go on huge pages: a huge page is resident as a whole, and an arena
  // that never fills one such block would keep most of its last huge page unused.
  const bool huge = bytes >= kLargestBlock;
  const size_t allocated = huge ? HugePageBlockBytes(bytes) : bytes;
  void* block = allocate_(allocated);
  if (block == nullptr) return false;
  *static_cast<void**>(block) = last_block_;
  last_block_ = block;
  next_ = huge ? HugePageBlockStart(block, bytes, header) : static_cast<char*>(block) + header;
  end_ = static_cast<char*>(block) + allocated;
  populated_ = next_;
  if (block_bytes_ < kLargestBlock) block_bytes_ *= 2;
  return true;
}

void Arena::PopulateAhead() {
  char* const until =
      static_cast<size_t>(end_ - next_) > kPopulateStep ? next_ + kPopulateStep : end_;
  Populate(populated_, until);
  populated_ = until;
}
