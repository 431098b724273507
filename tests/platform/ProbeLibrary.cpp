// A probe library for the library manager's tests: counts how often its initialisation ran.
// The count lives in the library, so it would start again from zero after an unload.
#include <atomic>

namespace {
std::atomic<int> g_initialisations{0};
[[maybe_unused]] const int g_counted = g_initialisations.fetch_add(1) + 1;
}  // namespace

extern "C" int ZELPlatformProbeInitialisations() {
  return g_initialisations.load();
}
