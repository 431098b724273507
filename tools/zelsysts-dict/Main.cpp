// zelsysts-dict: tells why a request to the object model fails, using the library's own code.
//
//   zelsysts-dict [--json] COMMAND [ARGS...]
//   zelsysts-dict --help | COMMAND --help
//
// The commands read the dictionary directories named on their command line, or those of
// ZELDictionaryPath when none are named, through the library's own loader and readers.
#include <cstdio>
#include <cstring>
#include <string>

#include "Command.h"

namespace zeldict {

namespace {

const Command kCommands[] = {
    {"check", "report every problem in the dictionaries (with --load: in their libraries too)",
     kCheckHelp, RunCheck},
    {"explain", "resolve CLASS INTERFACE and show every step the library takes", kExplainHelp,
     RunExplain},
    {"list", "list the classes, interfaces or libraries and where each is named", kListHelp,
     RunList},
    {"graph", "draw classes, interfaces and libraries as Graphviz DOT (or SVG)", kGraphHelp,
     RunGraph},
    {"guid", "make new GUIDs, or convert a GUID between its text and C forms", kGuidHelp, RunGuid},
};

void PrintToolHelp(FILE* out) {
  std::fputs(
      "usage: zelsysts-dict [--json] COMMAND [ARGS...]\n"
      "       zelsysts-dict COMMAND --help\n"
      "\n"
      "Reads the object model's dictionaries (the directories named, or those of\n"
      "ZELDictionaryPath) with the library's own loader and tells what it finds.\n"
      "\n"
      "commands:\n",
      out);
  for (const Command& command : kCommands) {
    std::fprintf(out, "  %-8s %s\n", command.name, command.summary);
  }
  std::fputs(
      "\n"
      "options:\n"
      "  --json   print one JSON document instead of text\n"
      "  --help   print this help, or a command's own\n"
      "\n"
      "exit status: 0 clean, 1 warnings only, 2 errors, 64 usage\n",
      out);
}

}  // namespace

int UsageError(const char* help, const std::string& message) {
  std::fprintf(stderr, "zelsysts-dict: %s\n", message.c_str());
  const char* end = std::strchr(help, '\n');
  std::fprintf(stderr, "%.*s\n",
               end ? static_cast<int>(end - help) : static_cast<int>(std::strlen(help)), help);
  std::fputs("(zelsysts-dict --help lists the commands)\n", stderr);
  return kExitUsage;
}

}  // namespace zeldict

int main(int argc, char** argv) {
  using namespace zeldict;
  Invocation invocation;
  const Command* command = nullptr;
  bool help = false;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg == "--json") {
      invocation.json = true;
    } else if (arg == "--help" || arg == "-h") {
      help = true;
    } else if (command == nullptr) {
      for (const Command& candidate : kCommands) {
        if (arg == candidate.name) command = &candidate;
      }
      if (command == nullptr) {
        std::fprintf(stderr, "zelsysts-dict: unknown %s \"%s\"\n",
                     arg.rfind("-", 0) == 0 ? "option" : "command", arg.c_str());
        PrintToolHelp(stderr);
        return kExitUsage;
      }
    } else {
      invocation.args.push_back(arg);
    }
  }
  if (command == nullptr) {
    PrintToolHelp(help ? stdout : stderr);
    return help ? kExitClean : kExitUsage;
  }
  if (help) {
    std::fputs(command->help, stdout);
    return kExitClean;
  }
  return command->run(invocation);
}
