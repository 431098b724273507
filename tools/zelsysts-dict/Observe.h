// The tool's end of the library's observer (util/Observer.h): the one definition of
// ZELSysTSObserveStep in the program, which hands every observation to the sink that a command
// has installed for the time being, and drops it when none is.
#pragma once

#include <functional>

#include "util/Observer.h"

namespace zeldict {

// Installs sink for the scope; the previous sink comes back at its end. The library calls the
// sink with its own locks held (the dictionary lock during a load): a sink copies what it needs
// and never calls back into the library.
class ScopedObserver {
 public:
  explicit ScopedObserver(std::function<void(const zelsysts::Observation&)> sink);
  ~ScopedObserver();
  ScopedObserver(const ScopedObserver&) = delete;
  ScopedObserver& operator=(const ScopedObserver&) = delete;

 private:
  std::function<void(const zelsysts::Observation&)> previous_;
};

}  // namespace zeldict
