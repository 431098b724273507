#include "pools/StringPool.h"

#include <cstring>

#include "pools/Arena.h"
#include "pools/HashIndex.h"
#include "pools/KeyHash.h"
#include "util/OnceFlag.h"
#include "util/ScopedLock.h"

namespace {

// Process-wide state in static storage, constant-initialized: it exists, empty, before any
// static initialiser of any library runs, and no load-time initialiser resets it.
struct StringPoolState {
  HashIndex<const char> index;  // every pooled text, by its hash
  Arena texts;                  // the pooled texts, each with its terminator
};

StringPoolState g_pool GUARDED_BY(SharedLocks::StringPoolLock());
OnceFlag g_initialized;

const char* InternLockedWithLength(const char* text, size_t n, uint64_t hash)
    EXCLUSIVE_LOCKS_REQUIRED(SharedLocks::StringPoolLock()) {
  if (n >= static_cast<size_t>(StringPool::kChunkBytes)) return nullptr;
  HashIndex<const char>::Place place = g_pool.index.Locate(
      hash, [text](const char* pooled) { return std::strcmp(pooled, text) == 0; });
  if (place.item != nullptr) return place.item;
  if (!HashIndex<const char>::HasRoom(place)) return nullptr;
  // Obtain everything before changing anything: a failure leaves the pool as it was.
  char* pooled = static_cast<char*>(g_pool.texts.Allocate(n + 1, 1));
  if (pooled == nullptr) return nullptr;
  std::memcpy(pooled, text, n + 1);
  g_pool.index.Add(place, pooled);
  return pooled;
}

}  // namespace

void StringPool::Initialize() {
  g_initialized.Run(SharedLocks::StringPoolLock(), [] {});
}

StringPool::Text StringPool::Prepare(const char* text) {
  if (text == nullptr) return Text{nullptr, 0, 0};
  const size_t n = std::strlen(text);
  return Text{text, n, HashOfText(text, n)};
}

const char* StringPool::InternLocked(const Text& text) {
  if (text.text == nullptr) return nullptr;
  return InternLockedWithLength(text.text, text.length, text.hash);
}

// The index's Prefetch reads only its atomics (see HashIndex), so it needs no lock.
void StringPool::Prefetch(const Text& text) {
  if (text.text != nullptr) g_pool.index.Prefetch(text.hash);
}

const char* StringPool::Intern(const char* text) {
  if (text == nullptr) return nullptr;
  const size_t n = std::strlen(text);
  if (n >= static_cast<size_t>(kChunkBytes)) return nullptr;
  const uint64_t hash = HashOfText(text, n);
  ScopedLock guard(SharedLocks::StringPoolLock());
  return InternLockedWithLength(text, n, hash);
}

const char* StringPool::Intern(const Text& text) {
  if (text.text == nullptr || text.length >= static_cast<size_t>(kChunkBytes)) return nullptr;
  ScopedLock guard(SharedLocks::StringPoolLock());
  return InternLockedWithLength(text.text, text.length, text.hash);
}

void StringPool::SetAllocatorForTesting(void* (*allocate)(size_t)) {
  ScopedLock guard(SharedLocks::StringPoolLock());
  g_pool.index.SetAllocator(allocate);
  g_pool.texts.SetAllocator(allocate);
}
