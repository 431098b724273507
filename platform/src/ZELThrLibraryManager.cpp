#include "ZELThrLibraryManager.h"

#include <dlfcn.h>

#include <atomic>
#include <cstring>

namespace {

std::atomic<unsigned long> g_load_calls{0};
std::atomic<unsigned long> g_lookup_calls{0};

bool EndsWith(const char* text, size_t length, const char* suffix) {
  const size_t n = std::strlen(suffix);
  return length >= n && std::memcmp(text + length - n, suffix, n) == 0;
}

// dlopen keeps its own reference count and its own lock; a library opened twice yields the same
// handle, and since nothing here ever calls dlclose a library stays loaded for good. Holding no
// lock of ours around dlopen lets a library's initialiser call back into the object model.
void* Open(const char* library) {
  const std::string file = ZELThrLibraryManager::FileNameOf(library);
  if (file.empty()) return nullptr;
  void* handle = dlopen(file.c_str(), RTLD_NOW | RTLD_GLOBAL);
  if (handle == nullptr) dlerror();  // clear the thread's pending error text; report by null only
  return handle;
}

}  // namespace

std::string ZELThrLibraryManager::FileNameOf(const char* library) {
  if (library == nullptr || library[0] == '\0' || std::strchr(library, '/') != nullptr) return {};
  const size_t length = std::strlen(library);
  if (EndsWith(library, length, ".so")) return std::string(library, length);
  if (std::strncmp(library, "lib", 3) == 0) return std::string(library, length) + ".so";
  return "lib" + std::string(library, length) + ".so";
}

void* ZELThrLibraryManager::LoadLibrary(const char* library) {
  g_load_calls.fetch_add(1, std::memory_order_relaxed);
  return Open(library);
}

void* ZELThrLibraryManager::GetFunctionAddress(const char* library, const char* function) {
  g_lookup_calls.fetch_add(1, std::memory_order_relaxed);
  if (function == nullptr || function[0] == '\0') return nullptr;
  void* handle = Open(library);
  if (handle == nullptr) return nullptr;
  void* address = dlsym(handle, function);
  if (address == nullptr) dlerror();
  return address;
}

unsigned long ZELThrLibraryManager::LoadLibraryCalls() {
  return g_load_calls.load();
}
unsigned long ZELThrLibraryManager::GetFunctionAddressCalls() {
  return g_lookup_calls.load();
}
