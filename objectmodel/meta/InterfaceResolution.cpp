// Resolution of an interface for an implementation class through the dictionary and the
// implementation libraries: ZELSysTSMetaClassImpl::FindInDictionary.
//
// Locking: no lock of the meta objects or of the dictionary is held while a library is loaded or
// a function looked up, so that the library's initialisation can register its classes and query
// objects. The dictionary queries and the insert each take the dictionary lock for their own
// duration; the text fields of a found record are copied under it. Every failure is a null
// result and writes nothing.
//
// Out of memory: a null that may be wrong (the dictionary could not be read, a name could not be
// composed, the dynamic loader ran out of memory) sets `lacked`, so that the caller does not
// remember it as "no such interface". The library manager answers null for every failure; a
// failure for lack of memory is told by errno, which the C library sets to ENOMEM then.
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "ZELThrLibraryManager.h"
#include "dictionary/DicoStore.h"
#include "dictionaryfiles/DicoLoader.h"
#include "meta/ZELSysTSMetaClassExt.h"
#include "meta/ZELSysTSMetaClassImpl.h"
#include "util/ScopedLock.h"

namespace {

// Prefix of every creation function that this search looks up.
constexpr char kCreatePrefix[] = "ZELSysTSCreate";

// The text fields of a dictionary record that the search reads. They are pooled, so the copies
// stay valid after the lock is released.
struct EntryNames {
  const char* library_name;
  const char* itf_leaf;
  const char* extended_by;
};

EntryNames NamesOf(const DicoEntry* entry) {
  ScopedLock lock(DicoStore::DictionaryLock());
  return EntryNames{entry->library_name, entry->itf_leaf, entry->extended_by};
}

// The effective meta object recorded for a class name, or null. Never reads the files.
ZELSysTSMetaClassBase* EffectiveMetaObjectNamed(const char* className) {
  return EffectiveMetaOf(DicoStore::FindMetaObject(className));
}

// "ZELSysTSCreate" + interface part + class part, from malloc (the caller frees it), or null.
char* ComposeCreatorName(const char* interfacePart, const char* classPart) {
  const size_t prefix = sizeof(kCreatePrefix) - 1;
  const size_t itf = std::strlen(interfacePart);
  const size_t cls = std::strlen(classPart);
  char* name = static_cast<char*>(std::malloc(prefix + itf + cls + 1));
  if (name == nullptr) return nullptr;
  std::memcpy(name, kCreatePrefix, prefix);
  std::memcpy(name + prefix, interfacePart, itf);
  std::memcpy(name + prefix + itf, classPart, cls + 1);
  return name;
}

// The library manager's answers, with errno cleared first so that ENOMEM afterwards tells a lack
// of memory from a library or function that is not there.
void* LoadLibraryNamed(const char* library, bool& lacked) {
  errno = 0;
  void* handle = ZELThrLibraryManager::LoadLibrary(library);
  if (handle == nullptr && errno == ENOMEM) lacked = true;
  return handle;
}

void* FunctionNamed(const char* library, const char* function, bool& lacked) {
  errno = 0;
  void* address = ZELThrLibraryManager::GetFunctionAddress(library, function);
  if (address == nullptr && errno == ENOMEM) lacked = true;
  return address;
}

}  // namespace

ZELSysTSInterfaceCreator ZELSysTSMetaClassImpl::FindInDictionary(const _GUID& iid, bool& lacked) {
  // The meta class identifier names no interface: the record under (class identifier,
  // CLSID_ZELSysTSMetaClass) holds the class's meta object, which must never be taken for a
  // creation function, whatever the dictionary files add to that record.
  if (iid == CLSID_ZELSysTSMetaClass) return nullptr;
  DicoLoader::Load();
  if (!DicoLoader::IsLoaded()) lacked = true;  // what is not read yet may hold the answer

  // An answer recorded by identifiers ends the search: a record with a library is a creation
  // function found before; one without is not an implementation (a meta object record, whose
  // creator is the meta object itself).
  if (class_id != nullptr) {
    if (DicoEntry* known = DicoStore::LookupByGuids(class_id, &iid, 1)) {
      if (void* creator = known->Creator()) {
        if (NamesOf(known).library_name == nullptr) return nullptr;
        return reinterpret_cast<ZELSysTSInterfaceCreator>(creator);
      }
    }
  }

  const char* interfaceName = DicoStore::NameOfGuid(&iid);
  if (interfaceName == nullptr) return nullptr;
  DicoEntry* entry = DicoStore::LookupByNames(class_name, interfaceName, 1);
  if (entry == nullptr) return nullptr;
  const EntryNames names = NamesOf(entry);

  // A leaf interface serves the request only if it derives from the requested interface.
  const char* interfacePart = interfaceName;
  if (names.itf_leaf != nullptr) {
    ZELSysTSMetaClass* leaf = DicoStore::FindMetaObject(names.itf_leaf);
    if (leaf == nullptr || leaf->IsAKindOf(&iid) == 0) return nullptr;
    interfacePart = names.itf_leaf;
  }

  // An extending class must be a registered extension that lists this class; its library is
  // loaded once if the extension has not registered yet.
  const char* classPart = class_name;
  if (names.extended_by != nullptr) {
    ZELSysTSMetaClassBase* extending = EffectiveMetaObjectNamed(names.extended_by);
    if (extending == nullptr) {
      if (LoadLibraryNamed(names.library_name, lacked) == nullptr) return nullptr;
      extending = EffectiveMetaObjectNamed(names.extended_by);
      if (extending == nullptr) return nullptr;
    }
    ZELSysTSMetaClassExt* extension = extending->GetExtensionMetaClass();
    if (extension == nullptr || extension->IsExtending(this) != 1) return nullptr;
    classPart = names.extended_by;
  }

  if (names.library_name == nullptr) return nullptr;
  char* function = ComposeCreatorName(interfacePart, classPart);
  if (function == nullptr) {
    lacked = true;
    return nullptr;
  }
  void* address = FunctionNamed(names.library_name, function, lacked);
  std::free(function);
  if (address == nullptr) return nullptr;

  // Recorded by identifiers in the record found by names, so that the next search for this
  // class and interface ends at its first lookup. A refusal by the store changes nothing here.
  if (class_id != nullptr) DicoStore::InsertByGuids(class_id, &iid, address, entry);
  return reinterpret_cast<ZELSysTSInterfaceCreator>(address);
}
