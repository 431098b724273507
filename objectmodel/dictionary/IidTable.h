// IidTable: the interface identifier table, filled from ".iidts" files. Knows each interface by
// name and by IID in both directions and keeps the relation one-to-one.
//
// Two indexes (by IID, by name) lead to shared entries. Nothing is ever removed.
//
// Thread safety: inserts run only during the one load of the dictionary files, serialised by
// the dictionary lock that the loader holds; lookups happen after the load, when the table no
// longer changes, so neither takes a lock. The table lock (util/LockOrder.h)
// guards only the one-time initialisation.
#pragma once

#include <cstddef>

#include "ZELSysTSTypes.h"

// The identifier tables' bucket functions (1024 buckets; the tables themselves find a key through
// their hash indexes). Sum of i * (signed) byte[i] over the 16 bytes in memory order, low 10 bits.
int IdentifierBucket(const _GUID& guid);
// Sum of i * (signed) name[i], low 10 bits. Empty and one-character names give 0.
int InterfaceNameBucket(const char* name);

struct IidEntry {
  const _GUID* interface_id;   // pooled
  const char* interface_name;  // pooled
};

class IidTable {
 public:
  static constexpr int kBuckets = 1024;

  // 1 when (iid, name) is now known (added, or known exactly so already); 0 when the IID has
  // another name or the name another IID; -1 when memory ran out (the table is as it was).
  // Writes nothing.
  static int Insert(const _GUID& iid, const char* name);
  // The pooled name of iid, or null. Does not initialise the table.
  static const char* FindName(const _GUID& iid);
  // The pooled IID of name, or null. Does not initialise the table.
  static const _GUID* FindIid(const char* name);
  // Marks the table initialised, once, under SharedLocks::IidTableLock() (it needs no clearing).
  static void Initialize();

  // Test seam: the allocation function for the entries' arena and the indexes (malloc by default);
  // null restores it. Called before any insert.
  static void SetAllocatorForTesting(void* (*allocate)(size_t));
};
