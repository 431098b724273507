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
#include "dictionary/HashIndex.h"
#include "dictionary/StringPool.h"

namespace {

struct IidNode {
  const IidEntry* entry;
  IidNode* next;
};

// The tails make an append O(1) and the indexes find an IID or a name without walking its chain,
// so that a large dictionary loads in linear time although the number of buckets is fixed.
// Every member has an initialiser, so the whole state is constant-initialised: it exists, empty,
// before any static initialiser of any library runs, and no load-time initialiser resets it.
struct IidTableState {
  IidNode* by_iid[IidTable::kBuckets] = {};
  IidNode* by_name[IidTable::kBuckets] = {};
  IidNode* iid_tails[IidTable::kBuckets] = {};
  IidNode* name_tails[IidTable::kBuckets] = {};
  HashIndex<const IidEntry> iid_index;
  HashIndex<const IidEntry> name_index;
  std::atomic<uint8_t> initialised{};
};

IidTableState g_iids;

bool InitialisedFlag() {
  return g_iids.initialised.load(std::memory_order_acquire) != 0;
}

uint64_t HashOfIid(const _GUID& iid) {
  return HashOfBytes(&iid, sizeof(_GUID), nullptr, 0);
}
uint64_t HashOfName(const char* name) {
  return HashOfNames(name, "");
}

// The entry of iid in its by-IID chain, through the index while it is complete.
const IidEntry* FindByIid(const _GUID& iid) {
  auto same = [&iid](const IidEntry* e) { return *e->interface_id == iid; };
  if (g_iids.iid_index.Usable()) return g_iids.iid_index.Find(HashOfIid(iid), same);
  for (IidNode* node = g_iids.by_iid[IdentifierBucket(iid)]; node != nullptr; node = node->next) {
    if (same(node->entry)) return node->entry;
  }
  return nullptr;
}

// The entry of name in its by-name chain, through the index while it is complete.
const IidEntry* FindByName(const char* name) {
  auto same = [name](const IidEntry* e) { return std::strcmp(e->interface_name, name) == 0; };
  if (g_iids.name_index.Usable()) return g_iids.name_index.Find(HashOfName(name), same);
  for (IidNode* node = g_iids.by_name[InterfaceNameBucket(name)]; node != nullptr;
       node = node->next) {
    if (same(node->entry)) return node->entry;
  }
  return nullptr;
}

// Appends node at the end of a chain.
void Append(IidNode*& head, IidNode*& tail, IidNode* node) {
  if (tail == nullptr) {
    head = node;
  } else {
    tail->next = node;
  }
  tail = node;
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
    g_iids.by_iid[i] = g_iids.iid_tails[i] = nullptr;
    g_iids.by_name[i] = g_iids.name_tails[i] = nullptr;
  }
  // A sequentially consistent read-modify-write: a full fence after the heads are cleared.
  g_iids.initialised.exchange(1, std::memory_order_seq_cst);
}

int IidTable::Insert(const _GUID& iid, const char* name) {
  if (name == nullptr) return 0;
  if (!InitialisedFlag()) Initialize();

  // A name is known with exactly one IID and an IID under exactly one name.
  if (const IidEntry* known = FindByName(name)) {
    return *known->interface_id == iid ? 1 : 0;
  }
  if (FindByIid(iid) != nullptr) return 0;  // known under another name

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
  const int iidBucket = IdentifierBucket(iid);
  const int nameBucket = InterfaceNameBucket(name);
  Append(g_iids.by_iid[iidBucket], g_iids.iid_tails[iidBucket], iidNode);
  Append(g_iids.by_name[nameBucket], g_iids.name_tails[nameBucket], nameNode);
  g_iids.iid_index.Add(HashOfIid(iid), entry);
  g_iids.name_index.Add(HashOfName(name), entry);
  return 1;
}

const char* IidTable::FindName(const _GUID& iid) {
  if (!InitialisedFlag()) return nullptr;
  const IidEntry* entry = FindByIid(iid);
  return entry != nullptr ? entry->interface_name : nullptr;
}

const _GUID* IidTable::FindIid(const char* name) {
  if (name == nullptr || !InitialisedFlag()) return nullptr;
  const IidEntry* entry = FindByName(name);
  return entry != nullptr ? entry->interface_id : nullptr;
}
