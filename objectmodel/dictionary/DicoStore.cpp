// The dictionary's two tables, the dictionary lock and the insert-or-merge operations.
//
// Layout: each table is one HashIndex (open addressing, grown by doubling) from a pair of keys to
// its record; a record may stand in both. Records are cut from an arena and never freed; a record
// that a failed insert made is kept aside and reused by the next insert that needs one. A pair
// is held at most once in each table, so a lookup has one answer, and an insert finds the pair
// and the place for it in one probe.
//
// Locking: every read or write of the tables, the arena and the record fields (except reads of
// `creator`) happens under the dictionary lock; the pools are interned inside it (their locks
// are innermost), a record's names under one hold of the string pool's lock. The failure
// message is written after the lock has been released.
#include "dictionary/DicoStore.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "pools/Arena.h"
#include "pools/GuidPool.h"
#include "pools/HashIndex.h"
#include "pools/KeyHash.h"
#include "pools/StringPool.h"
#include "util/LockOrder.h"
#include "util/Observer.h"
#include "util/OnceFlag.h"
#include "util/ScopedLock.h"
#include "util/ThreadAnnotations.h"

namespace {

using DicoIndex = HashIndex<DicoEntry>;

// The store, guarded by the dictionary lock: the two tables, the records' arena, and the record
// that a failed insert made (zero-filled again before it is used).
DicoIndex g_names GUARDED_BY(SharedLocks::DictionaryLock());
DicoIndex g_guids GUARDED_BY(SharedLocks::DictionaryLock());
Arena g_records GUARDED_BY(SharedLocks::DictionaryLock());
DicoEntry* g_spare GUARDED_BY(SharedLocks::DictionaryLock()) = nullptr;

OnceFlag g_initialized;

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

DicoIndex::Place LocateGuidsLocked(const _GUID* clsid, const _GUID* iid)
    EXCLUSIVE_LOCKS_REQUIRED(SharedLocks::DictionaryLock()) {
  return g_guids.Locate(HashOfGuids(clsid, iid), [clsid, iid](const DicoEntry* e) {
    return SameGuid(e->class_id, clsid) && SameGuid(e->interface_id, iid);
  });
}

// A zero-filled record for an insert, or null when memory runs out. One that the insert does
// not keep goes back through DiscardRecordLocked.
DicoEntry* NewRecordLocked() EXCLUSIVE_LOCKS_REQUIRED(SharedLocks::DictionaryLock()) {
  void* memory = g_spare;
  g_spare = nullptr;
  if (memory == nullptr) memory = g_records.Allocate(sizeof(DicoEntry), alignof(DicoEntry));
  return memory != nullptr ? new (memory) DicoEntry() : nullptr;
}

void DiscardRecordLocked(DicoEntry* record)
    EXCLUSIVE_LOCKS_REQUIRED(SharedLocks::DictionaryLock()) {
  if (record != nullptr) g_spare = record;
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
bool FillNameLocked(const char*& field, const StringPool::Text& value)
    EXCLUSIVE_LOCKS_REQUIRED(SharedLocks::StringPoolLock()) {
  if (field != nullptr || value.text == nullptr) return true;
  field = StringPool::InternLocked(value);
  return field != nullptr;
}

// Publishes fn into an empty creator: written once, seq_cst, read elsewhere without the lock.
void PublishCreatorLocked(DicoEntry& target, void* fn) {
  if (fn != nullptr && target.creator.load(std::memory_order_relaxed) == nullptr) {
    target.creator.store(fn, std::memory_order_seq_cst);
  }
}

// Every field is attempted, even after an earlier one could not be interned. The string pool's
// lock is taken once for all the names of the record (it nests inside the dictionary lock).
bool FillNamesLocked(DicoEntry& target, const DicoStore::Names& names, void* fn) {
  bool ok;
  {
    ScopedLock pool(SharedLocks::StringPoolLock());
    ok = FillNameLocked(target.class_name, names.cls);
    ok = FillNameLocked(target.interface_name, names.itf) && ok;
    ok = FillNameLocked(target.library_name, names.lib) && ok;
    ok = FillNameLocked(target.itf_leaf, names.leaf) && ok;
    ok = FillNameLocked(target.extended_by, names.ext) && ok;
  }
  PublishCreatorLocked(target, fn);
  return ok;
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

DicoEntry* InsertByGuidsLocked(const _GUID* clsid, const _GUID* iid, void* fn, DicoEntry* rec,
                               bool& outOfMemory)
    EXCLUSIVE_LOCKS_REQUIRED(SharedLocks::DictionaryLock()) {
  const DicoIndex::Place place = LocateGuidsLocked(clsid, iid);
  DicoEntry* target = place.item;
  DicoEntry* created = nullptr;
  if (target != nullptr) {
    if (rec != nullptr && rec != target) return nullptr;
  } else {
    if (!DicoIndex::HasRoom(place)) return outOfMemory = true, nullptr;
    target = rec;
    if (target == nullptr) {
      created = NewRecordLocked();
      if (created == nullptr) return outOfMemory = true, nullptr;
      target = created;
    }
    // Both empty fields are set even when the other one clashes; they stay set on failure.
    const bool classMatches = SetOrMatchGuidLocked(target->class_id, clsid, outOfMemory);
    const bool interfaceMatches = SetOrMatchGuidLocked(target->interface_id, iid, outOfMemory);
    if (!classMatches || !interfaceMatches) {
      DiscardRecordLocked(created);
      return nullptr;
    }
  }

  void* creator = target->creator.load(std::memory_order_relaxed);
  if (creator != nullptr && creator != fn) {
    DiscardRecordLocked(created);
    return nullptr;
  }
  PublishCreatorLocked(*target, fn);
  if (place.item == nullptr) g_guids.Add(place, target);
  return target;
}

}  // namespace

// Through stdio like every other message of the system, so that the lines keep their order
// whatever buffering a client gives stderr; the stream's own lock keeps one line whole.
// An observer is told the same bytes; the message carries no file or line, it belongs to the
// line being read when the insert came from a dictionary file.
void DicoStore::ReportInsertFailure() {
  static constexpr char kInsertFailed[] = "Problem allocating structure dico\n";
  std::fputs(kInsertFailed, stderr);
  if (zelsysts::Observed()) {
    zelsysts::Observation observation{zelsysts::Step::kMessage};
    observation.text[0] = kInsertFailed;
    zelsysts::Observe(observation);
  }
}

ZELSmartMutex& DicoStore::DictionaryLock() {
  return SharedLocks::DictionaryLock();
}

void DicoStore::Initialize() {
  // Nothing to clear: the tables are constant-initialized empty. The flag records the call.
  g_initialized.Run(SharedLocks::DictionaryLock(), [] {});
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

DicoStore::Names DicoStore::PrepareNames(const char* cls, const char* itf, const char* lib,
                                         const char* leaf, const char* ext) {
  Names names{StringPool::Prepare(cls),
              StringPool::Prepare(itf),
              StringPool::Prepare(lib != nullptr ? WithoutLibPrefix(lib) : nullptr),
              StringPool::Prepare(leaf),
              StringPool::Prepare(ext),
              0};
  names.pair_hash = HashOfPair(names.cls.hash, names.itf.hash);
  return names;
}

// Starts loading the slots that an insert of names will probe first (the name table's and the
// string pool's), so that their cache misses overlap. A hint: the indexes' Prefetch reads only
// their atomics, so it needs no lock.
static void PrefetchForInsert(const DicoStore::Names& names) NO_THREAD_SAFETY_ANALYSIS {
  g_names.Prefetch(names.pair_hash);
  for (const StringPool::Text* text : {&names.cls, &names.itf, &names.lib, &names.leaf, &names.ext})
    StringPool::Prefetch(*text);
}

DicoStore::NamePlace DicoStore::LocateByNamesLocked(const Names& names) {
  const char* cls = names.cls.text;
  const char* itf = names.itf.text;
  return g_names.Locate(names.pair_hash, [cls, itf](const DicoEntry* e) {
    return std::strcmp(e->class_name, cls) == 0 && std::strcmp(e->interface_name, itf) == 0;
  });
}

DicoEntry* DicoStore::InsertByNamesAtLocked(const NamePlace& place, const Names& names, void* fn,
                                            DicoEntry* rec, bool& outOfMemory) {
  const char* cls = names.cls.text;
  const char* itf = names.itf.text;
  DicoEntry* found = place.item;
  DicoEntry* target = found;
  if (found != nullptr) {
    if (rec != nullptr && rec != found) return nullptr;
  } else if (rec != nullptr) {
    if (rec->class_name != nullptr && std::strcmp(rec->class_name, cls) != 0) return nullptr;
    target = rec;
  }

  // A record made here has nothing set yet, so only a found or given one can conflict.
  if (target != nullptr &&
      NamesConflictLocked(*target, itf, names.lib.text, names.leaf.text, names.ext.text, fn)) {
    return nullptr;
  }

  DicoEntry* created = nullptr;
  if (found == nullptr) {
    if (!DicoIndex::HasRoom(place)) return outOfMemory = true, nullptr;
    if (target == nullptr) {
      created = NewRecordLocked();
      if (created == nullptr) return outOfMemory = true, nullptr;
      target = created;
    }
  }

  if (!FillNamesLocked(*target, names, fn)) {
    // Only the interning can fail here. Nothing was linked: a record made here is kept aside.
    outOfMemory = true;
    DiscardRecordLocked(created);
    return nullptr;
  }
  if (found == nullptr) g_names.Add(place, target);
  return target;
}

DicoEntry* DicoStore::InsertByNames(const char* cls, const char* itf, const char* lib,
                                    const char* leaf, const char* ext, void* fn, DicoEntry* rec,
                                    bool* outOfMemory) {
  if (cls == nullptr || itf == nullptr) return nullptr;
  const Names names = PrepareNames(cls, itf, lib, leaf, ext);
  PrefetchForInsert(names);
  DicoEntry* result;
  bool lacked = false;
  {
    ScopedLock lock(SharedLocks::DictionaryLock());
    result = InsertByNamesAtLocked(LocateByNamesLocked(names), names, fn, rec, lacked);
  }
  if (result == nullptr) ReportInsertFailure();
  if (lacked && outOfMemory != nullptr) *outOfMemory = true;
  return result;
}

DicoEntry* DicoStore::InsertByGuids(const _GUID* clsid, const _GUID* iid, void* fn, DicoEntry* rec,
                                    bool* outOfMemory) {
  if (fn == nullptr || clsid == nullptr || iid == nullptr) return nullptr;
  DicoEntry* result;
  bool lacked = false;
  {
    ScopedLock lock(SharedLocks::DictionaryLock());
    result = InsertByGuidsLocked(clsid, iid, fn, rec, lacked);
  }
  if (result == nullptr) ReportInsertFailure();
  if (lacked && outOfMemory != nullptr) *outOfMemory = true;
  return result;
}

DicoEntry* DicoStore::FindByNames(const char* className, const char* interfaceName) {
  if (className == nullptr || interfaceName == nullptr) return nullptr;
  const uint64_t hash =
      HashOfPair(StringPool::Prepare(className).hash, StringPool::Prepare(interfaceName).hash);
  ScopedLock lock(SharedLocks::DictionaryLock());
  return g_names.Find(hash, [className, interfaceName](const DicoEntry* e) {
    return std::strcmp(e->class_name, className) == 0 &&
           std::strcmp(e->interface_name, interfaceName) == 0;
  });
}

DicoEntry* DicoStore::FindByGuids(const _GUID* classId, const _GUID* interfaceId) {
  if (classId == nullptr || interfaceId == nullptr) return nullptr;
  const uint64_t hash = HashOfGuids(classId, interfaceId);
  ScopedLock lock(SharedLocks::DictionaryLock());
  return g_guids.Find(hash, [classId, interfaceId](const DicoEntry* e) {
    return SameGuid(e->class_id, classId) && SameGuid(e->interface_id, interfaceId);
  });
}

void DicoStore::SetAllocatorForTesting(void* (*allocate)(size_t)) {
  ScopedLock lock(SharedLocks::DictionaryLock());
  g_names.SetAllocator(allocate);
  g_guids.SetAllocator(allocate);
  g_records.SetAllocator(allocate);
}
