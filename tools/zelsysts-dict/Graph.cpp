// zelsysts-dict graph: classes -> interfaces -> libraries as Graphviz DOT, or SVG through dot.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "Command.h"
#include "Dictionary.h"
#include "Libraries.h"
#include "Output.h"
#include "ZELSysTSMetaClass.h"

namespace zeldict {

const char kGraphHelp[] =
    "usage: zelsysts-dict [--json] graph [DIR...] [--format dot|svg] [-o FILE] [--load]\n"
    "\n"
    "Has the library read the dictionary directories (none named: those of ZELDictionaryPath)\n"
    "and draws it: class -> interface -> library, ITFLEAF edges from an interface to its leaf,\n"
    "EXTENDED_BY edges from a class to its extension, \"creates\" edges for CreateInterface\n"
    "lines and CLSIDs with a library.\n"
    "\n"
    "  --format dot   Graphviz DOT (the default)\n"
    "  --format svg   SVG, drawn by Graphviz's dot, which must be installed\n"
    "  -o FILE        write to FILE instead of standard output\n"
    "  --load         load the libraries named, by name, and draw the base classes that\n"
    "                 their registered meta objects know\n"
    "  --json         the nodes and edges as one JSON document\n"
    "\n"
    "exit status: 0, or 2 when the dictionary could not be read or dot failed; 64 usage\n";

namespace {

struct Edge {
  std::string from, to, kind, label;
};

// The drawing: nodes by id ("c:", "i:" or "l:" and the name), edges in order, each once.
struct Drawing {
  std::vector<std::pair<std::string, std::string>> nodes;  // id, name
  std::set<std::string> ids;
  std::vector<Edge> edges;
  std::set<std::string> edge_keys;

  std::string Node(char kind, const std::string& name) {
    std::string id = std::string(1, kind) + ":" + name;
    if (ids.insert(id).second) nodes.emplace_back(id, name);
    return id;
  }
  void Connect(const std::string& from, const std::string& to, const char* kind,
               const std::string& label) {
    if (edge_keys.insert(from + '\n' + to + '\n' + kind + '\n' + label).second) {
      edges.push_back(Edge{from, to, kind, label});
    }
  }
};

Drawing Draw(const Dictionary& d, bool load) {
  Drawing g;
  std::map<std::string, std::set<std::string>> classesOf;  // interface -> classes offering it
  for (const Pair& pair : d.pairs) {
    if (!pair.lines.empty() && pair.itf != "CreateInterface") classesOf[pair.itf].insert(pair.cls);
  }
  std::set<std::string> classes, libraries;
  for (const Pair& pair : d.pairs) {
    if (pair.lines.empty()) continue;  // refused lines: check tells why
    const std::string cls = g.Node('c', pair.cls);
    classes.insert(pair.cls);
    const std::string library = pair.library.empty() ? "" : g.Node('l', pair.library);
    if (!pair.library.empty()) libraries.insert(pair.library);
    if (pair.itf == "CreateInterface") {
      if (!library.empty()) g.Connect(cls, library, "creates", "creates");
      continue;
    }
    const std::string itf = g.Node('i', pair.itf);
    g.Connect(cls, itf, "offers", "");
    if (!library.empty()) {
      g.Connect(itf, library, "implemented_in", classesOf[pair.itf].size() > 1 ? pair.cls : "");
    }
    if (!pair.leaf.empty()) g.Connect(itf, g.Node('i', pair.leaf), "itf_leaf", "ITFLEAF");
    if (!pair.extended_by.empty()) {
      classes.insert(pair.extended_by);
      g.Connect(cls, g.Node('c', pair.extended_by), "extended_by", "EXTENDED_BY " + pair.itf);
    }
  }
  for (const ClsidLine& line : d.clsids) {
    if (line.outcome == zelsysts::kRecordConflict) continue;
    classes.insert(line.cls);
    const std::string cls = g.Node('c', line.cls);
    if (line.has_library) {
      libraries.insert(line.library);
      g.Connect(cls, g.Node('l', line.library), "creates", "CLSID");
    }
  }
  if (load) {
    for (const std::string& library : libraries) LoadLibraryByName(library);
    for (const std::string& name : classes) {
      ZELSysTSMetaClass* meta = RegisteredMetaObject(name);
      ZELSysTSMetaClass* base = meta != nullptr ? meta->GetBaseMetaObject() : nullptr;
      if (base != nullptr && base->GetClassName() != nullptr) {
        g.Connect(g.Node('c', name), g.Node('c', base->GetClassName()), "base", "base");
      }
    }
  }
  return g;
}

// A DOT string: the name escaped for text, then quotes and backslashes escaped for DOT.
std::string Quote(const std::string& text) {
  std::string out = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') out += '\\';
    out += c;
  }
  return out + "\"";
}

std::string Dot(const Drawing& g) {
  std::string dot =
      "digraph dictionary {\n"
      "  rankdir=LR;\n"
      "  node [fontname=\"Helvetica\", fontsize=11];\n"
      "  edge [fontname=\"Helvetica\", fontsize=9];\n";
  for (const auto& [id, name] : g.nodes) {
    const char* style = id[0] == 'c' ? "shape=box, style=\"rounded,filled\", fillcolor=\"#dbe8f7\""
                        : id[0] == 'i' ? "shape=ellipse, style=filled, fillcolor=\"#fdf1d6\""
                                       : "shape=component, style=filled, fillcolor=\"#e3f1df\"";
    dot += "  " + Quote(id) + " [label=" + Quote(EscapeText(name)) + ", " + style + "];\n";
  }
  for (const Edge& e : g.edges) {
    std::string attributes;
    if (e.kind == "itf_leaf") attributes = ", style=dashed";
    if (e.kind == "extended_by") attributes = ", style=dotted";
    if (e.kind == "creates") attributes = ", color=\"#4a7f3f\"";
    if (e.kind == "base") attributes = ", arrowhead=empty";
    dot += "  " + Quote(e.from) + " -> " + Quote(e.to) + " [label=" + Quote(EscapeText(e.label)) +
           attributes + "];\n";
  }
  return dot + "}\n";
}

std::string Json(const Dictionary& d, const Drawing& g) {
  JsonWriter json;
  json.BeginObject().Key("command").String("graph").Key("path").String(d.path);
  json.Key("nodes").BeginArray();
  for (const auto& [id, name] : g.nodes) {
    const char* kind = id[0] == 'c' ? "class" : id[0] == 'i' ? "interface" : "library";
    json.BeginObject().Key("id").String(id).Key("kind").String(kind).Key("name").String(name);
    json.EndObject();
  }
  json.EndArray().Key("edges").BeginArray();
  for (const Edge& e : g.edges) {
    json.BeginObject().Key("from").String(e.from).Key("to").String(e.to);
    json.Key("kind").String(e.kind).Key("label").String(e.label).EndObject();
  }
  json.EndArray().EndObject();
  return json.Text();
}

bool DotInstalled() {
  const char* path = std::getenv("PATH");
  std::string directories = path != nullptr ? path : "/usr/bin:/bin";
  size_t start = 0;
  while (start <= directories.size()) {
    size_t end = directories.find(':', start);
    if (end == std::string::npos) end = directories.size();
    const std::string directory = end > start ? directories.substr(start, end - start) : ".";
    if (access((directory + "/dot").c_str(), X_OK) == 0) return true;
    start = end + 1;
  }
  return false;
}

// Runs dot -Tsvg on the DOT text, its output to `out` (a file, or standard output when empty).
int RenderSvg(const std::string& dot, const std::string& out) {
  int pipes[2];
  if (pipe(pipes) != 0) return kExitErrors;
  const pid_t child = fork();
  if (child < 0) return kExitErrors;
  if (child == 0) {
    dup2(pipes[0], STDIN_FILENO);
    close(pipes[0]);
    close(pipes[1]);
    const char* args[] = {"dot", "-Tsvg", nullptr, nullptr, nullptr};
    if (!out.empty()) {
      args[2] = "-o";
      args[3] = out.c_str();
    }
    execvp("dot", const_cast<char* const*>(args));
    _exit(127);
  }
  close(pipes[0]);
  for (size_t written = 0; written < dot.size();) {
    const ssize_t n = write(pipes[1], dot.data() + written, dot.size() - written);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;
    written += static_cast<size_t>(n);
  }
  close(pipes[1]);
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return kExitClean;
  std::fprintf(stderr, "zelsysts-dict: dot could not draw the graph (status %d)\n",
               WIFEXITED(status) ? WEXITSTATUS(status) : -1);
  return kExitErrors;
}

}  // namespace

