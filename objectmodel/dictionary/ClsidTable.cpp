// The class identifier table: CLSID -> (class name, library name or null).
//
// Storage: the table and the initialized flag are constant-initialized and never torn down, so
// they exist before any static initialiser runs.
//
// Guarded by the table's lock (SharedLocks::ClsidTableLock()): only the one-time clearing. The
// chains are written only during the load of the dictionary files (serialised by the dictionary
// lock that the loader holds) and read after it, so they take no lock.
#include "dictionary/ClsidTable.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

#include "ZELSysTSGuid.h"
#include "dictionary/IidTable.h"
#include "pools/ChainedTable.h"
#include "pools/GuidPool.h"
#include "pools/HashIndex.h"
#include "pools/StringPool.h"
#include "util/LockOrder.h"
#include "util/OnceFlag.h"

namespace {

using ClsidChains = ChainedTable<const ClsidEntry, ClsidTable::kBuckets, IndexReaders::kLockFree>;

// Written only during the load of the dictionary files (serialised by the dictionary lock that
// the loader holds) and read after it: no lock of its own.
ClsidChains g_clsids;
OnceFlag g_initialized;

bool IsInitialized() {
  return g_initialized.Done();
}

uint64_t HashOf(const _GUID& clsid) {
  return HashOfBytes(&clsid, sizeof(_GUID), nullptr, 0);
}

const ClsidEntry* FindInChain(int bucket, uint64_t hash, const _GUID& clsid) {
  return g_clsids.Find(bucket, hash,
                       [&clsid](const ClsidEntry* e) { return *e->class_id == clsid; });
}

}  // namespace

void ClsidTable::Initialize() {
  g_initialized.Run(SharedLocks::ClsidTableLock(), [] { g_clsids.Clear(); });
}

const ClsidEntry* ClsidTable::Insert(const _GUID& clsid, const char* className,
                                     const char* libraryName, bool* outOfMemory) {
  if (className == nullptr) return nullptr;
  if (!IsInitialized()) Initialize();

  const int bucket = IdentifierBucket(clsid);
  const uint64_t hash = HashOf(clsid);
  if (const ClsidEntry* known = FindInChain(bucket, hash, clsid)) {
    if (std::strcmp(known->class_name, className) != 0) return nullptr;
    // An entry made without a library keeps none: a later line is accepted but adds nothing.
    if (libraryName == nullptr || known->library_name == nullptr) return known;
    return std::strcmp(known->library_name, libraryName) == 0 ? known : nullptr;
  }

  const char* pooledClass = StringPool::Intern(className);
  const char* pooledLibrary = libraryName != nullptr ? StringPool::Intern(libraryName) : nullptr;
  const _GUID* pooledClsid = GuidPool::Intern(&clsid);
  auto* entry = static_cast<ClsidEntry*>(std::malloc(sizeof(ClsidEntry)));
  ClsidChains::Node* node = g_clsids.NewNode();
  if (pooledClass == nullptr || (libraryName != nullptr && pooledLibrary == nullptr) ||
      pooledClsid == nullptr || entry == nullptr || node == nullptr) {
    // Nothing is linked: the table is as it was.
    std::free(entry);
    ClsidChains::FreeNode(node);
    if (outOfMemory != nullptr) *outOfMemory = true;
    return nullptr;
  }
  entry->class_id = pooledClsid;
  entry->class_name = pooledClass;
  entry->library_name = pooledLibrary;
  g_clsids.Append(bucket, hash, entry, node);
  return entry;
}

const ClsidEntry* ClsidTable::Find(const _GUID& clsid) {
  if (!IsInitialized()) return nullptr;
  return FindInChain(IdentifierBucket(clsid), HashOf(clsid), clsid);
}
