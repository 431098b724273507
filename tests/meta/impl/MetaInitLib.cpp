// A library whose initialisation registers classes: the extension MtFooExt (extending MtFoo) on
// the loading thread, and MtInitThread on a thread of its own that it joins at once. If the
// loading thread held a lock that registration takes, the load would never end, and the test
// that caused it would fail by its time limit.
#include <thread>

#include "MetaTestKit.h"

ZELMETA_CREATOR(ZELSysTSCreateIExtMtFooExt)
ZELMETA_CREATOR(ZELSysTSCreateIInitMtFoo)

namespace {

bool RegisterClasses() {
  ZELSysTSFindOrCreateMetaObject("MtFooExt", ZELSysTSTypeChainedExtension, &zelmeta::kClsidFooExt,
                                 nullptr, "MtFoo");
  std::thread([] {
    ZELSysTSFindOrCreateMetaObject("MtInitThread", ZELSysTSTypeImplementation,
                                   &zelmeta::kClsidInitThread, nullptr, nullptr);
  }).join();
  return true;
}

[[maybe_unused]] const bool g_registered = RegisterClasses();

}  // namespace
