// zelsysts-dict guid: (to be written)
#include "Command.h"

namespace zeldict {

const char kGuidHelp[] = "usage: zelsysts-dict guid\n";

int RunGuid(const Invocation&) {
  return UsageError(kGuidHelp, "guid is not written yet");
}

}  // namespace zeldict
