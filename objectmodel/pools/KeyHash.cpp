#include "pools/KeyHash.h"

#include <cstring>

namespace {

constexpr uint64_t kP0 = 0xa0761d6478bd642full;
constexpr uint64_t kP1 = 0xe7037ed1a0b428dbull;
constexpr uint64_t kP2 = 0x8ebc6af09c88c6e3ull;

// The 128-bit product of a and b, its halves folded: every bit of either reaches the middle
// bits of the result.
uint64_t Mum(uint64_t a, uint64_t b) {
  const unsigned __int128 r = static_cast<unsigned __int128>(a) * b;
  return static_cast<uint64_t>(r) ^ static_cast<uint64_t>(r >> 64);
}

uint64_t Read8(const char* p) {
  uint64_t v;
  std::memcpy(&v, p, 8);
  return v;
}

uint64_t Read4(const char* p) {
  uint32_t v;
  std::memcpy(&v, p, 4);
  return v;
}

// Sixteen bytes at a time; the last 0 to 16 bytes are read as two words that may overlap (so
// every byte is read once or twice, never past the end).
uint64_t Absorb(uint64_t seed, const char* p, size_t length) {
  uint64_t a = 0, b = 0;
  size_t left = length;
  for (; left > 16; p += 16, left -= 16) seed = Mum(Read8(p) ^ kP1, Read8(p + 8) ^ seed);
  if (left > 8) {
    a = Read8(p);
    b = Read8(p + left - 8);
  } else if (left >= 4) {
    a = Read4(p) << 32 | Read4(p + left - 4);
  } else if (left > 0) {
    a = uint64_t(uint8_t(p[0])) << 16 | uint64_t(uint8_t(p[left >> 1])) << 8 | uint8_t(p[left - 1]);
  }
  return Mum(kP1 ^ length, Mum(a ^ kP1, b ^ seed));
}

}  // namespace

uint64_t HashOfText(const char* text, size_t length) {
  return Absorb(kP0, text, length);
}

uint64_t HashOfPair(uint64_t first, uint64_t second) {
  return Mum(first ^ kP0, Mum(second ^ kP1, kP2));
}

uint64_t HashOfGuid(const void* guid) {
  return Absorb(kP2, static_cast<const char*>(guid), 16);
}

uint64_t HashOfGuids(const void* first, const void* second) {
  return HashOfPair(HashOfGuid(first), HashOfGuid(second));
}
