// A library whose initialisation registers classes: the extension MtFooExt (extending MtFoo) on
// the loading thread, and MtInitThread on a thread of its own that it waits for. If the loading
// thread held a lock that registration takes, that thread would wait forever: the initialisation
// then gives up after a while and aborts the process, which fails the test that loaded it.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>

#include "MetaTestKit.h"

ZELMETA_CREATOR(ZELSysTSCreateIExtMtFooExt)
ZELMETA_CREATOR(ZELSysTSCreateIInitMtFoo)

namespace {

bool RegisterClasses() {
  ZELSysTSFindOrCreateMetaObject("MtFooExt", ZELSysTSTypeChainedExtension, &zelmeta::kClsidFooExt,
                                 nullptr, "MtFoo");
  std::future<void> done = std::async(std::launch::async, [] {
    ZELSysTSFindOrCreateMetaObject("MtInitThread", ZELSysTSTypeImplementation,
                                   &zelmeta::kClsidInitThread, nullptr, nullptr);
  });
  if (done.wait_for(std::chrono::seconds(20)) != std::future_status::ready) {
    std::fputs("zelmeta_init: registration from another thread is blocked\n", stderr);
    std::abort();
  }
  return true;
}

[[maybe_unused]] const bool g_registered = RegisterClasses();

}  // namespace
