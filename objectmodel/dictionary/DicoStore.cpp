// The dictionary's two hash tables, the dictionary lock and the insert-or-merge operations.
//
// Layout: two ChainedTables of 4096 chains in static storage. A chain node holds one record and
// the next node; nodes are allocated apart from records so that one record can hang in the name
// table and in the GUID table. New nodes are appended, so each chain is in order of first
// insertion; the tables' indexes find a pair without walking its chain, so that loading a
// dictionary of a million lines stays linear although the number of buckets is fixed.
//
// Locking: every read or write of the heads, the nodes and the record fields (except reads of
// `creator`) happens under the dictionary lock; the pools are interned inside it (their locks
// are innermost). Buckets are computed before the lock is taken. The failure message is written
// after the lock has been released.
#include "dictionary/DicoStore.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "pools/ChainedTable.h"
#include "pools/GuidPool.h"
#include "pools/HashIndex.h"
#include "pools/StringPool.h"
#include "util/LockOrder.h"
#include "util/Observer.h"
#include "util/OnceFlag.h"
#include "util/ScopedLock.h"
#include "util/ThreadAnnotations.h"

namespace {

using DicoTable = ChainedTable<DicoEntry, DicoStore::kBuckets>;
using DicoNode = DicoTable::Node;

// Both tables are guarded by the dictionary lock.
DicoTable g_names GUARDED_BY(SharedLocks::DictionaryLock());
DicoTable g_guids GUARDED_BY(SharedLocks::DictionaryLock());

OnceFlag g_initialized;

void* DefaultAllocate(size_t size) {
  void* memory = std::malloc(size);
  if (memory != nullptr) std::memset(memory, 0, size);
  return memory;
}

std::atomic<void* (*)(size_t)> g_allocate{&DefaultAllocate};

// A zero-filled T from the allocation seam, or null. Released with std::free.
template <typename T>
T* AllocateZeroed() {
  void* memory = g_allocate.load(std::memory_order_acquire)(sizeof(T));
  return memory != nullptr ? new (memory) T() : nullptr;
}

constexpr char kInsertFailed[] = "Problem allocating structure dico\n";

// Through stdio like every other message of the system, so that the lines keep their order
// whatever buffering a client gives stderr; the stream's own lock keeps one line whole.
// An observer is told the same bytes; the message carries no file or line, it belongs to the
// line being read when the insert came from a dictionary file.
void ReportInsertFailure() {
  std::fputs(kInsertFailed, stderr);
  if (zelsysts::Observed()) {
    zelsysts::Observation observation{zelsysts::Step::kMessage};
    observation.text[0] = kInsertFailed;
    zelsysts::Observe(observation);
  }
}

// 1*b[0] + 2*b[1] + ... over signed bytes, wrapping in 32 bits.
uint32_t WeightedSum(const signed char* bytes, size_t count) {
  uint32_t sum = 0;
  for (size_t i = 0; i < count; ++i) {
    sum += static_cast<uint32_t>(i + 1) * static_cast<uint32_t>(static_cast<int32_t>(bytes[i]));
  }
  return sum;
}

uint32_t WeightedSum(const char* text) {
  if (text == nullptr) return 0;
  return WeightedSum(reinterpret_cast<const signed char*>(text), std::strlen(text));
}

uint32_t WeightedSum(const _GUID* guid) {
  if (guid == nullptr) return 0;
  signed char bytes[sizeof(_GUID)];
  std::memcpy(bytes, guid, sizeof(bytes));
  return WeightedSum(bytes, sizeof(bytes));
}

// |h rem 4096| with h signed and the remainder taking the sign of h.
int BucketOf(uint32_t first, uint32_t second) {
  const int32_t h = static_cast<int32_t>(first ^ second);
  const int32_t r = h % DicoStore::kBuckets;
  return r < 0 ? -r : r;
}

bool SameGuid(const _GUID* a, const _GUID* b) {
  return std::memcmp(a, b, sizeof(_GUID)) == 0;
}

// The library name as it is stored: without its first three bytes when they are 'l','i','b'.
const char* WithoutLibPrefix(const char* lib) {
  return std::strncmp(lib, "lib", 3) == 0 ? lib + 3 : lib;
}

bool NamesMatch(const DicoEntry* entry, const char* cls, const char* itf) {
  return std::strcmp(entry->class_name, cls) == 0 && std::strcmp(entry->interface_name, itf) == 0;
}

bool GuidsMatch(const DicoEntry* entry, const _GUID* clsid, const _GUID* iid) {
  return SameGuid(entry->class_id, clsid) && SameGuid(entry->interface_id, iid);
}

// The first record of the bucket's chain that holds the pair.
DicoEntry* FindNamesLocked(int bucket, uint64_t hash, const char* cls, const char* itf)
    EXCLUSIVE_LOCKS_REQUIRED(SharedLocks::DictionaryLock()) {
  return g_names.Find(bucket, hash, [&](const DicoEntry* e) { return NamesMatch(e, cls, itf); });
}

DicoEntry* FindGuidsLocked(int bucket, uint64_t hash, const _GUID* clsid, const _GUID* iid)
    EXCLUSIVE_LOCKS_REQUIRED(SharedLocks::DictionaryLock()) {
  return g_guids.Find(bucket, hash, [&](const DicoEntry* e) { return GuidsMatch(e, clsid, iid); });
}

// A field of a found or given record clashes with an argument when both are set and differ.
bool NameClashes(const char* stored, const char* given) {
  return given != nullptr && stored != nullptr && std::strcmp(stored, given) != 0;
}

// The conflict checks of a name insert, in order; true when the target must not be touched.
bool NamesConflictLocked(const DicoEntry& target, const char* itf, const char* cutLib,
                         const char* leaf, const char* ext, void* fn) {
  if (NameClashes(target.interface_name, itf)) return true;
  if (NameClashes(target.library_name, cutLib)) return true;
  if (NameClashes(target.itf_leaf, leaf)) return true;
  if (NameClashes(target.extended_by, ext)) return true;
  void* creator = target.creator.load(std::memory_order_relaxed);
  return fn != nullptr && creator != nullptr && creator != fn;
}

// Interns value into field when field is null and value is given; false when interning failed.
bool FillNameLocked(const char*& field, const char* value) {
  if (field != nullptr || value == nullptr) return true;
  field = StringPool::Intern(value);
  return field != nullptr;
}

// Publishes fn into an empty creator: written once, seq_cst, read elsewhere without the lock.
void PublishCreatorLocked(DicoEntry& target, void* fn) {
  if (fn != nullptr && target.creator.load(std::memory_order_relaxed) == nullptr) {
    target.creator.store(fn, std::memory_order_seq_cst);
  }
}

// Every field is attempted, even after an earlier one could not be interned.
bool FillNamesLocked(DicoEntry& target, const char* cls, const char* itf, const char* cutLib,
                     const char* leaf, const char* ext, void* fn) {
  bool ok = FillNameLocked(target.class_name, cls);
  ok = FillNameLocked(target.interface_name, itf) && ok;
  ok = FillNameLocked(target.library_name, cutLib) && ok;
  ok = FillNameLocked(target.itf_leaf, leaf) && ok;
  ok = FillNameLocked(target.extended_by, ext) && ok;
  PublishCreatorLocked(target, fn);
  return ok;
}

DicoEntry* InsertByNamesLocked(int bucket, uint64_t hash, const char* cls, const char* itf,
                               const char* lib, const char* leaf, const char* ext, void* fn,
                               DicoEntry* rec, bool& outOfMemory)
    EXCLUSIVE_LOCKS_REQUIRED(SharedLocks::DictionaryLock()) {
  DicoEntry* found = FindNamesLocked(bucket, hash, cls, itf);

  DicoEntry* target = found;
  if (found != nullptr) {
    if (rec != nullptr && rec != found) return nullptr;
  } else if (rec != nullptr) {
    if (rec->class_name != nullptr && std::strcmp(rec->class_name, cls) != 0) return nullptr;
    target = rec;
  }

  const char* cutLib = lib != nullptr ? WithoutLibPrefix(lib) : nullptr;
  // A record made here has nothing set yet, so only a found or given one can conflict.
  if (target != nullptr && NamesConflictLocked(*target, itf, cutLib, leaf, ext, fn)) {
    return nullptr;
  }

  DicoNode* node = nullptr;
  DicoEntry* created = nullptr;
  if (found == nullptr) {
    node = g_names.NewNode();
    if (node == nullptr) return outOfMemory = true, nullptr;
    if (target == nullptr) {
      created = AllocateZeroed<DicoEntry>();
      if (created == nullptr) {
        DicoTable::FreeNode(node);
        return outOfMemory = true, nullptr;
      }
      target = created;
    }
  }

  if (!FillNamesLocked(*target, cls, itf, cutLib, leaf, ext, fn)) {
    // Only the interning can fail here. Nothing was linked: the node and a record made here are
    // unreachable.
    outOfMemory = true;
    DicoTable::FreeNode(node);
    std::free(created);
    return nullptr;
  }
  if (node != nullptr) g_names.Append(bucket, hash, target, node);
  return target;
}

// Sets an empty GUID field to the pooled argument (outOfMemory when it cannot be interned), or
// compares a set one with it by content.
bool SetOrMatchGuidLocked(const _GUID*& field, const _GUID* value, bool& outOfMemory) {
  if (field == nullptr) {
    field = GuidPool::Intern(value);
    if (field == nullptr) outOfMemory = true;
    return field != nullptr;
  }
  return SameGuid(field, value);
}

DicoEntry* InsertByGuidsLocked(int bucket, uint64_t hash, const _GUID* clsid, const _GUID* iid,
                               void* fn, DicoEntry* rec, bool& outOfMemory)
    EXCLUSIVE_LOCKS_REQUIRED(SharedLocks::DictionaryLock()) {
  DicoEntry* found = FindGuidsLocked(bucket, hash, clsid, iid);

  DicoEntry* target = found;
  DicoNode* node = nullptr;
  DicoEntry* created = nullptr;
  if (found != nullptr) {
    if (rec != nullptr && rec != found) return nullptr;
  } else {
    node = g_guids.NewNode();
    if (node == nullptr) return outOfMemory = true, nullptr;
    target = rec;
    if (target == nullptr) {
      created = AllocateZeroed<DicoEntry>();
      if (created == nullptr) {
        DicoTable::FreeNode(node);
        return outOfMemory = true, nullptr;
      }
      target = created;
    }
    // Both empty fields are set even when the other one clashes; they stay set on failure.
    const bool classMatches = SetOrMatchGuidLocked(target->class_id, clsid, outOfMemory);
    const bool interfaceMatches = SetOrMatchGuidLocked(target->interface_id, iid, outOfMemory);
    if (!classMatches || !interfaceMatches) {
      DicoTable::FreeNode(node);
      std::free(created);
      return nullptr;
    }
  }

  void* creator = target->creator.load(std::memory_order_relaxed);
  if (creator != nullptr && creator != fn) {
    DicoTable::FreeNode(node);
    std::free(created);
    return nullptr;
  }
  PublishCreatorLocked(*target, fn);
  if (node != nullptr) g_guids.Append(bucket, hash, target, node);
  return target;
}

}  // namespace

