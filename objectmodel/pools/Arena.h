// Arena: bump allocation for items that live until the process ends (pooled texts and GUIDs,
// dictionary records, identifier table entries). Items are cut one after another from large
// blocks; nothing is ever freed, so an item costs its own bytes and no allocator header.
//
// Blocks grow from 8 KiB to 8 MiB, so that a small process keeps little and a large dictionary
// asks the allocator rarely. The pages of a block are made present a step ahead of the items
// (pools/Pages.h), and the largest blocks go on huge pages. An
// item larger than a block's room opens a new block (a block is at least as large as the item); the
// rest of the old block stays unused for good. Each block begins with a link to the one before, so
// every block stays reachable from the arena.
//
// Not thread-safe: the owner's lock guards an arena (the owner says which where it declares it).
// Constant-initialized, so an arena in static storage can serve any static initialiser.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

class Arena {
 public:
  // Room for `size` bytes aligned to `align` (a power of two, at most 16), or null when a new
  // block was needed and could not be obtained (the arena is unchanged then; a later call may
  // succeed).
  void* Allocate(size_t size, size_t align) {
    uintptr_t at = (reinterpret_cast<uintptr_t>(next_) + (align - 1)) & ~uintptr_t(align - 1);
    if (next_ == nullptr || at + size > reinterpret_cast<uintptr_t>(end_)) {
      if (!NewBlock(size + align)) return nullptr;
      at = (reinterpret_cast<uintptr_t>(next_) + (align - 1)) & ~uintptr_t(align - 1);
    }
    next_ = reinterpret_cast<char*>(at + size);
    if (next_ > populated_) PopulateAhead();
    return reinterpret_cast<void*>(at);
  }

  // Gives back the most recent allocation (item, of `size` bytes), so that an insert that fails
  // after obtaining its item leaves no hole. Any other item is left where it is.
  void Unallocate(void* item, size_t size) {
    if (static_cast<char*>(item) + size == next_) next_ = static_cast<char*>(item);
  }

  // The allocation function for blocks (std::malloc unless a test replaces it; null restores it).
  void SetAllocator(void* (*allocate)(size_t)) {
    allocate_ = allocate != nullptr ? allocate : &std::malloc;
  }

 private:
  static constexpr size_t kFirstBlock = 8 * 1024;
  static constexpr size_t kLargestBlock = 8 * 1024 * 1024;

  static constexpr size_t kPopulateStep = 64 * 1024;

  bool NewBlock(size_t least);
  // Makes the pages up to a step past next_ present (no further than the block's end).
  void PopulateAhead();

  char* next_ = nullptr;
  char* end_ = nullptr;
  char* populated_ = nullptr;   // the pages of the current block before it are present
  void* last_block_ = nullptr;  // its first word links to the block before
  size_t block_bytes_ = kFirstBlock;
  void* (*allocate_)(size_t) = &std::malloc;
};
