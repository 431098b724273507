// zelsysts-dict graph: (to be written)
#include "Command.h"

namespace zeldict {

const char kGraphHelp[] = "usage: zelsysts-dict graph\n";

int RunGraph(const Invocation&) {
  return UsageError(kGraphHelp, "graph is not written yet");
}

}  // namespace zeldict
