// Runs zelsysts-dict with arguments (a shell line): its stdout, and its exit status in *status.
#pragma once

#include <sys/wait.h>

#include <cstdio>
#include <string>

inline std::string RunTool(const std::string& args, int* status) {
  FILE* pipe = popen((std::string(ZELDICT_TOOL) + " " + args + " 2>/dev/null").c_str(), "r");
  std::string out;
  char buffer[4096];
  for (size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) out.append(buffer, n);
  const int exit = pclose(pipe);
  *status = WIFEXITED(exit) ? WEXITSTATUS(exit) : -1;
  return out;
}
