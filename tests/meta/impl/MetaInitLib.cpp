// A library whose initialisation registers classes on the loading thread and on a thread of its
// own that it waits for. If the loading thread held a lock that registration takes, that thread
// would wait forever; the initialisation then gives up after a while and notes -1 for the test
// (1 when the other thread registered in time).
#include <chrono>
#include <future>
#include <thread>

#include "MetaTestIds.h"

ZELMETA_CREATOR(ZELSysTSCreateIInitMtFoo)

namespace {

int RegisterFromAnotherThread() {
  ZELSysTSFindOrCreateMetaObject("MtInitOwn", ZELSysTSTypeImplementation, nullptr, nullptr,
                                 nullptr);
  std::packaged_task<void()> task([] {
    ZELSysTSFindOrCreateMetaObject("MtInitThread", ZELSysTSTypeImplementation,
                                   &zelmeta::kClsidInitThread, nullptr, nullptr);
  });
  std::future<void> done = task.get_future();
  std::thread worker(std::move(task));
  if (done.wait_for(std::chrono::seconds(20)) != std::future_status::ready) {
    worker.detach();
    ZelMetaProbeNote(-1);
    return -1;
  }
  worker.join();
  ZelMetaProbeNote(1);
  return 1;
}

[[maybe_unused]] const int g_registered = RegisterFromAnotherThread();

}  // namespace
