// Meta object records and registration. A class's meta object is recorded in one record that
// hangs under (class identifier, CLSID_ZELSysTSMetaClass) in the GUID table and under
// (class name, "MetaObject") in the name table; its `creator` holds the meta object. None of
// these operations has the dictionary files read.
//
// Each insert takes the dictionary lock by itself; a caller that needs a registration to be one
// atomic change holds the (recursive) dictionary lock around it. Register holds it itself from
// its one lookup by names to the insert at the place that lookup found.
#include "dictionary/DicoStore.h"
#include "util/ScopedLock.h"

namespace {

constexpr char kMetaObjectInterface[] = "MetaObject";

}  // namespace

DicoEntry* DicoStore::Register(const _GUID* clsid, const _GUID* iid, const char* cls,
                               const char* itf, const char* lib, void* fn, bool* outOfMemory) {
  const bool haveNames = cls != nullptr && itf != nullptr;
  if (clsid != nullptr && iid != nullptr) {
    // A record that the dictionary files made for the names gains the identifiers and the
    // creator, so that no second record is made for the class.
    if (!haveNames) return InsertByGuids(clsid, iid, fn, nullptr, outOfMemory);
    const Names names = PrepareNames(cls, itf, lib, nullptr, nullptr);
    DicoEntry* result;
    bool lacked = false;
    {
      ScopedLock lock(DictionaryLock());
      // The GUID insert leaves the name table alone, so the place stays valid.
      const NamePlace place = LocateByNamesLocked(names);
      DicoEntry* byGuids = InsertByGuids(clsid, iid, fn, place.item, outOfMemory);
      // Makes that record reachable by names too; when the GUID insert failed, the names are
      // recorded on their own.
      result = InsertByNamesAtLocked(place, names, fn, byGuids, lacked);
    }
    if (result == nullptr) ReportInsertFailure();
    if (lacked && outOfMemory != nullptr) *outOfMemory = true;
    return result;
  }
  if (!haveNames) return nullptr;
  return InsertByNames(cls, itf, lib, nullptr, nullptr, fn, nullptr, outOfMemory);
}

ZELSysTSMetaClass* DicoStore::FindMetaObject(const char* className) {
  if (className == nullptr) return nullptr;
  DicoEntry* record = FindByNames(className, kMetaObjectInterface);
  return record != nullptr ? static_cast<ZELSysTSMetaClass*>(record->Creator()) : nullptr;
}
