// The interface identifier table: one entry per interface, reached by one node in the by-IID
// chains and one node in the by-name chains.
//
// Storage: the tables and the initialized flag are constant-initialized and never torn down, so
// they exist before any static initialiser runs.
//
// Guarded by the table's lock (SharedLocks::IidTableLock()): only the one-time clearing. The chains
// themselves are written only during the load of the dictionary files (serialised by the dictionary
// lock that the loader holds) and read after it, so they take no lock.
#include "dictionary/IidTable.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

#include "ZELSysTSGuid.h"
#include "pools/ChainedTable.h"
#include "pools/GuidPool.h"
#include "pools/HashIndex.h"
#include "pools/StringPool.h"
#include "util/LockOrder.h"
#include "util/OnceFlag.h"

namespace {

using IidChains = ChainedTable<const IidEntry, IidTable::kBuckets, IndexReaders::kLockFree>;

// Written only during the load of the dictionary files (serialised by the dictionary lock that
// the loader holds) and read after it: no lock of their own.
IidChains g_by_iid;
IidChains g_by_name;
OnceFlag g_initialized;
void* (*g_allocate)(size_t) = &std::malloc;

bool IsInitialized() {
  return g_initialized.Done();
}

uint64_t HashOfIid(const _GUID& iid) {
  return HashOfBytes(&iid, sizeof(_GUID), nullptr, 0);
}
uint64_t HashOfName(const char* name) {
  return HashOfNames(name, "");
}

const IidEntry* FindByIid(const _GUID& iid) {
  return g_by_iid.Find(IdentifierBucket(iid), HashOfIid(iid),
                       [&iid](const IidEntry* e) { return *e->interface_id == iid; });
}

const IidEntry* FindByName(const char* name) {
  return g_by_name.Find(InterfaceNameBucket(name), HashOfName(name), [name](const IidEntry* e) {
    return std::strcmp(e->interface_name, name) == 0;
  });
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
  g_initialized.Run(SharedLocks::IidTableLock(), [] {
    g_by_iid.Clear();
    g_by_name.Clear();
  });
}

int IidTable::Insert(const _GUID& iid, const char* name) {
  if (name == nullptr) return 0;
  if (!IsInitialized()) Initialize();

  // A name is known with exactly one IID and an IID under exactly one name.
  if (const IidEntry* known = FindByName(name)) {
    return *known->interface_id == iid ? 1 : 0;
  }
  if (FindByIid(iid) != nullptr) return 0;  // known under another name

  const char* pooledName = StringPool::Intern(name);
  const _GUID* pooledIid = GuidPool::Intern(&iid);
  auto* entry = static_cast<IidEntry*>(g_allocate(sizeof(IidEntry)));
  IidChains::Node* iidNode = g_by_iid.NewNode();
  IidChains::Node* nameNode = g_by_name.NewNode();
  if (pooledName == nullptr || pooledIid == nullptr || entry == nullptr || iidNode == nullptr ||
      nameNode == nullptr) {
    // Out of memory, not a conflict. Nothing is linked: the table is as it was.
    std::free(entry);
    IidChains::FreeNode(iidNode);
    IidChains::FreeNode(nameNode);
    return -1;
  }
  entry->interface_id = pooledIid;
  entry->interface_name = pooledName;
  g_by_iid.Append(IdentifierBucket(iid), HashOfIid(iid), entry, iidNode);
  g_by_name.Append(InterfaceNameBucket(name), HashOfName(name), entry, nameNode);
  return 1;
}

void IidTable::SetAllocatorForTesting(void* (*allocate)(size_t)) {
  g_allocate = allocate != nullptr ? allocate : &std::malloc;
  g_by_iid.SetAllocator(allocate);
  g_by_name.SetAllocator(allocate);
}

const char* IidTable::FindName(const _GUID& iid) {
  if (!IsInitialized()) return nullptr;
  const IidEntry* entry = FindByIid(iid);
  return entry != nullptr ? entry->interface_name : nullptr;
}

const _GUID* IidTable::FindIid(const char* name) {
  if (name == nullptr || !IsInitialized()) return nullptr;
  const IidEntry* entry = FindByName(name);
  return entry != nullptr ? entry->interface_id : nullptr;
}
