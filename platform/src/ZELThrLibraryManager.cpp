#include "ZELThrLibraryManager.h"

#include <dlfcn.h>

#include <cstdlib>
#include <cstring>

namespace {

bool EndsWith(const char* text, size_t length, const char* suffix) {
  const size_t n = std::strlen(suffix);
  return length >= n && std::memcmp(text + length - n, suffix, n) == 0;
}

// The file name that `library` maps to (from malloc; the caller frees it), or null when the
// name is refused or memory runs out.
char* FileNameOf(const char* library) {
  if (library == nullptr || library[0] == '\0' || std::strchr(library, '/') != nullptr) {
    return nullptr;
  }
  const size_t length = std::strlen(library);
  const bool hasSuffix = EndsWith(library, length, ".so");
  const bool hasPrefix = hasSuffix || std::strncmp(library, "lib", 3) == 0;
  const size_t prefix = hasPrefix ? 0 : 3;
  const size_t suffix = hasSuffix ? 0 : 3;
  char* file = static_cast<char*>(std::malloc(prefix + length + suffix + 1));
  if (file == nullptr) return nullptr;
  std::memcpy(file, "lib", prefix);
  std::memcpy(file + prefix, library, length);
  std::memcpy(file + prefix + length, ".so", suffix);
  file[prefix + length + suffix] = '\0';
  return file;
}

// dlopen keeps its own reference count and its own lock; a library opened twice yields the same
// handle, and since nothing here ever calls dlclose a library stays loaded for good. Holding no
// lock of ours around dlopen lets a library's initialiser call back into the object model.
void* Open(const char* library) {
  char* file = FileNameOf(library);
  if (file == nullptr) return nullptr;
  void* handle = dlopen(file, RTLD_NOW | RTLD_GLOBAL);
  std::free(file);
  if (handle == nullptr) dlerror();  // clear the thread's pending error text; report by null only
  return handle;
}

}  // namespace

void* ZELThrLibraryManager::LoadLibrary(const char* library) {
  return Open(library);
}

void* ZELThrLibraryManager::GetFunctionAddress(const char* library, const char* function) {
  if (function == nullptr || function[0] == '\0') return nullptr;
  void* handle = Open(library);
  if (handle == nullptr) return nullptr;
  void* address = dlsym(handle, function);
  if (address == nullptr) dlerror();
  return address;
}
