#include <cstring>
#include <new>

#include "ZELSysTSObjectCreation.h"
#include "ZELThrLibraryManager.h"
#include "dictionary/ClsidTable.h"
#include "dictionary/DicoStore.h"
#include "dictionaryfiles/DicoLoader.h"
#include "util/ScopedLock.h"

namespace {

// What a library exports as "fctZELSysTSCreate<Class>".
typedef void* (*ExternalObjectFactory)(void*);
// What a library exports as "ZELSysTSDllGetClassObject".
typedef HRESULT (*ClassObjectGetter)(const _GUID&, const _GUID&, void**);

const char kFactoryPrefix[] = "fctZELSysTSCreate";

}  // namespace

void* ZELSysTSCreateExternalObject(const char* className, const char* libraryName, void* argument) {
  if (className == nullptr) return nullptr;

  DicoEntry* record = DicoStore::LookupByNames(className, "CreateInterface", 1);
  if (record != nullptr) {
    void* creator = record->Creator();
    if (creator != nullptr) {
      // Called as the type it was recorded with (ZELSysTSFillDictionary): the caller's argument
      // arrives as the first parameter, the thread-safe flag is 0.
      IUnknown* created = reinterpret_cast<ZELSysTSInterfaceCreator>(creator)(
          static_cast<ZELSysTSBaseUnknown*>(argument), 0);
      return static_cast<void*>(created);
    }
  }

  // The caller's library takes precedence over the one the dictionary records.
  const char* library = libraryName;
  if (library == nullptr && record != nullptr) {
    ScopedLock lock(DicoStore::DictionaryLock());  // record fields besides creator
    library = record->library_name;
  }
  if (library == nullptr) return nullptr;

  const size_t classLength = std::strlen(className);
  char* function = new (std::nothrow) char[classLength + 18];
  if (function == nullptr) return nullptr;
  std::memcpy(function, kFactoryPrefix, 17);
  std::memcpy(function + 17, className, classLength + 1);
  // Looked up on every call: nothing is cached between calls. No lock is held here.
  void* address = ZELThrLibraryManager::GetFunctionAddress(library, function);
  delete[] function;
  if (address == nullptr) return nullptr;
  return reinterpret_cast<ExternalObjectFactory>(address)(argument);
}

HRESULT ZELSysTSCreateInstance(const _GUID& clsid, const _GUID& iid, void** ppv) {
  DicoLoader::Load();
  const ClsidEntry* record = ClsidTable::Find(clsid);
  if (record == nullptr || record->library_name == nullptr) return E_FAIL;
  void* address =
      ZELThrLibraryManager::GetFunctionAddress(record->library_name, "ZELSysTSDllGetClassObject");
  if (address == nullptr) return E_FAIL;
  // *ppv belongs to the library's function from here on.
  return reinterpret_cast<ClassObjectGetter>(address)(clsid, iid, ppv);
}
