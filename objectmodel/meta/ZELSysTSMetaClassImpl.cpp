// The implementation meta object: its interface table (sorted answers, positive and negative)
// and the search order of FindInterfaceCreator. The dictionary search itself is in
// InterfaceResolution.cpp.
#include "meta/ZELSysTSMetaClassImpl.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "ZELSysTSGuid.h"
#include "meta/ResolutionObservation.h"
#include "pools/GuidPool.h"
#include "util/ScopedLock.h"

namespace {

// Room added to the interface table each time it is full. With a 16-bit capacity the table
// stops growing at 65,532 entries; answers past that are returned but not recorded.
constexpr uint32_t kItfGrowth = 4;
constexpr uint32_t kItfMaxCapacity = 0xFFFF / kItfGrowth * kItfGrowth;

// The absent marker: a creation function that creates nothing. Its address is reserved for
// "searched before, not found" and never reaches a caller.
IUnknown* CreateNothing(ZELSysTSBaseUnknown*, unsigned char) {
  return nullptr;
}

int CompareEntries(const void* a, const void* b) {
  return ZELSysTSCompareIid(*static_cast<const ItfTableEntry*>(a)->iid,
                            *static_cast<const ItfTableEntry*>(b)->iid);
}

}  // namespace

ZELSysTSMetaClassImpl::ZELSysTSMetaClassImpl(const _GUID* classId, const char* className,
                                             ZELSysTSMetaClass* baseMeta)
    : ZELSysTSMetaClassBase(classId, className, baseMeta),
      mutex(0),
      itf_table(nullptr),
      itf_count(0),
      itf_capacity(0) {}

ZELSysTSMetaClassImpl::~ZELSysTSMetaClassImpl() {
  delete[] itf_table;
  itf_table = nullptr;
  itf_count = 0;
  itf_capacity = 0;
}

ZELSysTSInterfaceCreator ZELSysTSMetaClassImpl::AbsentMarker() {
  return &CreateNothing;
}

// Lookups and recordings lock the table separately; the search in between runs unlocked, so
// that a library loaded by it may register meta objects and query other objects.
ZELSysTSInterfaceCreator ZELSysTSMetaClassImpl::FindInterfaceCreator(const _GUID& iid) {
  // The answer recorded before, on the path of every repeated QueryInterface.
  const ZELSysTSInterfaceCreator known = LookupInterface(iid);
  if (known != nullptr) return known == AbsentMarker() ? nullptr : known;
  bool lacked = false;
  return ResolveInterface(iid, lacked);
}

// The observation points of the search (none on FindInterfaceCreator's path of a recorded
// answer) report each step; what the search does is the same with or without an observer.
ZELSysTSInterfaceCreator ZELSysTSMetaClassImpl::ResolveInterface(const _GUID& iid, bool& lacked) {
  using zelsysts::Observed;
  const ZELSysTSInterfaceCreator known = LookupInterface(iid);
  if (Observed()) {
    const long hit = known == nullptr          ? zelsysts::kTableMiss
                     : known == AbsentMarker() ? zelsysts::kTableAbsent
                                               : zelsysts::kTableCreator;
    ObserveResolution(zelsysts::Step::kTableLookup, class_name, nullptr, nullptr, &iid, nullptr,
                      hit);
  }
  if (known == AbsentMarker()) return nullptr;
  if (known != nullptr) return known;

  const bool record = class_id != nullptr;
  if (const ZELSysTSInterfaceCreator found = FindInDictionary(iid, lacked)) {
    if (record) RecordInterface(iid, found);
    if (Observed())
      ObserveAnswer(iid, record ? zelsysts::kAnswerFound : zelsysts::kAnswerNotRecorded);
    return found;
  }
  if (base_meta != nullptr) {
    // A plain base answers null and ends the walk; an implementation base runs this same search
    // and records the answer in its own table as well.
    // A base meta object written elsewhere offers no interfaces. Among the library's own, base
    // chains cannot loop (a base exists before the class that names it).
    ZELSysTSMetaClassBase* base =
        IsLibraryMetaObject(base_meta) ? static_cast<ZELSysTSMetaClassBase*>(base_meta) : nullptr;
    auto* implBase = dynamic_cast<ZELSysTSMetaClassImpl*>(base);
    if (Observed()) {
      ObserveResolution(zelsysts::Step::kBaseClass, class_name,
                        base != nullptr ? base->GetClassName() : nullptr, nullptr, &iid, nullptr,
                        implBase != nullptr ? zelsysts::kBaseSearched : zelsysts::kBasePlain);
    }
    const ZELSysTSInterfaceCreator inherited =
        implBase != nullptr ? implBase->ResolveInterface(iid, lacked)
                            : (base != nullptr ? base->FindInterfaceCreator(iid) : nullptr);
    if (inherited != nullptr) {
      if (record) RecordInterface(iid, inherited);
      if (Observed()) {
        ObserveAnswer(iid, record ? zelsysts::kAnswerInherited : zelsysts::kAnswerNotRecorded);
      }
      return inherited;
    }
  } else if (Observed()) {
    ObserveResolution(zelsysts::Step::kBaseClass, class_name, nullptr, nullptr, &iid, nullptr,
                      zelsysts::kBaseNone);
  }
  // "Not found" is remembered only when the whole search could look.
  if (record && !lacked) RecordInterface(iid, AbsentMarker());
  if (Observed()) {
    ObserveAnswer(iid, record && !lacked ? zelsysts::kAnswerAbsent : zelsysts::kAnswerNotRecorded);
  }
  return nullptr;
}

