#include "dictionary/PairIndex.h"

#include <cstdlib>

namespace {

constexpr uint64_t kFnvOffset = 0xcbf29ce484222325ull;
constexpr uint64_t kFnvPrime = 0x100000001b3ull;

uint64_t Mix(uint64_t h) {
  h ^= h >> 33;
  h *= 0xff51afd7ed558ccdull;
  h ^= h >> 33;
  return h;
}

uint64_t HashText(uint64_t h, const char* text) {
  for (const unsigned char* p = reinterpret_cast<const unsigned char*>(text); *p != 0; ++p) {
    h = (h ^ *p) * kFnvPrime;
  }
  return h * kFnvPrime;  // the terminator separates the two names
}

uint64_t HashBytes(uint64_t h, const void* bytes, size_t count) {
  const unsigned char* p = static_cast<const unsigned char*>(bytes);
  for (size_t i = 0; i < count; ++i) h = (h ^ p[i]) * kFnvPrime;
  return h;
}

}  // namespace

uint64_t PairIndex::HashNames(const char* first, const char* second) {
  return Mix(HashText(HashText(kFnvOffset, first), second));
}

uint64_t PairIndex::HashGuids(const void* first, const void* second) {
  return Mix(HashBytes(HashBytes(kFnvOffset, first, 16), second, 16));
}

bool PairIndex::GrowLocked() {
  const size_t capacity = slots_ == nullptr ? 1024 : (mask_ + 1) * 2;
  auto* slots = static_cast<Slot*>(std::calloc(capacity, sizeof(Slot)));
  if (slots == nullptr) return false;
  const size_t mask = capacity - 1;
  if (slots_ != nullptr) {
    for (size_t i = 0; i <= mask_; ++i) {
      if (slots_[i].entry == nullptr) continue;
      size_t j = static_cast<size_t>(slots_[i].hash) & mask;
      while (slots[j].entry != nullptr) j = (j + 1) & mask;
      slots[j] = slots_[i];
    }
    std::free(slots_);
  }
  slots_ = slots;
  mask_ = mask;
  return true;
}

void PairIndex::AddLocked(uint64_t hash, DicoEntry* entry) {
  if (disabled_ || entry == nullptr) return;
  // Keep the load at most 3/4 so that every probe sequence ends at an empty slot.
  if (slots_ == nullptr || (used_ + 1) * 4 > (mask_ + 1) * 3) {
    if (!GrowLocked()) {
      std::free(slots_);
      slots_ = nullptr;
      mask_ = 0;
      used_ = 0;
      disabled_ = true;
      return;
    }
  }
  size_t i = static_cast<size_t>(hash) & mask_;
  while (slots_[i].entry != nullptr) i = (i + 1) & mask_;
  slots_[i] = Slot{hash, entry};
  ++used_;
}
