// ZELSysTSMetaClassImpl: meta object of an implementation class (kind 1). Adds the interface
// table: the answers already found for this class, sorted by IID so that a repeated
// QueryInterface is one binary search, including remembered negative answers (AbsentMarker()).
//
// The table holds at most 65,535 entries (its count is 16-bit); an answer found past that is
// returned but not recorded, so the search for it runs again on the next query.
//
// Thread safety: the table (itf_table, itf_count, itf_capacity) is read and written only under
// `mutex`, locked separately for each lookup and each recording; no lock of this class is held
// while the dictionary is searched or a library is loaded. Two threads resolving the same
// interface at once may both record it; both get the same creator.
#pragma once

#include <cstdint>
#include <cstring>

#include "ZELSysTSMutex.h"
#include "meta/ZELSysTSMetaClassBase.h"
#include "util/ScopedLock.h"
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
  // a negative one reached while memory ran out (the next query searches again) and any past the
  // table's largest size.
  ZELSysTSInterfaceCreator FindInterfaceCreator(const _GUID& iid) override;
  // The same, called without the virtual call by an object that knows its meta object's class.
  ZELSysTSInterfaceCreator FindCreator(const _GUID& iid) {
    const ZELSysTSInterfaceCreator known = LookupInterface(iid);
    if (known != nullptr) return known == AbsentMarker() ? nullptr : known;
    bool lacked = false;
    return ResolveInterface(iid, lacked);
  }
  // The same; `lacked` is set to true when the search ran out of memory (here or in a base), so
  // that the null answer may be wrong.
  ZELSysTSInterfaceCreator ResolveInterface(const _GUID& iid, bool& lacked);
  // What the table records for iid (a creator or AbsentMarker()), or null. Takes `mutex`.
  ZELSysTSInterfaceCreator LookupInterface(const _GUID& iid) LOCKS_EXCLUDED(mutex) {
    ScopedLock lock(mutex);
    const int32_t at = FindLocked(iid);
    return at < 0 ? nullptr : itf_table[at].creator;
  }
  // Inserts (iid, creator) at its place in IID order, after any equal key: the order a full sort
  // gives. Past 65,535 entries nothing more is recorded. Takes `mutex`.
  void RecordInterface(const _GUID& iid, ZELSysTSInterfaceCreator creator) LOCKS_EXCLUDED(mutex);
  // The creator found through the dictionary and the implementation libraries, or null. `lacked`
  // is set to true when the null may be wrong: the dictionary is not loaded, or memory ran out
  // (composing the function's name, or in the dynamic loader).
  ZELSysTSInterfaceCreator FindInDictionary(const _GUID& iid, bool& lacked);

  // The private marker recorded for "searched before, not found"; never handed to callers.
  static ZELSysTSInterfaceCreator AbsentMarker() { return &CreateNothing; }

 private:
  // Tells the observer what the search recorded for iid (zelsysts::kAnswer*).
  void ObserveAnswer(const _GUID& iid, long answer);

 protected:
  // Guards the interface table; never held with the dictionary lock or across a library call.
  // Held inside the meta object: building a meta object allocates no separate mutex.
  ZELInlineSmartMutex mutex;
  // itf_capacity entries from malloc (grown by realloc), the first itf_count in use, sorted.
  ItfTableEntry* itf_table GUARDED_BY(mutex);
  uint16_t itf_count GUARDED_BY(mutex);
  uint16_t itf_capacity GUARDED_BY(mutex);

 private:
  // The absent marker: a creation function that creates nothing.
  static IUnknown* CreateNothing(ZELSysTSBaseUnknown*, unsigned char);

  // The position in the table of an entry for iid, or -1: a binary search in IID order, written
  // out rather than through bsearch so that the comparison is inlined (this lookup is the
  // hottest path of the library). The order's four little-endian 32-bit words are compared two
  // at a time: a 64-bit load of words k and k+1, rotated by 32 bits, holds word k in its high
  // half, so two such numbers compare as the two words in turn.
  static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "IID words are little-endian loads");
  static uint64_t IidHalf(const _GUID& iid, int half) {
    uint64_t words;
    std::memcpy(&words, reinterpret_cast<const unsigned char*>(&iid) + 8 * half, sizeof words);
    return words << 32 | words >> 32;
  }
  int32_t FindLocked(const _GUID& iid) const EXCLUSIVE_LOCKS_REQUIRED(mutex) {
    const uint64_t key0 = IidHalf(iid, 0);
    const uint64_t key1 = IidHalf(iid, 1);
    uint32_t lo = 0;
    uint32_t hi = itf_count;
    while (lo < hi) {
      const uint32_t mid = lo + (hi - lo) / 2;
      const uint64_t at0 = IidHalf(*itf_table[mid].iid, 0);
      if (at0 == key0) {
        const uint64_t at1 = IidHalf(*itf_table[mid].iid, 1);
        if (at1 == key1) return static_cast<int32_t>(mid);
        if (at1 < key1) {
          lo = mid + 1;
        } else {
          hi = mid;
        }
      } else if (at0 < key0) {
        lo = mid + 1;
      } else {
        hi = mid;
      }
    }
    return -1;
  }
};
