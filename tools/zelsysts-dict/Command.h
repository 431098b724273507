// The commands of zelsysts-dict: how main hands one its arguments, and what it returns.
#pragma once

#include <string>
#include <vector>

namespace zeldict {

// Exit statuses of the tool (and of every command).
enum ExitStatus {
  kExitClean = 0,     // nothing to report
  kExitWarnings = 1,  // warnings only
  kExitErrors = 2,    // at least one error
  kExitUsage = 64,    // the command line was wrong; usage is on stderr
};

struct Invocation {
  std::vector<std::string> args;  // the command's own arguments (the global --json removed)
  bool json = false;              // --json was given: one JSON document on stdout
};

struct Command {
  const char* name;
  const char* summary;  // one line, for the tool's --help
  const char* help;     // the command's --help text (usage line first)
  int (*run)(const Invocation& invocation);
};

// The commands, each in its own file.
int RunCheck(const Invocation& invocation);
int RunExplain(const Invocation& invocation);
int RunList(const Invocation& invocation);
int RunGraph(const Invocation& invocation);
int RunGuid(const Invocation& invocation);

extern const char kCheckHelp[];
extern const char kExplainHelp[];
extern const char kListHelp[];
extern const char kGraphHelp[];
extern const char kGuidHelp[];

// Writes "zelsysts-dict: <message>" and the command's usage line to stderr; returns kExitUsage.
int UsageError(const char* help, const std::string& message);

}  // namespace zeldict
