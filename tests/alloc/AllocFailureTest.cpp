// Counted allocation failure: while armed, the n-th malloc, calloc, realloc or operator new fails.
// A scenario runs for n = 1, 2, ... in a child process each (the pools and the dictionary cannot
// be reset) until none fails. ALLOC_FAIL_AT=n runs that n alone in this process, for a debugger.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <functional>
#include <thread>

#include "TestSupport.h"
#include "ZELSysTSFindOrCreateMetaObject.h"

#define EXPORTED extern "C" __attribute__((visibility("default")))

namespace {

std::atomic<long> g_at{0}, g_count{0};  // g_at: the allocation that fails
std::atomic<bool> g_injected{false};
// The next definitions (the sanitizer's runtime or the C library), and a static buffer for what
// dlsym allocates while it looks them up (free ignores it).
constexpr size_t kBoot = 4096;
alignas(16) char g_boot[kBoot];
size_t g_boot_used = 0;
void* (*g_malloc)(size_t);
void* (*g_calloc)(size_t, size_t);
void* (*g_realloc)(void*, size_t);
void (*g_free)(void*);

#define NEXT(f) (g_##f = reinterpret_cast<decltype(g_##f)>(dlsym(RTLD_NEXT, #f)))
bool Ready() {
  static int lookups = 0;
  if (g_free == nullptr && lookups++ == 0) NEXT(calloc), NEXT(malloc), NEXT(realloc), NEXT(free);
  return g_free != nullptr;
}

}  // namespace

// clang-format off
static bool Fail() { return g_at > 0 && ++g_count == g_at && (errno = ENOMEM, g_injected = true); }
static void* Boot(size_t n) {
  char* p = g_boot + g_boot_used;
  return (g_boot_used += (n + 15) / 16 * 16) <= kBoot ? p : nullptr; }
EXPORTED void* malloc(size_t n) { return !Ready() ? Boot(n) : Fail() ? nullptr : g_malloc(n); }
EXPORTED void* calloc(size_t n, size_t m) {
  return !Ready() ? Boot(n * m) : Fail() ? nullptr : g_calloc(n, m); }
EXPORTED void* realloc(void* p, size_t n) { return Fail() ? nullptr : g_realloc(p, n); }
EXPORTED void free(void* p) { if ((p < g_boot || p >= g_boot + kBoot) && Ready()) g_free(p); }
// The leak check tells the dynamic loader's blocks by their caller, which is now malloc above.
EXPORTED const char* __lsan_default_suppressions() { return "leak:add_to_global_resize\n"; }
void* operator new(size_t n) { if (void* p = malloc(n + !n)) return p; throw std::bad_alloc(); }
void* operator new[](size_t n) { return operator new(n); }
void* operator new(size_t n, const std::nothrow_t&) noexcept { return malloc(n + !n); }
void* operator new[](size_t n, const std::nothrow_t&) noexcept { return malloc(n + !n); }
void operator delete(void* p) noexcept { free(p); }
void operator delete[](void* p) noexcept { free(p); }
void operator delete(void* p, size_t) noexcept { free(p); }
void operator delete[](void* p, size_t) noexcept { free(p); }
// clang-format on

namespace {

template <class Body>
bool Armed(long n, Body&& body) {
  g_count = 0, g_at = n;  // g_injected stays: set once per child, by its first run
  const bool ok = body();
  g_at = 0;
  return ok;
}

// No crash, hang or exception (SIGABRT through noexcept); no result only with a failure injected;
// no lock left held; the retry complete; no leak (at exit). Exits 0, or 10 when none was injected.
[[noreturn]] void Child(long n, const std::function<bool(long)>& scenario) {
  alarm(60);  // a hang ends in SIGALRM
  if (![&]() noexcept { return scenario(n); }() && !g_injected) std::_Exit(4);
  ZELSysTSMetaClass* probe = nullptr;  // registered by another thread: no lock is left held
  std::thread([&] { probe = ZELSysTSFindOrCreateMetaObject("Probe", {}, 0, 0, 0); }).join();
  if (probe == nullptr) std::_Exit(5);
  if (!scenario(0)) std::_Exit(6);
  std::exit(g_injected ? 0 : 10);  // exit runs the leak check
}

// scenario(n) arms with n around the client calls (0: the retry) and says whether it got all.
void RunFailureLoop(const char* name, const std::function<bool(long)>& scenario) {
  if (const char* at = std::getenv("ALLOC_FAIL_AT")) Child(std::atol(at), scenario);
  for (long n = 1;; ++n) {
    std::fflush(nullptr);
    if (fork() == 0) Child(n, scenario);
    int status = 0;
    wait(&status);
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    if (code == 10) return (void)std::printf("%s: %ld allocations failed in turn\n", name, n - 1);
    ASSERT_EQ(code, 0) << "failing allocation " << n;  // see Child; 1: sanitizer; 128+: signal
  }
}

}  // namespace

#ifdef ALLOC_UNIT
#include <fstream>
#include <sstream>

#include "ZELSysTSConvertStringToGUID.h"
#include "ZELSysTSMutex.h"
#include "dictionary/ClsidTable.h"
#include "dictionary/DicoStore.h"
#include "dictionary/IidTable.h"
#include "dictionaryfiles/DicoLoader.h"

