// Loading the dictionary's libraries and asking what they registered.
#include "Libraries.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstring>

#include "Dictionary.h"
#include "ZELSysTSFindOrCreateMetaObject.h"
#include "ZELSysTSMetaClass.h"
#include "ZELThrLibraryManager.h"

namespace zeldict {

bool RandomGuid(_GUID* guid) {
  const int fd = open("/dev/urandom", O_RDONLY | O_CLOEXEC);
  const bool random = fd >= 0 && read(fd, guid, sizeof *guid) == static_cast<ssize_t>(sizeof *guid);
  if (fd >= 0) close(fd);
  return random;
}

std::string LoadLibraryByName(const std::string& library) {
  if (ZELThrLibraryManager::LoadLibrary(library.c_str()) != nullptr) return "";
  // The manager reports a failure by null alone and clears the dynamic loader's error text, so
  // that its callers never see a stale one. The reason is asked of the dynamic loader again at
  // once, for the file name that the manager's contract gives the name (ZELThrLibraryManager.h:
  // "N" is "libN.so", "libN" is "libN.so", "N.so" stays; a name with '/' is refused).
  if (library.empty() || library.find('/') != std::string::npos) {
    return "a library is named, never given by path: the name is refused";
  }
  std::string file = library;
  const bool hasSuffix = file.size() >= 3 && file.compare(file.size() - 3, 3, ".so") == 0;
  if (!hasSuffix && file.rfind("lib", 0) != 0) file = "lib" + file;
  if (!hasSuffix) file += ".so";
  dlerror();
  if (void* handle = dlopen(file.c_str(), RTLD_NOW | RTLD_GLOBAL)) {
    (void)handle;  // never closed, as the manager never closes
    return "the library manager could not load " + file + ", though the tool can";
  }
  const char* error = dlerror();
  return error != nullptr ? error : "cannot be loaded";
}

bool HasFunction(const std::string& library, const std::string& function) {
  return ZELThrLibraryManager::GetFunctionAddress(library.c_str(), function.c_str()) != nullptr;
}

std::string CreatorName(const Pair& pair) {
  if (pair.itf == "CreateInterface") return "fctZELSysTSCreate" + pair.cls;
  return "ZELSysTSCreate" + (pair.leaf.empty() ? pair.itf : pair.leaf) +
         (pair.extended_by.empty() ? pair.cls : pair.extended_by);
}

ZELSysTSMetaClass* RegisteredMetaObject(const std::string& className) {
  // The public API has no lookup that cannot create: ZELSysTSFindOrCreateMetaObject returns the
  // meta object recorded for the name, or records a new one. The tool passes a class identifier
  // of its own, 16 random bytes: a meta object that comes back with exactly that identifier was
  // made by this very call, so no library had registered the class. That plain meta object
  // (kind 0, no base, no extended classes) is the unavoidable side effect; the tool asks only
  // after every library has been loaded, and asks once per class.
  _GUID probe{};
  if (!RandomGuid(&probe)) return nullptr;
  ZELSysTSMetaClass* meta =
      ZELSysTSFindOrCreateMetaObject(className.c_str(), ZELSysTSTypeBase, &probe, nullptr, nullptr);
  if (meta == nullptr) return nullptr;
  meta = meta->GetEffectiveMetaObject();
  const _GUID* id = meta != nullptr ? meta->GetClassId() : nullptr;
  if (id == nullptr || std::memcmp(id, &probe, sizeof probe) == 0) return nullptr;
  return meta;
}

}  // namespace zeldict
