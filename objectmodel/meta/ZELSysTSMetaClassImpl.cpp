// The implementation meta object: its interface table (sorted answers, positive and negative)
// and the search order of FindInterfaceCreator. The dictionary search itself is in
// InterfaceResolution.cpp.
#include "meta/ZELSysTSMetaClassImpl.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "ZELSysTSGuid.h"
#include "meta/ResolutionObservation.h"
#include "pools/GuidPool.h"
#include "util/ScopedLock.h"

namespace {

// Room added to the interface table each time it is full; the last growth stops at the largest
// 16-bit count, so the table holds up to 65,535 entries.
constexpr uint32_t kItfGrowth = 4;
constexpr uint32_t kItfMaxCapacity = 0xFFFF;

}  // namespace

IUnknown* ZELSysTSMetaClassImpl::CreateNothing(ZELSysTSBaseUnknown*, unsigned char) {
  return nullptr;
}

ZELSysTSMetaClassImpl::ZELSysTSMetaClassImpl(const _GUID* classId, const char* className,
                                             ZELSysTSMetaClass* baseMeta)
    : ZELSysTSMetaClassBase(classId, className, baseMeta),
      mutex(),
      itf_table(nullptr),
      itf_count(0),
      itf_capacity(0) {}

ZELSysTSMetaClassImpl::~ZELSysTSMetaClassImpl() {
  std::free(itf_table);
  itf_table = nullptr;
  itf_count = 0;
  itf_capacity = 0;
}

// Lookups and recordings lock the table separately; the search in between runs unlocked, so
// that a library loaded by it may register meta objects and query other objects.
ZELSysTSInterfaceCreator ZELSysTSMetaClassImpl::FindInterfaceCreator(const _GUID& iid) {
  return FindCreator(iid);
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

// An existing entry for iid is not looked for: two threads that resolved the same interface at
// once both record it, and a search finds one of the two equal keys, which carry one creator.
// The new entry goes after the last entry that does not come after it (binary search, then one
// move of the entries behind it), which keeps the table in the order a full sort gives. When
// memory runs out, or the table is at its largest, nothing is recorded and the table stays as it
// was.
void ZELSysTSMetaClassImpl::RecordInterface(const _GUID& iid, ZELSysTSInterfaceCreator creator) {
  ScopedLock lock(mutex);
  if (itf_count == itf_capacity) {
    if (itf_capacity >= kItfMaxCapacity) return;
    const uint32_t capacity = std::min(itf_capacity + kItfGrowth, kItfMaxCapacity);
    // realloc keeps the old array when it fails, and grows a large one mostly without copying.
    void* grown = std::realloc(itf_table, capacity * sizeof(ItfTableEntry));
    if (grown == nullptr) return;
    itf_table = static_cast<ItfTableEntry*>(grown);
    std::memset(itf_table + itf_count, 0, (capacity - itf_count) * sizeof(ItfTableEntry));
    itf_capacity = static_cast<uint16_t>(capacity);
  }
  const _GUID* pooled = GuidPool::Intern(&iid);
  if (pooled == nullptr) return;
  uint32_t lo = 0;
  uint32_t hi = itf_count;
  while (lo < hi) {
    const uint32_t mid = lo + (hi - lo) / 2;
    if (ZELSysTSCompareIid(*itf_table[mid].iid, *pooled) <= 0) {
      lo = mid + 1;
    } else {
      hi = mid;
    }
  }
  std::memmove(itf_table + lo + 1, itf_table + lo, (itf_count - lo) * sizeof(ItfTableEntry));
  itf_table[lo] = ItfTableEntry{pooled, creator};
  ++itf_count;
}
