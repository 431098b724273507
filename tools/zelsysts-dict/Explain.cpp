// zelsysts-dict explain: (to be written)
#include "Command.h"

namespace zeldict {

const char kExplainHelp[] = "usage: zelsysts-dict explain\n";

int RunExplain(const Invocation&) {
  return UsageError(kExplainHelp, "explain is not written yet");
}

}  // namespace zeldict
