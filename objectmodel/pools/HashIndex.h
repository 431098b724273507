// HashIndex<T>: the one index of a process-wide table (the pools, the dictionary store, the
// identifier tables): open addressing over a power-of-two array, linear probing, grown by
// doubling before it is seven eighths full.
//
// Each slot, twelve bytes, holds 32 bits of the item's key hash and the item's address: a probe
// compares a key only where the hash bits agree, and finds the address in the same cache line;
// growing moves every item by its stored bits, without reading an item. A stored hash is never
// 0, which marks an empty slot. Items are never removed; a key is held at most once (an
// owner adds an item only where Locate found none for its key).
//
// Finding a key and finding where it goes are one probe (Locate): an owner that finds nothing
// adds its new item at the place the probe ended, without a second search. For an absent key
// Locate makes room first (growing, and then probing the new array), so that Add never needs
// memory; when the array cannot grow, Locate finds what is there but gives no place for a new
// key, and the owner's insert fails for lack of memory, changing nothing.
//
// Thread safety: Locate and Add run under the lock of the table that owns the index (the owner
// says which where it declares it); Find under that lock too, or (IndexReaders::kLockFree)
// without a lock and concurrently with Add: an item's address is written before its hash, which
// is published with a release store, and so is a new array; an outgrown array is freed only
// when no lock-free reader can still be probing it, else kept for good (see Retire).
// Constant-initialized, so an index in static storage can serve any static initialiser.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "pools/Pages.h"

// Who reads an index: only holders of its owner's lock (kLocked), or also threads that hold no
// lock while another thread adds (kLockFree: the identifier tables, read without a lock once
// loaded, can be loaded late while a reader looks).
enum class IndexReaders { kLocked, kLockFree };

template <typename T, IndexReaders kReaders = IndexReaders::kLocked>
class HashIndex {
 public:
  // Where a key stands: the item that holds it, or (item null) the slot where a new item for it
  // goes, when there is room (`slot` is kNoRoom when the array could not grow).
  struct Place {
    T* item;
    size_t slot;
    uint32_t stored;  // the hash bits kept in the slot
  };
  static constexpr size_t kNoRoom = ~size_t(0);

  // The item added under `hash` for which matches(item) holds, or null.
  template <typename Match>
  T* Find(uint64_t hash, Match matches) const {
    if (kReaders == IndexReaders::kLocked)
      return FindIn(array_.load(std::memory_order_acquire), hash, matches);
    // A lock-free reader counts itself in before it loads the array and out when it is done
    // with it; see Retire.
    readers_.fetch_add(1, std::memory_order_seq_cst);
    T* item = FindIn(array_.load(std::memory_order_seq_cst), hash, matches);
    readers_.fetch_sub(1, std::memory_order_release);
    return item;
  }

  // Starts loading the slot where a probe for `hash` begins, so that the probe that follows (a
  // Find or Locate, perhaps after other work) finds it in the cache. A hint that reads only
  // atomics and never dereferences the array, so any thread may give it without the owner's
  // lock, even while the array is being replaced.
  void Prefetch(uint64_t hash) const {
    const uintptr_t array = reinterpret_cast<uintptr_t>(array_.load(std::memory_order_relaxed));
    if (array == 0) return;
    const size_t slot = Stored(hash) & mask_.load(std::memory_order_relaxed);
    __builtin_prefetch(reinterpret_cast<const void*>(array + sizeof(Array) + slot * sizeof(Slot)));
  }

  // As Find, and when the key is absent, the place for it after making room for one more item.
  template <typename Match>
  Place Locate(uint64_t hash, Match matches) {
    const uint32_t stored = Stored(hash);
    Array* array = array_.load(std::memory_order_relaxed);
    if (array != nullptr) {
      const Place place = Probe(array, stored, matches);
      if (place.item != nullptr || (used_ + 1) * 8 <= (array->mask + 1) * 7) return place;
    }
    // Absent, and one more item would fill the array past seven eighths: grow, then find the
    // place again in the new array.
    Array* grown = Grow(array);
    if (grown == nullptr) return Place{nullptr, kNoRoom, stored};
    return Probe(grown, stored, matches);
  }

  // True when Add may use the place (Locate found no item and had room).
  static bool HasRoom(const Place& place) { return place.slot != kNoRoom; }

  // Adds item at place, which Locate gave for item's key with nothing added in between, and
  // which has room.
  void Add(const Place& place, T* item) {
    Put(array_.load(std::memory_order_relaxed)->Slots()[place.slot], place.stored, item);
    ++used_;
  }

  // The allocation function for the slot arrays (std::malloc unless a test replaces it; null
  // restores it).
  void SetAllocator(void* (*allocate)(size_t)) {
    allocate_ = allocate != nullptr ? allocate : &std::malloc;
  }

 private:
  static constexpr size_t kFirstCapacity = 64;

