#include "pools/GuidPool.h"

#include <cstring>

#include "ZELSysTSGuid.h"
#include "pools/Arena.h"
#include "pools/HashIndex.h"
#include "pools/KeyHash.h"
#include "util/LockOrder.h"
#include "util/OnceFlag.h"
#include "util/ScopedLock.h"
#include "util/ThreadAnnotations.h"

namespace {

// The pool, constant-initialized: every pooled GUID by its hash, and the GUIDs themselves.
// Both guarded by the GUID pool's lock (innermost).
struct GuidPoolState {
  HashIndex<const _GUID> index;
  Arena guids;
};

GuidPoolState g_pool GUARDED_BY(SharedLocks::GuidPoolLock());
OnceFlag g_initialized;

}  // namespace

void GuidPool::Initialize() {
  g_initialized.Run(SharedLocks::GuidPoolLock(), [] {});
}

const _GUID* GuidPool::Intern(const _GUID* guid) {
  return guid != nullptr ? Intern(guid, HashOfGuid(guid)) : nullptr;
}

// The index's Prefetch reads only its atomics (see HashIndex), so it needs no lock.
void GuidPool::Prefetch(uint64_t hash) {
  g_pool.index.Prefetch(hash);
}

const _GUID* GuidPool::Intern(const _GUID* guid, uint64_t hash) {
  if (guid == nullptr) return nullptr;
  const _GUID key = *guid;
  ScopedLock guard(SharedLocks::GuidPoolLock());
  HashIndex<const _GUID>::Place place =
      g_pool.index.Locate(hash, [&key](const _GUID* pooled) { return *pooled == key; });
  if (place.item != nullptr) return place.item;
  if (!HashIndex<const _GUID>::HasRoom(place)) return nullptr;
  auto* pooled = static_cast<_GUID*>(g_pool.guids.Allocate(sizeof(_GUID), alignof(_GUID)));
  if (pooled == nullptr) return nullptr;
  *pooled = key;
  g_pool.index.Add(place, pooled);
  return pooled;
}

void GuidPool::SetAllocatorForTesting(void* (*allocate)(size_t)) {
  ScopedLock guard(SharedLocks::GuidPoolLock());
  g_pool.index.SetAllocator(allocate);
  g_pool.guids.SetAllocator(allocate);
}