ZELSmartMutex& DicoStore::DictionaryLock() {
  return SharedLocks::DictionaryLock();
}

void DicoStore::Initialize() {
  g_initialized.Run(SharedLocks::DictionaryLock(),
                    [&]() EXCLUSIVE_LOCKS_REQUIRED(SharedLocks::DictionaryLock()) {
                      g_names.Clear();
                      g_guids.Clear();
                    });
}

bool DicoStore::IsInitialized() {
  return g_initialized.Done();
}

int DicoStore::NameBucket(const char* className, const char* interfaceName) {
  return BucketOf(WeightedSum(className), WeightedSum(interfaceName));
}

int DicoStore::GuidBucket(const _GUID* classId, const _GUID* interfaceId) {
  return BucketOf(WeightedSum(classId), WeightedSum(interfaceId));
}

DicoEntry* DicoStore::InsertByNames(const char* cls, const char* itf, const char* lib,
                                    const char* leaf, const char* ext, void* fn, DicoEntry* rec,
                                    bool* outOfMemory) {
  if (cls == nullptr || itf == nullptr) return nullptr;
  if (!IsInitialized()) Initialize();
  const int bucket = NameBucket(cls, itf);
  const uint64_t hash = HashOfNames(cls, itf);
  DicoEntry* result;
  bool lacked = false;
  {
    ScopedLock lock(SharedLocks::DictionaryLock());
    result = InsertByNamesLocked(bucket, hash, cls, itf, lib, leaf, ext, fn, rec, lacked);
  }
  if (result == nullptr) ReportInsertFailure();
  if (lacked && outOfMemory != nullptr) *outOfMemory = true;
  return result;
}

