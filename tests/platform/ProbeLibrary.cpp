// A probe library for the library manager's tests: counts how often its initialisation ran and
// keeps one value that survives for as long as the library stays loaded.
#include <atomic>

namespace {

std::atomic<int> g_initialisations{0};
std::atomic<int> g_value{0};

struct CountInitialisation {
  CountInitialisation() { g_initialisations.fetch_add(1); }
};
CountInitialisation g_count;

}  // namespace

extern "C" int ZELPlatformProbeInitialisations() {
  return g_initialisations.load();
}
extern "C" void ZELPlatformProbeSet(int value) {
  g_value.store(value);
}
extern "C" int ZELPlatformProbeGet() {
  return g_value.load();
}
