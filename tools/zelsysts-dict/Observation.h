// The tool's side of the library's observer (objectmodel/util/Observer.h): the executable defines
// and exports ZELSysTSObserveStep, and a command installs the handler that receives each step.
#pragma once

#include "util/Observer.h"

namespace zeldict {

// Receives every observation while installed. Called on the thread that runs the library code,
// possibly under the library's locks: it copies what it keeps and never calls the library.
using ObservationHandler = void (*)(const zelsysts::Observation& observation, void* context);

// Installs handler (null: none) for the rest of the command.
void SetObservationHandler(ObservationHandler handler, void* context);

}  // namespace zeldict
