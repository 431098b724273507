#include "MetaProbe.h"

#include <atomic>

namespace {
std::atomic<const char*> g_last{nullptr};
std::atomic<int> g_hits{0};
std::atomic<int> g_note{0};
}  // namespace

void ZelMetaProbeHit(const char* name) {
  g_last.store(name);
  g_hits.fetch_add(1);
}
const char* ZelMetaProbeLast() {
  return g_last.load();
}
int ZelMetaProbeHits() {
  return g_hits.load();
}
void ZelMetaProbeNote(int value) {
  g_note.store(value);
}
int ZelMetaProbeNoted() {
  return g_note.load();
}