// True when the table of the file's kind holds every line of the file.
bool AllLinesIn(const std::string& path) {
  std::ifstream in(path);
  const char kind = path[path.size() - 5];  // d(icts), i(idts), s (clsidts)
  _GUID id;
  for (std::string line, a, b; std::getline(in, line);) {
    if (!(std::istringstream(line) >> a >> b) || a[0] == '#') continue;
    const bool guid = ZELSysTSConvertStringToGUID(a.c_str(), id) == 0;
    const char* name = !guid ? nullptr : kind == 'i' ? IidTable::FindName(id) : nullptr;
    if (const ClsidEntry* c = guid && kind == 's' ? ClsidTable::Find(id) : nullptr)
      name = c->class_name;
    if (kind == 'd' ? !DicoStore::FindByNames(a.c_str(), b.c_str()) : !name || b != name)
      return false;
  }
  return true;
}

// A load that lost anything for lack of memory is not marked done: the next one enters it all.
TEST(AllocFailure, DictionaryLoad) {
  const std::string src = zeltest::SourceDir() + "/";
  // A later file of an earlier file's name stays hidden, also in a walk that ran out of memory.
  zeltest::TempDir hidden;
  hidden.Write("Drawing.iidts", "{A628800B-DD89-4796-B36E-9A0F8BD1F08A} IHidden\n");
  const std::string path =
      src + "examples/dictionaries:" + src + "tests/kit/dictionaries:" + hidden.path();
  zeltest::ScopedEnv env("ZELDictionaryPath", path.c_str());
  RunFailureLoop("dictionary load", [&](long n) {
    bool ok = Armed(n, [] { return DicoLoader::Load(), DicoLoader::IsLoaded(); });
    for (const char* file : {"examples/dictionaries/Drawing.", "tests/kit/dictionaries/Kit."})
      for (const char* kind : {"dicts", "iidts", "clsidts"})
        ok = ok && AllLinesIn(src + file + kind);
    return ok;
  });
}

// A mutex asked for is always there: without memory, one of libZELSysTS's reserve serves.
TEST(AllocFailure, AMutexAskedForIsAlwaysThere) {
  RunFailureLoop("mutex", [](long n) {
    const auto locks = [] {
      ZELSmartMutex m(0);
      return m.Handle() && !m.LockF() && !m.UnlockF();
    };
    if (!Armed(n, locks)) std::_Exit(7);  // even with a failure injected
    return true;
  });
}
#else
#include "KitTestInterfaces.h"
#include "ZELThrLibraryManager.h"

// Registration lost in a library's initialisation is made by the next registration of the name.
TEST(AllocFailure, RegistrationFromALibraryLoadingInAnotherThread) {
  RunFailureLoop("registration", [](long n) {
    const auto load = [] { return ZELThrLibraryManager::LoadLibrary("KitTestComponents"); };
    std::thread([&] { Armed(n, load); }).join();
    const char* names[] = {"KitWidget", "KitChained", "KitTransient"};  // kinds 1, 4 and 5
    for (int i = 0; i < 3; ++i) {
      ZELSysTSMetaClass* m = ZELSysTSFindOrCreateMetaObject(
          names[i], ZELSysTSTypeOfClass(i ? i + 3 : 1), i ? nullptr : &CLSID_KitWidget, nullptr,
          i ? "KitWidget" : nullptr);
      if (!m || !m->GetClassId() || !m->GetClassName() ||
          m->GetClassName() != std::string(names[i]))
        return false;
    }
    return true;
  });
}

// With preload the library is loaded, and its classes registered, before the counting starts.
void RunClient(const char* name, bool preload, const std::function<bool()>& body) {
  setenv("ZELDictionaryPath", (zeltest::SourceDir() + "/tests/kit/dictionaries").c_str(), 1);
  if (preload) dlopen("libKitTestComponents.so", RTLD_NOW | RTLD_GLOBAL);
  RunFailureLoop(name, [&](long n) { return Armed(n, body); });
}

TEST(AllocFailure, CreationByNameAndByClassIdAndResolution) {
  RunClient("creation and resolution", false, [] {
    ZELSysTSPtr<IKitName> byName = ZELSysTSCreateObject<IKitName>("KitWidget");
    ZELSysTSPtr<IKitName> byId = ZELSysTSCreateInstanceOf<IKitName>(CLSID_KitWidget);
    return byName && byId && byName->Name() == "KitWidget" && byId->Name() == "KitWidget";
  });
}

TEST(AllocFailure, ChainedAndTransientExtensionsAndTies) {
  RunClient("extensions and ties", true, [] {
    auto widget = ZELSysTSCreateObject<ZELSysTSBaseUnknown>("KitWidget");
    ZELSysTSPtr<IKitCounter> chained(widget), again(widget);
    ZELSysTSPtr<IKitTicket> transient(widget);
    ZELSysTSPtr<IKitLabel> tie(widget);
    ZELSysTSPtr<IKitTicketLabel> transientTie(widget);
    return chained && again && transient && tie && transientTie && chained->Next() == 1 &&
           again->Next() == 2 && transient->Name() == "KitTransient" &&
           tie->Name() == "KitWidget" && transientTie->Name() == "KitTransient";
  });
}
#endif
