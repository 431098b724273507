// DicoStore: the process-wide in-memory dictionary.
//
// Records (DicoEntry) are reachable by (class name, interface name) through the name table and
// by (class identifier, interface identifier) through the GUID table. A pair is held at most once
// in a table, so a lookup has one answer. One record may stand in both tables (under one pair in
// each). The store owns every record; nothing is ever removed, so a returned record stays valid
// for the life of the process.
//
// Thread safety: the dictionary lock (DictionaryLock(), recursive) guards both tables, the
// initialized flag and the fields of every record except reads of `creator`. It is taken again
// by the thread that holds it: the loader holds it for the whole reading of the files, and
// registration holds it across a find-or-create. Pools are interned under it (pools' locks are
// innermost).
//
// Messages: a failed insert (a conflict, a name that cannot be interned, no memory) writes
// "Problem allocating structure dico\n" to standard error, once per failed insert.
//
// Out of memory: the inserts and Register set *outOfMemory (when given) to true when they failed
// for lack of memory (a larger table, a record, or the interning of a name or identifier) and leave
// it untouched otherwise, so that one flag can gather several inserts; a conflict does not set it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ZELSysTSMetaClass.h"
#include "ZELSysTSMutex.h"
#include "ZELSysTSTypes.h"
#include "dictionary/DicoEntry.h"
#include "pools/HashIndex.h"
#include "pools/StringPool.h"
#include "util/LockOrder.h"
#include "util/ThreadAnnotations.h"

class DicoStore {
 public:
  static constexpr int kBuckets = 4096;

  // ---- the store itself -------------------------------------------------------------------

  // The dictionary lock, SharedLocks::DictionaryLock() (util/LockOrder.h).
  static ZELSmartMutex& DictionaryLock() LOCK_RETURNED(SharedLocks::DictionaryLock());
  // Marks the store initialised (under the dictionary lock). The tables need no clearing: they
  // are constant-initialized empty, and the inserts work without it.
  static void Initialize();
  // True once Initialize has run.
  static bool IsInitialized();

  // The buckets of the dictionary's pairs (4096): signed-byte weighted sums (weights from 1) of
  // each name, xor'ed, |h % 4096|. The tables themselves find a pair through their hash index.
  static int NameBucket(const char* className, const char* interfaceName);
  // The same over the 16 bytes of each GUID.
  static int GuidBucket(const _GUID* classId, const _GUID* interfaceId);

  // Insert or merge by names. cls and itf are the key; lib, leaf, ext and fn may be null; rec is
  // an existing record to link under the names, or null. Fills only empty fields; a leading
  // "lib" of lib is cut off. Returns the record that now holds the pair, or null: silently for a
  // null key, with the message for a conflict or an interning failure (nothing changed then).
  static DicoEntry* InsertByNames(const char* cls, const char* itf, const char* lib,
                                  const char* leaf, const char* ext, void* fn, DicoEntry* rec,
                                  bool* outOfMemory = nullptr);
  // The names of an insert by names with their lengths and hashes (lib already without a leading
  // "lib"), and the hash of the pair (cls, itf), computed before any lock is taken.
  struct Names {
    StringPool::Text cls, itf, lib, leaf, ext;
    uint64_t pair_hash;
  };
  static Names PrepareNames(const char* cls, const char* itf, const char* lib, const char* leaf,
                            const char* ext);
  // Where the pair (names.cls, names.itf), both non-null, stands in the name table: its record,
  // or where a record for it goes. Valid until the next change of the name table; the caller
  // holds the dictionary lock across.
  using NamePlace = HashIndex<DicoEntry>::Place;
  static NamePlace LocateByNamesLocked(const Names& names)
      EXCLUSIVE_LOCKS_REQUIRED(SharedLocks::DictionaryLock());
  // InsertByNames at a place that LocateByNamesLocked gave for the names, without searching
  // again and without the message (the caller writes it for a null result). Sets outOfMemory as
  // below.
  static DicoEntry* InsertByNamesAtLocked(const NamePlace& place, const Names& names, void* fn,
                                          DicoEntry* rec, bool& outOfMemory)
      EXCLUSIVE_LOCKS_REQUIRED(SharedLocks::DictionaryLock());
  // Insert or merge by GUIDs. fn must not be null (null gives null silently). Returns the record
  // that now holds the pair, or null with the message on a conflict (null GUID fields of the
  // target may have been set by then).
  static DicoEntry* InsertByGuids(const _GUID* clsid, const _GUID* iid, void* fn, DicoEntry* rec,
                                  bool* outOfMemory = nullptr);

  // Writes the failure line of an insert to standard error.
  static void ReportInsertFailure();

  // Plain lookups under the dictionary lock; null when nothing is recorded. Never read files.
  static DicoEntry* FindByNames(const char* className, const char* interfaceName);
  static DicoEntry* FindByGuids(const _GUID* classId, const _GUID* interfaceId);

  // ---- meta object records ----------------------------------------------------------------

  // Records one entry under (clsid, iid) and (cls, itf) at once, merged with a record that the
  // dictionary files made for the names. Returns the record, or null. Never reads the files.
  // *outOfMemory as for the inserts, when either of them ran out of memory.
  static DicoEntry* Register(const _GUID* clsid, const _GUID* iid, const char* cls, const char* itf,
                             const char* lib, void* fn, bool* outOfMemory = nullptr);
  // The meta object recorded for className (its (className, "MetaObject") record), or null.
  // Never reads the files.
  static ZELSysTSMetaClass* FindMetaObject(const char* className);

  // ---- queries that may have the files read first ----------------------------------------
  // Defined with the loader (dictionaryfiles/DicoStoreQueries.cpp), which they call.

  // loadFlag 1: have the dictionary files read first (DicoLoader::Load); any other value looks
  // only at what the store holds now. Both identifiers must be non-null.
  static DicoEntry* LookupByGuids(const _GUID* classId, const _GUID* interfaceId, int16_t loadFlag);
  // As LookupByGuids; null when either name is null.
  static DicoEntry* LookupByNames(const char* className, const char* interfaceName,
                                  int16_t loadFlag);
  // The meta object recorded under (classId, CLSID_ZELSysTSMetaClass), or null. Reads the files
  // first.
  static ZELSysTSMetaClass* MetaObjectOfClassId(const _GUID* classId);
  // The name of a GUID: a registered meta object's class name first, then the interface
  // identifier table's name, else null. Reads the files first.
  static const char* NameOfGuid(const _GUID* guid);

  // Test seam: the allocation function for the records' arena blocks and the tables' arrays
  // (memory that free() releases, or null; malloc by default); null restores the default. A null
  // answer makes the insert that asked fail cleanly.
  static void SetAllocatorForTesting(void* (*allocate)(size_t));
};
