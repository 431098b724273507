#include "pools/HashIndex.h"

namespace {

constexpr uint64_t kFnvOffset = 0xcbf29ce484222325ull;
constexpr uint64_t kFnvPrime = 0x100000001b3ull;

// The 64-bit finaliser of MurmurHash3: every input bit reaches the low bits the index uses.
uint64_t Mix(uint64_t h) {
  h ^= h >> 33;
  h *= 0xff51afd7ed558ccdull;
  h ^= h >> 33;
  h *= 0xc4ceb9fe1a85ec53ull;
  h ^= h >> 33;
  return h;
}

uint64_t HashText(uint64_t h, const char* text) {
  for (const unsigned char* p = reinterpret_cast<const unsigned char*>(text); *p != 0; ++p) {
    h = (h ^ *p) * kFnvPrime;
  }
  return h * kFnvPrime;  // the terminator
}

uint64_t HashRaw(uint64_t h, const void* bytes, size_t count) {
  const unsigned char* p = static_cast<const unsigned char*>(bytes);
  for (size_t i = 0; i < count; ++i) h = (h ^ p[i]) * kFnvPrime;
  return h;
}

}  // namespace

uint64_t HashOfNames(const char* first, const char* second) {
  return Mix(HashText(HashText(kFnvOffset, first), second));
}

uint64_t HashOfBytes(const void* first, size_t firstSize, const void* second, size_t secondSize) {
  return Mix(HashRaw(HashRaw(kFnvOffset, first, firstSize), second, secondSize));
}