DicoEntry* DicoStore::InsertByGuids(const _GUID* clsid, const _GUID* iid, void* fn, DicoEntry* rec,
                                    bool* outOfMemory) {
  if (fn == nullptr || clsid == nullptr || iid == nullptr) return nullptr;
  if (!IsInitialized()) Initialize();
  const int bucket = GuidBucket(clsid, iid);
  const uint64_t hash = HashOfBytes(clsid, sizeof(_GUID), iid, sizeof(_GUID));
  DicoEntry* result;
  bool lacked = false;
  {
    ScopedLock lock(SharedLocks::DictionaryLock());
    result = InsertByGuidsLocked(bucket, hash, clsid, iid, fn, rec, lacked);
  }
  if (result == nullptr) ReportInsertFailure();
  if (lacked && outOfMemory != nullptr) *outOfMemory = true;
  return result;
}

DicoEntry* DicoStore::FindByNames(const char* className, const char* interfaceName) {
  if (className == nullptr || interfaceName == nullptr) return nullptr;
  const int bucket = NameBucket(className, interfaceName);
  const uint64_t hash = HashOfNames(className, interfaceName);
  ScopedLock lock(SharedLocks::DictionaryLock());
  return FindNamesLocked(bucket, hash, className, interfaceName);
}

DicoEntry* DicoStore::FindByGuids(const _GUID* classId, const _GUID* interfaceId) {
  if (classId == nullptr || interfaceId == nullptr) return nullptr;
  const int bucket = GuidBucket(classId, interfaceId);
  const uint64_t hash = HashOfBytes(classId, sizeof(_GUID), interfaceId, sizeof(_GUID));
  ScopedLock lock(SharedLocks::DictionaryLock());
  return FindGuidsLocked(bucket, hash, classId, interfaceId);
}

void DicoStore::SetAllocatorForTesting(void* (*allocate)(size_t)) {
  g_allocate.store(allocate != nullptr ? allocate : &DefaultAllocate, std::memory_order_release);
  ScopedLock lock(SharedLocks::DictionaryLock());
  g_names.SetAllocator(allocate);
  g_guids.SetAllocator(allocate);
}
