// zelsysts-dict check: (to be written)
#include "Command.h"

namespace zeldict {

const char kCheckHelp[] = "usage: zelsysts-dict check\n";

int RunCheck(const Invocation&) {
  return UsageError(kCheckHelp, "check is not written yet");
}

}  // namespace zeldict
