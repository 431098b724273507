// The class identifier table: CLSID -> (class name, library name or null).
//
// Storage: the chain heads and the initialised flag are constant-initialised (all zero) and
// trivially destructible, so they exist before any static initialiser runs and are never torn
// down; the table lock lives in NoDestructor storage built at first use.
//
// Guarded by TableLock(): only the one-time clearing of the heads. The chains are written only
// during the load of the dictionary files (serialised by the dictionary lock that the loader
// holds) and read after it, so they take no lock.
#include "dictionaryfiles/ClsidTable.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

#include "core/NoDestructor.h"
#include "core/ScopedLock.h"
#include "dictionary/GuidPool.h"
#include "dictionary/HashIndex.h"
#include "dictionary/StringPool.h"
#include "dictionaryfiles/IidTable.h"

namespace {

struct ClsidNode {
  const ClsidEntry* entry;
  ClsidNode* next;
};

// The tails make an append O(1) and the index finds a CLSID without walking its chain, so that
// a large dictionary loads in linear time although the number of buckets is fixed.
// Every member has an initialiser, so the whole state is constant-initialised: it exists, empty,
// before any static initialiser of any library runs, and no load-time initialiser resets it.
struct ClsidTableState {
  ClsidNode* buckets[ClsidTable::kBuckets] = {};
  ClsidNode* tails[ClsidTable::kBuckets] = {};
  HashIndex<const ClsidEntry> index;
  std::atomic<uint8_t> initialised{};
};

ClsidTableState g_clsids;

bool InitialisedFlag() {
  return g_clsids.initialised.load(std::memory_order_acquire) != 0;
}

uint64_t HashOf(const _GUID& clsid) {
  return HashOfBytes(&clsid, sizeof(_GUID), nullptr, 0);
}

// The entry of clsid in its bucket's chain, through the index while it is complete.
const ClsidEntry* FindInChain(int bucket, uint64_t hash, const _GUID& clsid) {
  if (g_clsids.index.Usable()) {
    return g_clsids.index.Find(hash,
                               [&clsid](const ClsidEntry* e) { return *e->class_id == clsid; });
  }
  for (ClsidNode* node = g_clsids.buckets[bucket]; node != nullptr; node = node->next) {
    if (*node->entry->class_id == clsid) return node->entry;
  }
  return nullptr;
}

}  // namespace

ZELSmartMutex& ClsidTable::TableLock() {
  static NoDestructor<ZELSmartMutex> lock(0);
  return *lock;
}

void ClsidTable::Initialize() {
  ScopedLock hold(TableLock());
  if (g_clsids.initialised.load(std::memory_order_relaxed) != 0) return;
  for (int i = 0; i < kBuckets; ++i) g_clsids.buckets[i] = g_clsids.tails[i] = nullptr;
  // A sequentially consistent read-modify-write: a full fence after the heads are cleared.
  g_clsids.initialised.exchange(1, std::memory_order_seq_cst);
}

const ClsidEntry* ClsidTable::Insert(const _GUID& clsid, const char* className,
                                     const char* libraryName) {
  if (className == nullptr) return nullptr;
  if (!InitialisedFlag()) Initialize();

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
  ClsidEntry* entry = static_cast<ClsidEntry*>(std::malloc(sizeof(ClsidEntry)));
  ClsidNode* node = static_cast<ClsidNode*>(std::malloc(sizeof(ClsidNode)));
  if (pooledClass == nullptr || (libraryName != nullptr && pooledLibrary == nullptr) ||
      pooledClsid == nullptr || entry == nullptr || node == nullptr) {
    // Nothing is linked: the table is as it was.
    std::free(entry);
    std::free(node);
    return nullptr;
  }
  entry->class_id = pooledClsid;
  entry->class_name = pooledClass;
  entry->library_name = pooledLibrary;
  node->entry = entry;
  node->next = nullptr;
  if (g_clsids.tails[bucket] == nullptr) {
    g_clsids.buckets[bucket] = node;
  } else {
    g_clsids.tails[bucket]->next = node;
  }
  g_clsids.tails[bucket] = node;
  g_clsids.index.Add(hash, entry);
  return entry;
}

const ClsidEntry* ClsidTable::Find(const _GUID& clsid) {
  if (!InitialisedFlag()) return nullptr;
  return FindInChain(IdentifierBucket(clsid), HashOf(clsid), clsid);
}
