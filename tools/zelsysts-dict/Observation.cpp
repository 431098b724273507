#include "Observation.h"

namespace {

// One command runs per process and installs its handler before it calls the library; the
// library may call ZELSysTSObserveStep from a thread of a library it loads, after that.
zeldict::ObservationHandler g_handler = nullptr;
void* g_context = nullptr;

}  // namespace

extern "C" __attribute__((visibility("default"))) void ZELSysTSObserveStep(
    const zelsysts::Observation* observation) {
  if (g_handler != nullptr && observation != nullptr) g_handler(*observation, g_context);
}

namespace zeldict {

void SetObservationHandler(ObservationHandler handler, void* context) {
  g_context = context;
  g_handler = handler;
}

}  // namespace zeldict
