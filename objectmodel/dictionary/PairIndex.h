// PairIndex: an open-addressing hash index from a 64-bit key hash to a dictionary record, kept
// beside the fixed 4096-bucket chains of a DicoStore table so that finding a pair costs one probe
// sequence instead of a chain walk, however many records the dictionary holds.
//
// The chains stay the store's truth (their order, their first-match rule); the index only
// accelerates. It holds every record linked in its table, at most once per key pair (a table
// links a pair at most once). If the index cannot grow for lack of memory it disables itself for
// good and callers walk the chains again: nothing is lost.
//
// Thread safety: none of its own; it is guarded by the lock of the table it indexes (the
// dictionary lock). Constant-initialised, so it can sit in static storage and is usable from any
// library's static initialisation; its memory lives until the process ends.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

struct DicoEntry;

class PairIndex {
 public:
  // True while the index holds every linked record; false once it has given up.
  bool UsableLocked() const { return !disabled_; }

  // The record added under `hash` for which matches(record) is true, or null.
  template <typename Match>
  DicoEntry* FindLocked(uint64_t hash, Match matches) const {
    if (slots_ == nullptr) return nullptr;
    for (size_t i = static_cast<size_t>(hash) & mask_;; i = (i + 1) & mask_) {
      const Slot& slot = slots_[i];
      if (slot.entry == nullptr) return nullptr;
      if (slot.hash == hash && matches(slot.entry)) return slot.entry;
    }
  }

  // Adds a record under hash. When the index cannot grow it disables itself.
  void AddLocked(uint64_t hash, DicoEntry* entry);

  // 64-bit hashes of the keys (FNV-1a with a final mix): names end with their NUL, so that
  // ("ab","c") and ("a","bc") differ; GUID pairs hash their 32 bytes.
  static uint64_t HashNames(const char* first, const char* second);
  static uint64_t HashGuids(const void* first, const void* second);

 private:
  struct Slot {
    uint64_t hash;
    DicoEntry* entry;
  };
  bool GrowLocked();

  Slot* slots_ = nullptr;
  size_t mask_ = 0;  // capacity - 1; capacity is a power of two
  size_t used_ = 0;
  bool disabled_ = false;
};
