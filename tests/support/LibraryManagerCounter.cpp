// Counts the calls made into libZELSysTS's library manager. A program that links this file
// defines ZELThrLibraryManager's two functions itself; the dynamic loader searches the program
// first, so every library of the process calls these, and they forward to libZELSysTS's own.
#include "LibraryManagerCounter.h"

#include <dlfcn.h>

#include <atomic>

#include "ZELThrLibraryManager.h"

namespace {

std::atomic<unsigned long> g_loads{0};
std::atomic<unsigned long> g_lookups{0};

template <typename Function>
Function Next(const char* mangled) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, mangled));
}

}  // namespace

void* ZELThrLibraryManager::LoadLibrary(const char* library) {
  static const auto next =
      Next<void* (*)(const char*)>("_ZN20ZELThrLibraryManager11LoadLibraryEPKc");
  g_loads.fetch_add(1);
  return next(library);
}

void* ZELThrLibraryManager::GetFunctionAddress(const char* library, const char* function) {
  static const auto next = Next<void* (*)(const char*, const char*)>(
      "_ZN20ZELThrLibraryManager18GetFunctionAddressEPKcS1_");
  g_lookups.fetch_add(1);
  return next(library, function);
}

namespace zeltest {

unsigned long LibraryLoads() {
  return g_loads.load();
}
unsigned long FunctionLookups() {
  return g_lookups.load();
}

}  // namespace zeltest
