// ZELSysTSMetaClassImpl: meta object of an implementation class (kind 1). Adds the interface
// table: the answers already found for this class, sorted by IID so that a repeated
// QueryInterface is one binary search, including remembered negative answers (AbsentMarker()).
//
// Thread safety: the table (itf_table, itf_count, itf_capacity) is read and written only under
// `mutex`, locked separately for each lookup and each recording; no lock of this class is held
// while the dictionary is searched or a library is loaded. Two threads resolving the same
// interface at once may both record it; both get the same creator.
#pragma once

#include <cstdint>

#include "ZELSysTSMutex.h"
#include "meta/ZELSysTSMetaClassBase.h"
#include "util/ThreadAnnotations.h"

struct ItfTableEntry {
  const _GUID* iid;                  // pooled
  ZELSysTSInterfaceCreator creator;  // or AbsentMarker()
};

class ZELSysTSMetaClassImpl : public ZELSysTSMetaClassBase {
 public:
  // Empty interface table.
  ZELSysTSMetaClassImpl(const _GUID* classId, const char* className, ZELSysTSMetaClass* baseMeta);
  ~ZELSysTSMetaClassImpl() override;

  // Table, then dictionary and libraries, then the base class; every answer is recorded, except
  // a negative one reached while memory ran out (the next query searches again).
  ZELSysTSInterfaceCreator FindInterfaceCreator(const _GUID& iid) override;
  // The same; `lacked` is set to true when the search ran out of memory (here or in a base), so
  // that the null answer may be wrong.
  ZELSysTSInterfaceCreator ResolveInterface(const _GUID& iid, bool& lacked);
  // What the table records for iid (a creator or AbsentMarker()), or null. Takes `mutex`.
  ZELSysTSInterfaceCreator LookupInterface(const _GUID& iid) LOCKS_EXCLUDED(mutex);
  // Appends (iid, creator) and sorts the table. Past 65,532 entries nothing more is recorded.
  // Takes `mutex`.
  void RecordInterface(const _GUID& iid, ZELSysTSInterfaceCreator creator) LOCKS_EXCLUDED(mutex);
  // The creator found through the dictionary and the implementation libraries, or null. `lacked`
  // is set to true when the null may be wrong: the dictionary is not loaded, or memory ran out
  // (composing the function's name, or in the dynamic loader).
  ZELSysTSInterfaceCreator FindInDictionary(const _GUID& iid, bool& lacked);

  // The private marker recorded for "searched before, not found"; never handed to callers.
  static ZELSysTSInterfaceCreator AbsentMarker();

 private:
  // Tells the observer what the search recorded for iid (zelsysts::kAnswer*).
  void ObserveAnswer(const _GUID& iid, long answer);

 protected:
  // Guards the interface table; never held with the dictionary lock or across a library call.
  ZELSmartMutex mutex;
  ItfTableEntry* itf_table GUARDED_BY(mutex);
  uint16_t itf_count GUARDED_BY(mutex);
  uint16_t itf_capacity GUARDED_BY(mutex);
};
