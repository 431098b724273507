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
// Thread safety: Add runs under the lock of the table that owns it; Find under that lock too, or
// (IndexReaders::kLockFree) without a lock, concurrently with Add. It is constant-initialized, so
// it can sit in static storage and be used during any library's static initialisation; its memory
// lives until the process ends.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

// Who reads an index: only holders of its owner's lock (kLocked), or also threads that hold no
// lock while another thread adds (kLockFree: the identifier tables, read without a lock once
// loaded, can be loaded late while a reader looks). A lock-free index never frees a slot array
// a reader may still be reading: an outgrown array is retired, kept until the process ends.
enum class IndexReaders { kLocked, kLockFree };

template <typename T, IndexReaders kReaders = IndexReaders::kLocked>
class HashIndex {
 public:
  // True while the index holds every item added to its table; false once it has given up.
  bool Usable() const { return !abandoned_.load(std::memory_order_acquire); }

  // The item added under `hash` for which matches(item) is true, or null.
  template <typename Match>
  T* Find(uint64_t hash, Match matches) const {
    const Array* array = array_.load(std::memory_order_acquire);
    if (array == nullptr) return nullptr;
    const Slot* slots = array->Slots();
    for (size_t i = static_cast<size_t>(hash) & array->mask;; i = (i + 1) & array->mask) {
      T* item = slots[i].item.load(std::memory_order_acquire);
      if (item == nullptr) return nullptr;
      if (slots[i].hash.load(std::memory_order_relaxed) == hash && matches(item)) return item;
    }
  }

  // The allocation function for the slot arrays (std::malloc unless a test replaces it).
  void SetAllocator(void* (*allocate)(size_t)) {
    allocate_ = allocate != nullptr ? allocate : &std::malloc;
  }

  // Adds an item under hash. When the index cannot grow it gives up (see Usable()).
  void Add(uint64_t hash, T* item) {
    if (abandoned_.load(std::memory_order_relaxed) || item == nullptr) return;
    Array* array = array_.load(std::memory_order_relaxed);
    // The load stays at most 1/2: probe sequences stay short and always end at an empty slot.
    if (array == nullptr || (used_ + 1) * 2 > array->mask + 1) {
      array = Grow(array);
      if (array == nullptr) {
        abandoned_.store(true, std::memory_order_release);
        Retire(array_.exchange(nullptr, std::memory_order_acq_rel));
        used_ = 0;
        return;
      }
    }
    Put(array, hash, item);
    ++used_;
  }

 private:
  struct Slot {
    std::atomic<uint64_t> hash{0};
    std::atomic<T*> item{nullptr};  // written after hash, with release: a reader sees both
  };
  // A slot array: its mask (capacity - 1, the capacity a power of two), then the slots.
  struct Array {
    size_t mask;
    Array* retired;  // the array outgrown before this one (lock-free readers only)
    Slot* Slots() { return reinterpret_cast<Slot*>(this + 1); }
    const Slot* Slots() const { return reinterpret_cast<const Slot*>(this + 1); }
  };

  static void Put(Array* array, uint64_t hash, T* item) {
    Slot* slots = array->Slots();
    size_t i = static_cast<size_t>(hash) & array->mask;
    while (slots[i].item.load(std::memory_order_relaxed) != nullptr) i = (i + 1) & array->mask;
    slots[i].hash.store(hash, std::memory_order_relaxed);
    slots[i].item.store(item, std::memory_order_release);
  }

  // A new array of twice the capacity holding every item of old, published for readers; old is
  // retired. Null when memory runs out (nothing changed then).
  Array* Grow(Array* old) {
    const size_t capacity = old == nullptr ? 1024 : (old->mask + 1) * 2;
    void* memory = allocate_(sizeof(Array) + capacity * sizeof(Slot));
    if (memory == nullptr) return nullptr;
    auto* array = new (memory) Array{capacity - 1, nullptr};
    for (size_t i = 0; i < capacity; ++i) new (&array->Slots()[i]) Slot();
    if (old != nullptr) {
      for (size_t i = 0; i <= old->mask; ++i) {
        const Slot& slot = old->Slots()[i];
        T* item = slot.item.load(std::memory_order_relaxed);
        if (item != nullptr) Put(array, slot.hash.load(std::memory_order_relaxed), item);
      }
    }
    array_.store(array, std::memory_order_release);
    Retire(old);
    return array;
  }

  void Retire(Array* array) {
    if (array == nullptr) return;
    if (kReaders == IndexReaders::kLocked) {
      std::free(array);
    } else {
      array->retired = retired_;
      retired_ = array;
    }
  }

  std::atomic<Array*> array_{nullptr};
  std::atomic<bool> abandoned_{false};
  size_t used_ = 0;
  Array* retired_ = nullptr;  // lock-free readers only: outgrown arrays, never freed
  void* (*allocate_)(size_t) = &std::malloc;
};

// 64-bit key hashes for the indexes (FNV-1a with a final mix). Two names are hashed with their
// terminators, so that ("ab","c") and ("a","bc") differ.
uint64_t HashOfNames(const char* first, const char* second);
uint64_t HashOfBytes(const void* first, size_t firstSize, const void* second, size_t secondSize);
