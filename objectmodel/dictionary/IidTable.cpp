// The interface identifier table: one entry per interface, held by the by-IID index and by the
// by-name index. Entries are cut from an arena and never freed.
//
// Storage: the indexes, the arena and the initialized flag are constant-initialized and never
// torn down, so they exist before any static initialiser runs.
//
// Guarded by the table's lock (SharedLocks::IidTableLock()): only the one-time initialisation.
// The indexes and the arena are written only during the load of the dictionary files
// (serialised by the dictionary lock that the loader holds) and read after it, so they take no
// lock; their readers are lock-free (IndexReaders::kLockFree).
#include "dictionary/IidTable.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "ZELSysTSGuid.h"
#include "pools/Arena.h"
#include "pools/GuidPool.h"
#include "pools/HashIndex.h"
#include "pools/KeyHash.h"
#include "pools/StringPool.h"
#include "util/LockOrder.h"
#include "util/OnceFlag.h"

namespace {

using IidIndex = HashIndex<const IidEntry, IndexReaders::kLockFree>;

IidIndex g_by_iid;
IidIndex g_by_name;
Arena g_entries;
OnceFlag g_initialized;

bool IsInitialized() {
  return g_initialized.Done();
}

auto ByIid(const _GUID& iid) {
  return [&iid](const IidEntry* e) { return *e->interface_id == iid; };
}
auto ByName(const char* name) {
  return [name](const IidEntry* e) { return std::strcmp(e->interface_name, name) == 0; };
}

}  // namespace

int IdentifierBucket(const _GUID& guid) {
  unsigned char bytes[sizeof(_GUID)];
  std::memcpy(bytes, &guid, sizeof bytes);
  uint32_t sum = 0;  // unsigned arithmetic wraps exactly like 32-bit two's complement
  for (int i = 0; i < static_cast<int>(sizeof bytes); ++i) {
    sum += static_cast<uint32_t>(i) * static_cast<uint32_t>(static_cast<int8_t>(bytes[i]));
  }
  return static_cast<int>(sum & (IidTable::kBuckets - 1));
}

int InterfaceNameBucket(const char* name) {
  uint32_t sum = 0;
  for (uint32_t i = 0; name[i] != '\0'; ++i) {
    sum += i * static_cast<uint32_t>(static_cast<signed char>(name[i]));
  }
  return static_cast<int>(sum & (IidTable::kBuckets - 1));
}

void IidTable::Initialize() {
  // Nothing to clear: the indexes are constant-initialized empty. The flag records the call.
  g_initialized.Run(SharedLocks::IidTableLock(), [] {});
}

int IidTable::Insert(const _GUID& iid, const char* name) {
  if (name == nullptr) return 0;
  if (!IsInitialized()) Initialize();

  // Hashes first, and the four slots this insert reads started at once, so that their cache
  // misses overlap.
  const StringPool::Text text = StringPool::Prepare(name);
  const uint64_t iidHash = HashOfGuid(&iid);
  g_by_name.Prefetch(text.hash);
  g_by_iid.Prefetch(iidHash);
  StringPool::Prefetch(text);
  GuidPool::Prefetch(iidHash);

  // A name is known with exactly one IID and an IID under exactly one name.
  const IidIndex::Place byName = g_by_name.Locate(text.hash, ByName(name));
  if (byName.item != nullptr) return *byName.item->interface_id == iid ? 1 : 0;
  const IidIndex::Place byIid = g_by_iid.Locate(iidHash, ByIid(iid));
  if (byIid.item != nullptr) return 0;  // known under another name

  if (!IidIndex::HasRoom(byName) || !IidIndex::HasRoom(byIid)) return -1;
  const char* pooledName = StringPool::Intern(text);
  const _GUID* pooledIid = GuidPool::Intern(&iid, iidHash);
  void* memory = g_entries.Allocate(sizeof(IidEntry), alignof(IidEntry));
  if (pooledName == nullptr || pooledIid == nullptr || memory == nullptr) {
    // Out of memory, not a conflict. Nothing is linked: the table is as it was.
    if (memory != nullptr) g_entries.Unallocate(memory, sizeof(IidEntry));
    return -1;
  }
  const IidEntry* entry = new (memory) IidEntry{pooledIid, pooledName};
  g_by_iid.Add(byIid, entry);
  g_by_name.Add(byName, entry);
  return 1;
}

void IidTable::SetAllocatorForTesting(void* (*allocate)(size_t)) {
  g_by_iid.SetAllocator(allocate);
  g_by_name.SetAllocator(allocate);
  g_entries.SetAllocator(allocate);
}

const char* IidTable::FindName(const _GUID& iid) {
  if (!IsInitialized()) return nullptr;
  const IidEntry* entry = g_by_iid.Find(HashOfGuid(&iid), ByIid(iid));
  return entry != nullptr ? entry->interface_name : nullptr;
}

const _GUID* IidTable::FindIid(const char* name) {
  if (name == nullptr || !IsInitialized()) return nullptr;
  const IidEntry* entry = g_by_name.Find(HashOfText(name, std::strlen(name)), ByName(name));
  return entry != nullptr ? entry->interface_id : nullptr;
}
