#include "pools/KeyHash.h"

#include <cstring>

namespace {

constexpr uint64_t kSeed = 0x9E3779B97F4A7C15ull;
constexpr uint64_t kMultiplier = 0xff51afd7ed558ccdull;

// The 64-bit finaliser of MurmurHash3.
uint64_t Mix(uint64_t h) {
  h ^= h >> 33;
  h *= 0xff51afd7ed558ccdull;
  h ^= h >> 33;
  h *= 0xc4ceb9fe1a85ec53ull;
  h ^= h >> 33;
  return h;
}

uint64_t Step(uint64_t h, uint64_t word) {
  h = (h ^ word) * kMultiplier;
  return h ^ (h >> 29);
}

uint64_t Absorb(uint64_t h, const char* text, size_t length) {
  const char* p = text;
  size_t left = length;
  for (; left >= 8; p += 8, left -= 8) {
    uint64_t word;
    std::memcpy(&word, p, 8);
    h = Step(h, word);
  }
  uint64_t tail = 0;
  std::memcpy(&tail, p, left);
  return Step(h, tail ^ (static_cast<uint64_t>(length) << 56) ^ static_cast<uint64_t>(length));
}

uint64_t AbsorbGuid(uint64_t h, const void* guid) {
  uint64_t words[2];
  std::memcpy(words, guid, 16);
  return Step(Step(h, words[0]), words[1]);
}

}  // namespace

uint64_t HashOfText(const char* text, size_t length) {
  return Mix(Absorb(kSeed, text, length));
}

uint64_t HashOfPair(uint64_t first, uint64_t second) {
  return Mix(Step(Step(kSeed, first), second));
}

uint64_t HashOfGuid(const void* guid) {
  return Mix(AbsorbGuid(kSeed, guid));
}

uint64_t HashOfGuids(const void* first, const void* second) {
  return Mix(AbsorbGuid(AbsorbGuid(kSeed, first), second));
}
