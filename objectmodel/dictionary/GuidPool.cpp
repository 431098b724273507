#include "dictionary/GuidPool.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

#include "core/NoDestructor.h"
#include "core/ScopedLock.h"
#include "dictionary/HashIndex.h"

namespace {

struct GuidNode {
  GuidNode* next;
  _GUID guid;  // the pooled GUID handed out to callers
};

// Process-wide state in static storage, zero at load. Everything but `initialized` is guarded by
// GuidPool::Lock(). The tails make an append O(1); the index finds a GUID without walking its
// chain (chains grow long when many GUIDs share few buckets, as generated identifiers do).
// Every member has an initialiser, so the whole state is constant-initialised: it exists, empty,
// before any static initialiser of any library runs, and no load-time initialiser resets it.
struct GuidPoolState {
  GuidNode* heads[GuidPool::kBuckets] = {};
  GuidNode* tails[GuidPool::kBuckets] = {};
  HashIndex<GuidNode> index;
  std::atomic<bool> initialized{};
};

GuidPoolState g_pool;
std::atomic<void* (*)(size_t)> g_allocate{&std::malloc};

// All 16 bytes, compared as four 32-bit words.
bool SameGuid(const _GUID& a, const _GUID& b) {
  uint32_t wa[4];
  uint32_t wb[4];
  std::memcpy(wa, &a, 16);
  std::memcpy(wb, &b, 16);
  return wa[0] == wb[0] && wa[1] == wb[1] && wa[2] == wb[2] && wa[3] == wb[3];
}

}  // namespace

ZELSmartMutex& GuidPool::Lock() {
  static NoDestructor<ZELSmartMutex> lock(0);
  return *lock;
}

void GuidPool::Initialize() {
  ScopedLock guard(Lock());
  if (g_pool.initialized.load(std::memory_order_relaxed)) return;
  for (int i = 0; i < kBuckets; ++i) g_pool.heads[i] = g_pool.tails[i] = nullptr;
  // A sequentially consistent read-modify-write: a full fence after the heads are cleared.
  g_pool.initialized.exchange(true, std::memory_order_seq_cst);
}

uint32_t GuidPool::Bucket(const _GUID* guid) {
  unsigned char bytes[16];
  std::memcpy(bytes, guid, 16);
  uint32_t sum = guid->Data1;
  for (uint32_t i = 1; i < 16; ++i) sum += i * bytes[i];
  return sum & 0xFFFu;
}

const _GUID* GuidPool::Intern(const _GUID* guid) {
  if (guid == nullptr) return nullptr;
  if (!g_pool.initialized.load(std::memory_order_acquire)) Initialize();

  const uint32_t bucket = Bucket(guid);
  const uint64_t hash = HashOfBytes(guid, 16, nullptr, 0);
  ScopedLock guard(Lock());
  if (g_pool.index.Usable()) {
    GuidNode* found = g_pool.index.Find(
        hash, [guid](const GuidNode* node) { return SameGuid(node->guid, *guid); });
    if (found != nullptr) return &found->guid;
  } else {
    for (GuidNode* node = g_pool.heads[bucket]; node != nullptr; node = node->next) {
      if (SameGuid(node->guid, *guid)) return &node->guid;
    }
  }
  auto* node = static_cast<GuidNode*>(g_allocate.load(std::memory_order_relaxed)(sizeof(GuidNode)));
  if (node == nullptr) return nullptr;
  node->next = nullptr;
  std::memcpy(&node->guid, guid, 16);
  // Appended: chains stay in order of first interning.
  if (g_pool.tails[bucket] == nullptr) {
    g_pool.heads[bucket] = node;
  } else {
    g_pool.tails[bucket]->next = node;
  }
  g_pool.tails[bucket] = node;
  g_pool.index.Add(hash, node);
  return &node->guid;
}

void GuidPool::SetAllocatorForTesting(void* (*allocate)(size_t)) {
  g_allocate.store(allocate != nullptr ? allocate : &std::malloc);
}

int GuidPool::ChainForTesting(uint32_t bucket, const _GUID** guids, int max) {
  if (bucket >= static_cast<uint32_t>(kBuckets)) return 0;
  ScopedLock guard(Lock());
  int count = 0;
  for (GuidNode* node = g_pool.heads[bucket]; node != nullptr && count < max; node = node->next) {
    guids[count++] = &node->guid;
  }
  return count;
}
