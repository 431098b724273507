#include "pools/GuidPool.h"

#include <cstring>

#include "ZELSysTSGuid.h"
#include "pools/ChainedTable.h"
#include "util/LockOrder.h"
#include "util/OnceFlag.h"
#include "util/ScopedLock.h"
#include "util/ThreadAnnotations.h"

namespace {

// A pooled GUID: the node of the table holds a pointer to it, and the pointer is what callers
// get. Never freed.
using PooledGuid = _GUID;

// The pool: chains in order of first interning, guarded by the GUID pool's lock (innermost).
ChainedTable<PooledGuid, GuidPool::kBuckets> g_pool GUARDED_BY(SharedLocks::GuidPoolLock());
OnceFlag g_initialized;
std::atomic<void* (*)(size_t)> g_allocate{&std::malloc};

}  // namespace

void GuidPool::Initialize() {
  g_initialized.Run(SharedLocks::GuidPoolLock(),
                    [&]()
                        EXCLUSIVE_LOCKS_REQUIRED(SharedLocks::GuidPoolLock()) { g_pool.Clear(); });
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
  if (!g_initialized.Done()) Initialize();

  const int bucket = static_cast<int>(Bucket(guid));
  const uint64_t hash = HashOfBytes(guid, 16, nullptr, 0);
  ScopedLock guard(SharedLocks::GuidPoolLock());
  PooledGuid* found =
      g_pool.Find(bucket, hash, [guid](const PooledGuid* pooled) { return *pooled == *guid; });
  if (found != nullptr) return found;
  auto* pooled = static_cast<PooledGuid*>(g_allocate.load(std::memory_order_relaxed)(16));
  if (pooled == nullptr) return nullptr;
  std::memcpy(pooled, guid, 16);
  if (!g_pool.Append(bucket, hash, pooled)) {
    std::free(pooled);
    return nullptr;
  }
  return pooled;
}

void GuidPool::SetAllocatorForTesting(void* (*allocate)(size_t)) {
  g_allocate.store(allocate != nullptr ? allocate : &std::malloc);
  ScopedLock guard(SharedLocks::GuidPoolLock());
  g_pool.SetAllocator(allocate);
}
