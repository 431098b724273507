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
#include "dictionary/StringPool.h"
#include "dictionaryfiles/IidTable.h"

namespace {

struct ClsidNode {
  const ClsidEntry* entry;
  ClsidNode* next;
};

struct ClsidTableState {
  ClsidNode* buckets[ClsidTable::kBuckets];
  std::atomic<uint8_t> initialised;
};

ClsidTableState g_clsids;

bool InitialisedFlag() {
  return g_clsids.initialised.load(std::memory_order_acquire) != 0;
}

// Walks the chain of clsid. Returns its entry, or null with *tail set to the link where a new
// node goes (the end of the chain).
const ClsidEntry* WalkChain(const _GUID& clsid, ClsidNode*** tail) {
  ClsidNode** link = &g_clsids.buckets[IdentifierBucket(clsid)];
  for (; *link != nullptr; link = &(*link)->next) {
    if (*(*link)->entry->class_id == clsid) return (*link)->entry;
  }
  if (tail != nullptr) *tail = link;
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
  for (int i = 0; i < kBuckets; ++i) g_clsids.buckets[i] = nullptr;
  g_clsids.initialised.store(1, std::memory_order_seq_cst);
  std::atomic_thread_fence(std::memory_order_seq_cst);
}

const ClsidEntry* ClsidTable::Insert(const _GUID& clsid, const char* className,
                                     const char* libraryName) {
  if (className == nullptr) return nullptr;
  if (!InitialisedFlag()) Initialize();

  ClsidNode** tail = nullptr;
  if (const ClsidEntry* known = WalkChain(clsid, &tail)) {
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
  *tail = node;  // interning never touches this chain, so the tail is still the end
  return entry;
}

const ClsidEntry* ClsidTable::Find(const _GUID& clsid) {
  if (!InitialisedFlag()) return nullptr;
  return WalkChain(clsid, nullptr);
}