  // A slot: the stored hash bits (0: empty), then the item's address in two halves, so that a
  // slot takes twelve bytes and every part is a lock-free atomic.
  struct Slot {
    std::atomic<uint32_t> hash;
    std::atomic<uint32_t> low;
    std::atomic<uint32_t> high;
  };
  static_assert(sizeof(Slot) == 12, "a slot is twelve bytes");

  // A slot array in one allocation (`raw`, where the array may start further in, see
  // pools/HugePages.h): its mask (capacity - 1), the array it outgrew (kLockFree only), then the
  // slots.
  struct Array {
    size_t mask;
    Array* retired;
    void* raw;
    Slot* Slots() { return reinterpret_cast<Slot*>(this + 1); }
    const Slot* Slots() const { return reinterpret_cast<const Slot*>(this + 1); }
  };

  // The bits kept: the low 32 bits of the hash (which also choose the slot), never 0.
  static uint32_t Stored(uint64_t hash) {
    const auto low = static_cast<uint32_t>(hash);
    return low != 0 ? low : 1;
  }

  static T* ItemOf(const Slot& slot) {
    const uint64_t address = uint64_t(slot.high.load(std::memory_order_relaxed)) << 32 |
                             slot.low.load(std::memory_order_relaxed);
    return reinterpret_cast<T*>(static_cast<uintptr_t>(address));
  }

  // The address first, then the hash with release: a reader that sees the hash sees the item.
  static void Put(Slot& slot, uint32_t stored, T* item) {
    const auto address = static_cast<uint64_t>(reinterpret_cast<uintptr_t>(item));
    slot.low.store(static_cast<uint32_t>(address), std::memory_order_relaxed);
    slot.high.store(static_cast<uint32_t>(address >> 32), std::memory_order_relaxed);
    slot.hash.store(stored, std::memory_order_release);
  }

  template <typename Match>
  static T* FindIn(const Array* array, uint64_t hash, Match& matches) {
    return array != nullptr ? Probe(array, Stored(hash), matches).item : nullptr;
  }

  template <typename Match>
  static Place Probe(const Array* array, uint32_t stored, Match& matches) {
    const Slot* slots = array->Slots();
    for (size_t i = stored & array->mask;; i = (i + 1) & array->mask) {
      const uint32_t h = slots[i].hash.load(std::memory_order_acquire);
      if (h == 0) return Place{nullptr, i, stored};
      if (h == stored) {
        T* item = ItemOf(slots[i]);
        if (matches(item)) return Place{item, i, stored};
      }
    }
  }

  // A new array of twice the capacity (kFirstCapacity at first) holding every item of old,
  // published for readers; old is freed or retired. Null when memory runs out (nothing changed).
  Array* Grow(Array* old) {
    const size_t capacity = old == nullptr ? kFirstCapacity : (old->mask + 1) * 2;
    if (capacity - 1 > UINT32_MAX) return nullptr;  // the stored bits choose the slot
    const size_t bytes = sizeof(Array) + capacity * sizeof(Slot);
    void* raw = allocate_(HugePageBlockBytes(bytes));
    if (raw == nullptr) return nullptr;
    char* start = HugePageBlockStart(raw, bytes, 0);
    Populate(start, start + bytes);  // every slot is written below
    auto* array = new (start) Array{capacity - 1, nullptr, raw};
    Slot* slots = array->Slots();
    for (size_t i = 0; i < capacity; ++i) new (&slots[i]) Slot{{0}, {0}, {0}};
    if (old != nullptr) {
      for (size_t i = 0; i <= old->mask; ++i) {
        const uint32_t h = old->Slots()[i].hash.load(std::memory_order_relaxed);
        if (h == 0) continue;
        size_t j = h & array->mask;
        while (slots[j].hash.load(std::memory_order_relaxed) != 0) j = (j + 1) & array->mask;
        Put(slots[j], h, ItemOf(old->Slots()[i]));
      }
    }
    array_.store(array, std::memory_order_seq_cst);
    mask_.store(capacity - 1, std::memory_order_relaxed);
    Retire(old);
    return array;
  }

  // Frees an outgrown array, or keeps it for good when a lock-free reader may still be in it.
  // Called after the new array is published: a reader counted in after this test loads the new
  // array (its count and its load, and the publication and this test, are sequentially
  // consistent), so when none is counted in, none can reach the old one any more.
  void Retire(Array* array) {
    if (array == nullptr) return;
    if (kReaders == IndexReaders::kLocked || readers_.load(std::memory_order_seq_cst) == 0) {
      std::free(array->raw);
    } else {
      array->retired = retired_;
      retired_ = array;
    }
  }

  std::atomic<Array*> array_{nullptr};
  std::atomic<size_t> mask_{0};  // the array's mask again, for Prefetch, which never reads it
  size_t used_ = 0;
  mutable std::atomic<int> readers_{0};  // kLockFree only: lock-free readers in Find now
  Array* retired_ = nullptr;             // kLockFree only: arrays kept for such readers
  void* (*allocate_)(size_t) = &std::malloc;
};
