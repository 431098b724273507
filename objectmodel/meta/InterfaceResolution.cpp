// Resolution of an interface for an implementation class through the dictionary and the
// implementation libraries: ZELSysTSMetaClassImpl::FindInDictionary.
//
// Locking: no lock of the meta objects or of the dictionary is held while a library is loaded or
// a function looked up, so that the library's initialisation can register its classes and query
// objects. The dictionary queries and the insert each take the dictionary lock for their own
// duration; the text fields of a found record are copied under it. Every failure is a null
// result and writes nothing.
//
// Observation: each step is told to the observer (util/Observer.h) when there is one, after the
// call it reports; a library call is reported right after it returns, on the calling thread.
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
#include "meta/ResolutionObservation.h"
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
  if (zelsysts::Observed()) {
    ObserveResolution(zelsysts::Step::kLibraryLoad, library, nullptr, nullptr, nullptr, nullptr,
                      handle != nullptr);
  }
  return handle;
}

void* FunctionNamed(const char* library, const char* function, bool& lacked) {
  errno = 0;
  void* address = ZELThrLibraryManager::GetFunctionAddress(library, function);
  if (address == nullptr && errno == ENOMEM) lacked = true;
  if (zelsysts::Observed()) {
    ObserveResolution(zelsysts::Step::kFunctionLookup, library, function, nullptr, nullptr, nullptr,
                      address != nullptr);
  }
  return address;
}

// The extending class's meta object, looked for and reported.
ZELSysTSMetaClassBase* ObservedExtensionNamed(const char* className) {
  ZELSysTSMetaClassBase* meta = EffectiveMetaObjectNamed(className);
  if (zelsysts::Observed()) {
    ObserveResolution(zelsysts::Step::kExtensionMetaObject, className, nullptr, nullptr, nullptr,
                      nullptr, meta != nullptr);
  }
  return meta;
}

}  // namespace

ZELSysTSInterfaceCreator ZELSysTSMetaClassImpl::FindInDictionary(const _GUID& iid, bool& lacked) {
  using zelsysts::Observed;
  using zelsysts::Step;
  // The meta class identifier names no interface: the record under (class identifier,
  // CLSID_ZELSysTSMetaClass) holds the class's meta object, which must never be taken for a
  // creation function, whatever the dictionary files add to that record.
  if (iid == CLSID_ZELSysTSMetaClass) {
    if (Observed()) {
      ObserveResolution(Step::kMetaClassIdentifier, class_name, nullptr, nullptr, &iid, nullptr, 0);
    }
    return nullptr;
  }
  DicoLoader::Load();
  if (!DicoLoader::IsLoaded()) lacked = true;  // what is not read yet may hold the answer

  // An answer recorded by identifiers ends the search: a record with a library is a creation
  // function found before; one without is not an implementation (a meta object record, whose
  // creator is the meta object itself).
  if (class_id != nullptr) {
    DicoEntry* known = DicoStore::LookupByGuids(class_id, &iid, 1);
    void* creator = known != nullptr ? known->Creator() : nullptr;
    const char* library = creator != nullptr ? NamesOf(known).library_name : nullptr;
    if (Observed()) {
      const long found = creator == nullptr   ? zelsysts::kRecordNone
                         : library == nullptr ? zelsysts::kRecordNotImplementation
                                              : zelsysts::kRecordCreator;
      ObserveResolution(Step::kRecordByIdentifiers, class_name, library, nullptr, class_id, &iid,
                        found);
    }
    if (creator != nullptr) {
      if (library == nullptr) return nullptr;
      return reinterpret_cast<ZELSysTSInterfaceCreator>(creator);
    }
  }

  const char* interfaceName = DicoStore::NameOfGuid(&iid);
  if (Observed()) {
    ObserveResolution(Step::kInterfaceName, interfaceName, nullptr, nullptr, &iid, nullptr, 0);
  }
  if (interfaceName == nullptr) return nullptr;
  DicoEntry* entry = DicoStore::LookupByNames(class_name, interfaceName, 1);
  const EntryNames names = entry != nullptr ? NamesOf(entry) : EntryNames{};
  if (Observed()) {
    ObserveResolution(Step::kRecordByNames, class_name, interfaceName, names.library_name, &iid,
                      nullptr, entry != nullptr);
  }
  if (entry == nullptr) return nullptr;

  // A leaf interface serves the request only if it derives from the requested interface.
  const char* interfacePart = interfaceName;
  if (names.itf_leaf != nullptr) {
    ZELSysTSMetaClass* leaf = DicoStore::FindMetaObject(names.itf_leaf);
    const bool derives = leaf != nullptr && leaf->IsAKindOf(&iid) != 0;
    if (Observed()) {
      ObserveResolution(Step::kLeafCheck, names.itf_leaf, nullptr, nullptr, &iid, nullptr,
                        leaf == nullptr ? zelsysts::kLeafUnregistered
                        : derives       ? zelsysts::kLeafDerives
                                        : zelsysts::kLeafUnrelated);
    }
    if (!derives) return nullptr;
    interfacePart = names.itf_leaf;
  }

  // An extending class must be a registered extension that lists this class; its library is
  // loaded once if the extension has not registered yet.
  const char* classPart = class_name;
  if (names.extended_by != nullptr) {
    ZELSysTSMetaClassBase* extending = ObservedExtensionNamed(names.extended_by);
    if (extending == nullptr) {
      if (LoadLibraryNamed(names.library_name, lacked) == nullptr) return nullptr;
      extending = ObservedExtensionNamed(names.extended_by);
      if (extending == nullptr) return nullptr;
    }
    ZELSysTSMetaClassExt* extension = extending->GetExtensionMetaClass();
    const bool extends = extension != nullptr && extension->IsExtending(this) == 1;
    if (Observed()) {
      ObserveResolution(Step::kExtensionCheck, names.extended_by, class_name, nullptr, nullptr,
                        nullptr,
                        extension == nullptr ? zelsysts::kExtensionNotExtension
                        : extends            ? zelsysts::kExtensionExtends
                                             : zelsysts::kExtensionNotListed);
    }
    if (!extends) return nullptr;
    classPart = names.extended_by;
  }

  if (names.library_name == nullptr) {
    if (Observed()) {
      ObserveResolution(Step::kNoLibrary, class_name, interfaceName, nullptr, &iid, nullptr, 0);
    }
    return nullptr;
  }
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
