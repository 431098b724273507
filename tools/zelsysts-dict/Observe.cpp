// The program's definition of the library's observer hook. The tool runs the library on its
// main thread only, so the current sink is a plain variable.
#include "Observe.h"

#include <utility>

namespace {

std::function<void(const zelsysts::Observation&)>& CurrentSink() {
  static std::function<void(const zelsysts::Observation&)> sink;
  return sink;
}

}  // namespace

extern "C" void ZELSysTSObserveStep(const zelsysts::Observation* observation) {
  auto& sink = CurrentSink();
  if (sink && observation != nullptr) sink(*observation);
}

namespace zeldict {

ScopedObserver::ScopedObserver(std::function<void(const zelsysts::Observation&)> sink)
    : previous_(std::exchange(CurrentSink(), std::move(sink))) {}

ScopedObserver::~ScopedObserver() {
  CurrentSink() = std::move(previous_);
}

}  // namespace zeldict
