// zelsysts-dict list: (to be written)
#include "Command.h"

namespace zeldict {

const char kListHelp[] = "usage: zelsysts-dict list\n";

int RunList(const Invocation&) {
  return UsageError(kListHelp, "list is not written yet");
}

}  // namespace zeldict
