// DicoEntry: one record of the dictionary: which class offers which interface, in which library,
// created by which function. Every field is a pointer, null while unknown.
//
// Fields 1 to 7 point into the pools and are never freed through the record. They are read and
// written only under the dictionary lock. `creator` is written at most once, from null to its
// value, with a sequentially consistent store (a full fence), and is read without the lock.
#pragma once

#include <atomic>

#include "ZELSysTSTypes.h"

struct DicoEntry {
  const _GUID* class_id;       // first key of the GUID table
  const _GUID* interface_id;   // second key of the GUID table
  const char* class_name;      // first key of the name table
  const char* interface_name;  // second key of the name table
  const char* library_name;    // implementing library, without a leading "lib"
  const char* itf_leaf;        // ITFLEAF value of a ".dicts" line
  const char* extended_by;     // EXTENDED_BY value of a ".dicts" line
  std::atomic<void*> creator;  // creation function; for a "MetaObject" record, the meta object

  void* Creator() const { return creator.load(std::memory_order_seq_cst); }
};

static_assert(sizeof(DicoEntry) == 8 * sizeof(void*), "a DicoEntry is eight pointer fields");