int RunGraph(const Invocation& invocation) {
  std::map<std::string, bool> flags{{"--load", false}};
  std::map<std::string, std::string> values{{"--format", "dot"}, {"-o", ""}};
  std::vector<std::string> directories;
  std::string error;
  if (!ParseArguments(invocation.args, &flags, &values, &directories, &error)) {
    return UsageError(kGraphHelp, error);
  }
  const std::string format = values["--format"];
  const std::string out = values["-o"];
  if (format != "dot" && format != "svg") {
    return UsageError(kGraphHelp, "unknown format \"" + EscapeText(format) + "\"");
  }
  if (format == "svg" && !invocation.json && !DotInstalled()) {
    std::fputs(
        "zelsysts-dict: graph --format svg needs Graphviz's dot, which is not installed (no dot "
        "on PATH); install graphviz, or use --format dot\n",
        stderr);
    return kExitErrors;
  }
  const Dictionary d = ReadDictionary(directories);
  if (!d.walked) {
    std::fputs("zelsysts-dict: ZELDictionaryPath is not defined: nothing was read\n", stderr);
    return kExitErrors;
  }
  const Drawing g = Draw(d, flags["--load"]);
  if (format == "svg" && !invocation.json) return RenderSvg(Dot(g), out);
  const std::string text = invocation.json ? Json(d, g) : Dot(g);
  FILE* file = out.empty() ? stdout : std::fopen(out.c_str(), "w");
  if (file == nullptr) {
    std::fprintf(stderr, "zelsysts-dict: cannot write %s: %s\n", EscapeText(out).c_str(),
                 std::strerror(errno));
    return kExitErrors;
  }
  std::fputs(text.c_str(), file);
  if (file != stdout && std::fclose(file) != 0) return kExitErrors;
  return kExitClean;
}

}  // namespace zeldict
