// The interface identifier table: one entry per interface, reached by one node in the by-IID
// chains and one node in the by-name chains.
//
// Storage: the chain heads and the initialised flag are constant-initialised (all zero) and
// trivially destructible, so they exist before any static initialiser runs and are never torn
// down; the table lock lives in NoDestructor storage built at first use.
//
// Guarded by TableLock(): only the one-time clearing of the heads. The chains themselves are
// written only during the load of the dictionary files (serialised by the dictionary lock that
// the loader holds) and read after it, so they take no lock.
#include "dictionaryfiles/IidTable.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

#include "core/NoDestructor.h"
#include "core/ScopedLock.h"
#include "dictionary/GuidPool.h"
#include "dictionary/StringPool.h"

namespace {

struct IidNode {
  const IidEntry* entry;
  IidNode* next;
};

struct IidTableState {
  IidNode* by_iid[IidTable::kBuckets];
  IidNode* by_name[IidTable::kBuckets];
  std::atomic<uint8_t> initialised;
};

IidTableState g_iids;

bool InitialisedFlag() {
  return g_iids.initialised.load(std::memory_order_acquire) != 0;
}

// Walks the by-IID chain of iid. Returns the entry of iid, or null with *tail set to the link
// where a new node goes (the end of the chain).
const IidEntry* WalkByIid(const _GUID& iid, IidNode*** tail) {
  IidNode** link = &g_iids.by_iid[IdentifierBucket(iid)];
  for (; *link != nullptr; link = &(*link)->next) {
    if (*(*link)->entry->interface_id == iid) return (*link)->entry;
  }
  if (tail != nullptr) *tail = link;
  return nullptr;
}

// The same over the by-name chain of name.
const IidEntry* WalkByName(const char* name, IidNode*** tail) {
  IidNode** link = &g_iids.by_name[InterfaceNameBucket(name)];
  for (; *link != nullptr; link = &(*link)->next) {
    if (std::strcmp((*link)->entry->interface_name, name) == 0) return (*link)->entry;
  }
  if (tail != nullptr) *tail = link;
  return nullptr;
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

ZELSmartMutex& IidTable::TableLock() {
  static NoDestructor<ZELSmartMutex> lock(0);
  return *lock;
}

void IidTable::Initialize() {
  ScopedLock hold(TableLock());
  if (g_iids.initialised.load(std::memory_order_relaxed) != 0) return;
  for (int i = 0; i < kBuckets; ++i) {
    g_iids.by_iid[i] = nullptr;
    g_iids.by_name[i] = nullptr;
  }
  g_iids.initialised.store(1, std::memory_order_seq_cst);
  std::atomic_thread_fence(std::memory_order_seq_cst);
}

int IidTable::Insert(const _GUID& iid, const char* name) {
  if (name == nullptr) return 0;
  if (!InitialisedFlag()) Initialize();

  // A name is known with exactly one IID and an IID under exactly one name.
  IidNode** nameTail = nullptr;
  IidNode** iidTail = nullptr;
  if (const IidEntry* known = WalkByName(name, &nameTail)) {
    return *known->interface_id == iid ? 1 : 0;
  }
  if (WalkByIid(iid, &iidTail) != nullptr) return 0;  // known under another name

  const char* pooledName = StringPool::Intern(name);
  const _GUID* pooledIid = GuidPool::Intern(&iid);
  IidEntry* entry = static_cast<IidEntry*>(std::malloc(sizeof(IidEntry)));
  IidNode* iidNode = static_cast<IidNode*>(std::malloc(sizeof(IidNode)));
  IidNode* nameNode = static_cast<IidNode*>(std::malloc(sizeof(IidNode)));
  if (pooledName == nullptr || pooledIid == nullptr || entry == nullptr || iidNode == nullptr ||
      nameNode == nullptr) {
    // Nothing is linked: the table is as it was.
    std::free(entry);
    std::free(iidNode);
    std::free(nameNode);
    return 0;
  }
  entry->interface_id = pooledIid;
  entry->interface_name = pooledName;
  iidNode->entry = entry;
  iidNode->next = nullptr;
  nameNode->entry = entry;
  nameNode->next = nullptr;
  // Interning takes only the pools' locks and never touches these chains: the tails found by
  // the walks are still the ends.
  *iidTail = iidNode;
  *nameTail = nameNode;
  return 1;
}

const char* IidTable::FindName(const _GUID& iid) {
  if (!InitialisedFlag()) return nullptr;
  const IidEntry* entry = WalkByIid(iid, nullptr);
  return entry != nullptr ? entry->interface_name : nullptr;
}

const _GUID* IidTable::FindIid(const char* name) {
  if (name == nullptr || !InitialisedFlag()) return nullptr;
  const IidEntry* entry = WalkByName(name, nullptr);
  return entry != nullptr ? entry->interface_id : nullptr;
}
