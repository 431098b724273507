// The queries of the dictionary store that may first have the dictionary files read
// (DicoLoader::Load): lookups by names or identifiers, the meta object of a class identifier and
// the name of a GUID. They sit with the loader, above the store, so that the in-memory tables
// never depend on the reading of files. The loader takes the dictionary lock for the whole
// reading; the lookups take it afterwards, so no lock is held here across the load.
#include "dictionary/DicoStore.h"
#include "dictionary/IidTable.h"
#include "dictionaryfiles/DicoLoader.h"

namespace {

// The load flag value that asks for the dictionary files to be read first.
constexpr int16_t kLoadFirst = 1;

}  // namespace

DicoEntry* DicoStore::LookupByGuids(const _GUID* classId, const _GUID* interfaceId,
                                    int16_t loadFlag) {
  if (loadFlag == kLoadFirst) DicoLoader::Load();
  return FindByGuids(classId, interfaceId);
}

DicoEntry* DicoStore::LookupByNames(const char* className, const char* interfaceName,
                                    int16_t loadFlag) {
  if (className == nullptr || interfaceName == nullptr) return nullptr;
  if (loadFlag == kLoadFirst) DicoLoader::Load();
  return FindByNames(className, interfaceName);
}

ZELSysTSMetaClass* DicoStore::MetaObjectOfClassId(const _GUID* classId) {
  DicoLoader::Load();
  DicoEntry* record = FindByGuids(classId, &CLSID_ZELSysTSMetaClass);
  return record != nullptr ? static_cast<ZELSysTSMetaClass*>(record->Creator()) : nullptr;
}

const char* DicoStore::NameOfGuid(const _GUID* guid) {
  // An interface registered as a class of its own is named by its meta object.
  if (ZELSysTSMetaClass* meta = MetaObjectOfClassId(guid)) {
    if (const char* name = meta->GetClassName()) return name;
  }
  if (guid == nullptr) return nullptr;
  return IidTable::FindName(*guid);
}
