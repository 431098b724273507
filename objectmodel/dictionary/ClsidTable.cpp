// The class identifier table: CLSID -> (class name, library name or null), one index over
// entries cut from an arena and never freed.
//
// Storage: the index, the arena and the initialized flag are constant-initialized and never torn
// down, so they exist before any static initialiser runs.
//
// Guarded by the table's lock (SharedLocks::ClsidTableLock()): only the one-time initialisation.
// The index and the arena are written only during the load of the dictionary files (serialised
// by the dictionary lock that the loader holds) and read after it, so they take no lock; the
// index's readers are lock-free (IndexReaders::kLockFree).
#include "dictionary/ClsidTable.h"

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

using ClsidIndex = HashIndex<const ClsidEntry, IndexReaders::kLockFree>;

ClsidIndex g_clsids;
Arena g_entries;
OnceFlag g_initialized;

bool IsInitialized() {
  return g_initialized.Done();
}

auto ByClsid(const _GUID& clsid) {
  return [&clsid](const ClsidEntry* e) { return *e->class_id == clsid; };
}

}  // namespace

void ClsidTable::Initialize() {
  // Nothing to clear: the index is constant-initialized empty. The flag records the call.
  g_initialized.Run(SharedLocks::ClsidTableLock(), [] {});
}

const ClsidEntry* ClsidTable::Insert(const _GUID& clsid, const char* className,
                                     const char* libraryName, bool* outOfMemory) {
  if (className == nullptr) return nullptr;
  if (!IsInitialized()) Initialize();

  // Hashes first, and the slots this insert reads started at once, so that their cache misses
  // overlap.
  const uint64_t clsidHash = HashOfGuid(&clsid);
  const StringPool::Text classText = StringPool::Prepare(className);
  const StringPool::Text libraryText = StringPool::Prepare(libraryName);
  g_clsids.Prefetch(clsidHash);
  StringPool::Prefetch(classText);
  StringPool::Prefetch(libraryText);
  GuidPool::Prefetch(clsidHash);

  const ClsidIndex::Place place = g_clsids.Locate(clsidHash, ByClsid(clsid));
  if (const ClsidEntry* known = place.item) {
    if (std::strcmp(known->class_name, className) != 0) return nullptr;
    // An entry made without a library keeps none: a later line is accepted but adds nothing.
    if (libraryName == nullptr || known->library_name == nullptr) return known;
    return std::strcmp(known->library_name, libraryName) == 0 ? known : nullptr;
  }

  const char* pooledClass = nullptr;
  const char* pooledLibrary = nullptr;
  const _GUID* pooledClsid = nullptr;
  void* memory = nullptr;
  if (ClsidIndex::HasRoom(place)) {
    pooledClass = StringPool::Intern(classText);
    pooledLibrary = libraryName != nullptr ? StringPool::Intern(libraryText) : nullptr;
    pooledClsid = GuidPool::Intern(&clsid, clsidHash);
    memory = g_entries.Allocate(sizeof(ClsidEntry), alignof(ClsidEntry));
  }
  if (pooledClass == nullptr || (libraryName != nullptr && pooledLibrary == nullptr) ||
      pooledClsid == nullptr || memory == nullptr) {
    // Nothing is linked: the table is as it was.
    if (memory != nullptr) g_entries.Unallocate(memory, sizeof(ClsidEntry));
    if (outOfMemory != nullptr) *outOfMemory = true;
    return nullptr;
  }
  const ClsidEntry* entry = new (memory) ClsidEntry{pooledClsid, pooledClass, pooledLibrary};
  g_clsids.Add(place, entry);
  return entry;
}

const ClsidEntry* ClsidTable::Find(const _GUID& clsid) {
  if (!IsInitialized()) return nullptr;
  return g_clsids.Find(HashOfGuid(&clsid), ByClsid(clsid));
}
