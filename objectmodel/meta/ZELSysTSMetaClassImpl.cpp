// The implementation meta object: its interface table (sorted answers, positive and negative)
// and the search order of FindInterfaceCreator. The dictionary search itself is in
// InterfaceResolution.cpp.
#include "meta/ZELSysTSMetaClassImpl.h"

#include <cstdlib>
#include <new>

#include "core/ScopedLock.h"
#include "dictionary/GuidPool.h"

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

uint32_t LittleEndianWord(const unsigned char* bytes) {
  return static_cast<uint32_t>(bytes[0]) | static_cast<uint32_t>(bytes[1]) << 8 |
         static_cast<uint32_t>(bytes[2]) << 16 | static_cast<uint32_t>(bytes[3]) << 24;
}

int CompareEntries(const void* a, const void* b) {
  return ZELSysTSMetaClassImpl::CompareIid(static_cast<const ItfTableEntry*>(a)->iid,
                                           static_cast<const ItfTableEntry*>(b)->iid);
}

}  // namespace

ZELSysTSMetaClassImpl::ZELSysTSMetaClassImpl(const _GUID* classId, const char* className,
                                             ZELSysTSMetaClass* baseMeta)
    : ZELSysTSMetaClassBase(classId, className, baseMeta),
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

int ZELSysTSMetaClassImpl::CompareIid(const _GUID* a, const _GUID* b) {
  const auto* x = reinterpret_cast<const unsigned char*>(a);
  const auto* y = reinterpret_cast<const unsigned char*>(b);
  for (int word = 0; word < 4; ++word) {
    const uint32_t wx = LittleEndianWord(x + 4 * word);
    const uint32_t wy = LittleEndianWord(y + 4 * word);
    if (wx != wy) return wx < wy ? -1 : 1;
  }
  return 0;
}

// Lookups and recordings lock the table separately; the search in between runs unlocked, so
// that a library loaded by it may register meta objects and query other objects.
ZELSysTSInterfaceCreator ZELSysTSMetaClassImpl::FindInterfaceCreator(const _GUID& iid) {
  const ZELSysTSInterfaceCreator known = LookupInterface(iid);
  if (known == AbsentMarker()) return nullptr;
  if (known != nullptr) return known;

  const bool record = class_id != nullptr;
  if (const ZELSysTSInterfaceCreator found = FindInDictionary(iid)) {
    if (record) RecordInterface(iid, found);
    return found;
  }
  if (base_meta != nullptr) {
    // A plain base answers null and ends the walk; an implementation base runs this same search
    // and records the answer in its own table as well.
    auto* base = static_cast<ZELSysTSMetaClassBase*>(base_meta);
    if (const ZELSysTSInterfaceCreator inherited = base->FindInterfaceCreator(iid)) {
      if (record) RecordInterface(iid, inherited);
      return inherited;
    }
  }
  if (record) RecordInterface(iid, AbsentMarker());
  return nullptr;
}

ZELSysTSInterfaceCreator ZELSysTSMetaClassImpl::LookupInterface(const _GUID& iid) {
  ScopedLock lock(mutex);
  if (itf_count == 0) return nullptr;
  ItfTableEntry key = {&iid, nullptr};
  const auto* hit = static_cast<const ItfTableEntry*>(
      std::bsearch(&key, itf_table, itf_count, sizeof(ItfTableEntry), &CompareEntries));
  return hit != nullptr ? hit->creator : nullptr;
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

uint16_t ZELSysTSMetaClassImpl::ItfCountForTesting() {
  ScopedLock lock(mutex);
  return itf_count;
}

uint16_t ZELSysTSMetaClassImpl::ItfCapacityForTesting() {
  ScopedLock lock(mutex);
  return itf_capacity;
}

ItfTableEntry ZELSysTSMetaClassImpl::ItfEntryForTesting(uint16_t index) {
  ScopedLock lock(mutex);
  if (index >= itf_count) return ItfTableEntry{nullptr, nullptr};
  return itf_table[index];
}
