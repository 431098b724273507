// A probe library that counts how often its initialisation ran (again from 0 after an unload).
#include <atomic>

static std::atomic<int> g_initialisations{0};
[[maybe_unused]] static const int g_counted = ++g_initialisations;

extern "C" int ZELPlatformProbeInitialisations() {
  return g_initialisations.load();
}