void ZELSysTSMetaClassImpl::ObserveAnswer(const _GUID& iid, long answer) {
  ObserveResolution(zelsysts::Step::kAnswerRecorded, class_name, nullptr, nullptr, &iid, nullptr,
                    answer);
}

ZELSysTSInterfaceCreator ZELSysTSMetaClassImpl::LookupInterface(const _GUID& iid) {
  ScopedLock lock(mutex);
  if (itf_count == 0) return nullptr;
  // A binary search in IID order, written out rather than through bsearch so that the
  // comparison is inlined: this lookup is the hottest path of the library.
  // The words of ZELSysTSCompareIid's order, read as plain loads: the machine is little-endian.
  static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "IID words are little-endian loads");
  uint32_t key[4];
  std::memcpy(key, &iid, sizeof key);
  uint32_t lo = 0;
  uint32_t hi = itf_count;
  while (lo < hi) {
    const uint32_t mid = lo + (hi - lo) / 2;
    uint32_t words[4];
    std::memcpy(words, itf_table[mid].iid, sizeof words);
    int order = 0;
    for (int k = 0; k < 4 && order == 0; ++k) {
      order = words[k] < key[k] ? -1 : (words[k] > key[k] ? 1 : 0);
    }
    if (order == 0) return itf_table[mid].creator;
    if (order < 0) {
      lo = mid + 1;
    } else {
      hi = mid;
    }
  }
  return nullptr;
}

// An existing entry for iid is not looked for: two threads that resolved the same interface at
// once both record it, and a search finds one of the two equal keys, which carry one creator.
// When memory runs out, or the table is at its largest, nothing is recorded and the table stays
// as it was.
void ZELSysTSMetaClassImpl::RecordInterface(const _GUID& iid, ZELSysTSInterfaceCreator creator) {
  ScopedLock lock(mutex);
  if (itf_count == itf_capacity) {
    if (itf_capacity >= kItfMaxCapacity) return;
    const uint32_t capacity = itf_capacity + kItfGrowth;
    ItfTableEntry* grown = new (std::nothrow) ItfTableEntry[capacity]();
    if (grown == nullptr) return;
    for (uint32_t i = 0; i < itf_count; ++i) grown[i] = itf_table[i];
    delete[] itf_table;
    itf_table = grown;
    itf_capacity = static_cast<uint16_t>(capacity);
  }
  const _GUID* pooled = GuidPool::Intern(&iid);
  if (pooled == nullptr) return;
  itf_table[itf_count].iid = pooled;
  itf_table[itf_count].creator = creator;
  ++itf_count;
  if (itf_count > 1) std::qsort(itf_table, itf_count, sizeof(ItfTableEntry), &CompareEntries);
}
