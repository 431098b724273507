// HashIndex<T>: an open-addressing hash index from a 64-bit key hash to a T*, kept beside the
// fixed-size chains of a process-wide table (ChainedTable, the string pool) so that finding a
// key costs one short probe sequence instead of a chain walk, however many items the table
// holds. The number of buckets of those tables is fixed, and their chains grow long in a large
// dictionary.
//
// The chains stay the table's truth (their order, their first-match rule); the index only
// accelerates, and holds at most one item per key (the tables link a key at most once). When
// it cannot grow for lack of memory it gives up for good (Usable() turns false) and its owner
// walks the chains again: nothing is lost.
//
// Thread safety: none of its own; the lock of the table that owns it guards it. It is
// constant-initialized, so it can sit in static storage and be used during any library's static
// initialisation; its memory lives until the process ends.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

template <typename T>
class HashIndex {
 public:
  // True while the index holds every item added to its table; false once it has given up.
  bool Usable() const { return !abandoned_; }

  // The item added under `hash` for which matches(item) is true, or null.
  template <typename Match>
  T* Find(uint64_t hash, Match matches) const {
    if (slots_ == nullptr) return nullptr;
    for (size_t i = static_cast<size_t>(hash) & mask_;; i = (i + 1) & mask_) {
      const Slot& slot = slots_[i];
      if (slot.item == nullptr) return nullptr;
      if (slot.hash == hash && matches(slot.item)) return slot.item;
    }
  }

  // The allocation function for the slot arrays (std::malloc unless a test replaces it).
  void SetAllocator(void* (*allocate)(size_t)) {
    allocate_ = allocate != nullptr ? allocate : &std::malloc;
  }

  // Adds an item under hash. When the index cannot grow it gives up (see Usable()).
  void Add(uint64_t hash, T* item) {
    if (abandoned_ || item == nullptr) return;
    // The load stays at most 1/2: probe sequences stay short and always end at an empty slot.
    if (slots_ == nullptr || (used_ + 1) * 2 > mask_ + 1) {
      if (!Grow()) {
        std::free(slots_);
        slots_ = nullptr;
        mask_ = 0;
        used_ = 0;
        abandoned_ = true;
        return;
      }
    }
    size_t i = static_cast<size_t>(hash) & mask_;
    while (slots_[i].item != nullptr) i = (i + 1) & mask_;
    slots_[i] = Slot{hash, item};
    ++used_;
  }

 private:
  struct Slot {
    uint64_t hash;
    T* item;
  };

  bool Grow() {
    const size_t capacity = slots_ == nullptr ? 1024 : (mask_ + 1) * 2;
    auto* slots = static_cast<Slot*>(allocate_(capacity * sizeof(Slot)));
    if (slots == nullptr) return false;
    std::memset(slots, 0, capacity * sizeof(Slot));
    const size_t mask = capacity - 1;
    if (slots_ != nullptr) {
      for (size_t i = 0; i <= mask_; ++i) {
        if (slots_[i].item == nullptr) continue;
        size_t j = static_cast<size_t>(slots_[i].hash) & mask;
        while (slots[j].item != nullptr) j = (j + 1) & mask;
        slots[j] = slots_[i];
      }
      std::free(slots_);
    }
    slots_ = slots;
    mask_ = mask;
    return true;
  }

  Slot* slots_ = nullptr;
  size_t mask_ = 0;  // capacity - 1; the capacity is a power of two
  size_t used_ = 0;
  bool abandoned_ = false;
  void* (*allocate_)(size_t) = &std::malloc;
};

// 64-bit key hashes for the indexes (FNV-1a with a final mix). Two names are hashed with their
// terminators, so that ("ab","c") and ("a","bc") differ.
uint64_t HashOfNames(const char* first, const char* second);
uint64_t HashOfBytes(const void* first, size_t firstSize, const void* second, size_t secondSize);
