// zelsysts-dict check: everything the loader says about the dictionary, and what it cannot say,
// each with the file:line of every line involved; with --load, the libraries too.
#include <cstdio>
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

const char kCheckHelp[] =
    "usage: zelsysts-dict [--json] check [DIR...] [--load]\n"
    "\n"
    "Has the library read the dictionary directories (none named: those of ZELDictionaryPath)\n"
    "and reports every message of its loader with file and line, and what the loader cannot\n"
    "say: a class+interface pair defined twice (the first line in walk order wins), an IID\n"
    "named twice or a name given two IIDs, a CLSID given to two classes, interfaces and leaves\n"
    "without an identifier, CRLF line ends, lines longer than the reader's buffer, NUL bytes,\n"
    "files hidden by a file of the same name earlier in the path, and EXTENDED_BY classes that\n"
    "no line names.\n"
    "\n"
    "  --load   also load every library named, by name, as resolution does, and report those\n"
    "           that cannot be loaded, the creation functions they lack, and EXTENDED_BY\n"
    "           classes that no loaded library registered\n"
    "\n"
    "exit status: 0 clean, 1 warnings only, 2 errors, 64 usage\n";

namespace {

struct Involved {
  Place at;
  std::string note;
};

struct Diagnostic {
  bool error = false;
  std::string code;
  std::string message;
  std::vector<Involved> at;
  std::vector<std::string> said;  // the loader's own lines about it
};

std::string Describe(const std::string& library, const std::string& leaf, const std::string& ext) {
  std::string text = "library " + EscapeText(library);
  if (!leaf.empty()) text += ", ITFLEAF " + EscapeText(leaf);
  if (!ext.empty()) text += ", EXTENDED_BY " + EscapeText(ext);
  return text;
}

class Checker {
 public:
  explicit Checker(const Dictionary& d) : d_(d) {}

  std::vector<Diagnostic> Run(bool load) {
    CheckPairs();
    CheckIdentifiers();
    CheckWalk();
    CheckLines();
    CheckNames(load);
    if (load) CheckLibraries();
    CheckRemainingMessages();
    return std::move(out_);
  }

  const std::vector<std::pair<std::string, std::string>>& libraries() const { return libraries_; }

 private:
  Diagnostic& Add(bool error, const char* code, const std::string& message) {
    out_.push_back(Diagnostic{error, code, message, {}, {}});
    return out_.back();
  }

  // The loader's lines about a place, each handed out once.
  // The two lines of an identifier conflict: the first, which the table kept, and the refused
  // one, whose file the reader stopped reading; the loader's lines about it go with them.
  void WinsAndRefused(Diagnostic& diagnostic, const Place& first, const std::string& firstText,
                      const Place& refused, const std::string& refusedText) {
    diagnostic.at.push_back({first, firstText + " (wins)"});
    diagnostic.at.push_back(
        {refused, refusedText + " (refused; the rest of the file is not read)"});
    diagnostic.said = TakeMessages(refused);
    explained_.insert(refused.file + ":" + std::to_string(refused.line));
  }

  std::vector<std::string> TakeMessages(const Place& at) {
    std::vector<std::string> said;
    for (size_t i = 0; i < d_.messages.size(); ++i) {
      const Message& m = d_.messages[i];
      if (m.at.file == at.file && m.at.line == at.line && taken_.insert(i).second) {
        said.push_back(m.text);
      }
    }
    return said;
  }

  void CheckWalk() {
    if (!d_.walked) {
      Add(true, "no-path", "ZELDictionaryPath is not defined: nothing was read").said =
          TakeMessages(Place{});
    }
    for (const auto& [directory, files] : d_.directories) {
      if (files < 0) {
        Add(false, "directory-unreadable",
            EscapeText(directory) + " cannot be read (" + std::strerror(-files) +
                "): the loader passes over it in silence")
            .at.push_back({Place{directory, 0}, ""});
      } else if (files == 0) {
        Add(false, "directory-without-files",
            EscapeText(directory) + " holds no .dicts, .iidts or .clsidts file")
            .at.push_back({Place{directory, 0}, ""});
      }
    }
    for (const FileRead& file : d_.files) {
      const Place at{file.path, file.last_line};
      if (!file.regular) {
        Add(false, "not-regular-file",
            "not a regular file (a fifo, device or directory): the loader leaves it unread")
            .at.push_back({at, ""});
      } else if (file.result < 0 && file.last_line == 0) {
        Diagnostic& diagnostic = Add(true, "file-unreadable", "the file cannot be opened");
        diagnostic.at.push_back({at, ""});
        diagnostic.said = TakeMessages(at);
      } else if (file.result < 0 && explained_.count(file.path + ":" + std::to_string(at.line))) {
        continue;  // a conflict of identifiers, reported with its first definition
      } else if (file.result < 0) {
        Diagnostic& diagnostic =
            Add(true, "line-rejected",
                "the loader rejected this line and did not read the rest of the file");
        diagnostic.at.push_back({at, "rejected"});
        diagnostic.said = TakeMessages(at);
      }
    }
    for (const auto& [hidden, by] : d_.hidden) {
      Diagnostic& diagnostic =
          Add(false, "file-hidden",
              "hidden by a file of the same name earlier in the path: it is not read");
      diagnostic.at.push_back({hidden, "hidden"});
      if (!by.empty()) diagnostic.at.push_back({Place{by, 0}, "read in its place"});
    }
  }

  void CheckPairs() {
    for (const Pair& pair : d_.pairs) {
      for (size_t index : pair.refused) {
        const DictsLine& line = d_.dicts[index];
        Diagnostic& diagnostic =
            Add(true, "pair-conflict",
                EscapeText(pair.cls) + " " + EscapeText(pair.itf) +
                    " is defined twice with different libraries or options; the first line "
                    "in walk order wins");
        for (const Place& at : pair.lines) {
          diagnostic.at.push_back(
              {at, Describe(pair.library, pair.leaf, pair.extended_by) + " (wins)"});
        }
        diagnostic.at.push_back(
            {line.at, Describe(line.library, line.leaf, line.extended_by) + " (refused)"});
        diagnostic.said = TakeMessages(line.at);
      }
    }
  }

  void CheckIdentifiers() {
    for (size_t i = 0; i < d_.iids.size(); ++i) {
      const IidLine& line = d_.iids[i];
      if (line.outcome != zelsysts::kRecordConflict) continue;
      for (size_t j = 0; j < i; ++j) {
        const IidLine& first = d_.iids[j];
        if (first.outcome == zelsysts::kRecordConflict) continue;
        const bool sameIid = std::memcmp(&first.iid, &line.iid, sizeof line.iid) == 0;
        if (!sameIid && first.name != line.name) continue;
        Diagnostic& diagnostic =
            sameIid ? Add(true, "iid-named-twice",
                          "the IID " + EscapeText(line.text) + " is named twice, " +
                              EscapeText(first.name) + " and " + EscapeText(line.name) +
                              "; the first line in walk order wins")
                    : Add(true, "name-given-two-iids",
                          "the interface " + EscapeText(line.name) +
                              " is given two IIDs; the first line in walk order wins");
        WinsAndRefused(diagnostic, first.at, EscapeText(first.text) + " " + EscapeText(first.name),
                       line.at, EscapeText(line.text) + " " + EscapeText(line.name));
        break;
      }
    }
    for (size_t i = 0; i < d_.clsids.size(); ++i) {
      const ClsidLine& line = d_.clsids[i];
      if (line.outcome != zelsysts::kRecordConflict) continue;
      for (size_t j = 0; j < i; ++j) {
        const ClsidLine& first = d_.clsids[j];
        if (first.outcome == zelsysts::kRecordConflict ||
            std::memcmp(&first.clsid, &line.clsid, sizeof line.clsid) != 0) {
          continue;
        }
        Diagnostic& diagnostic =
            first.cls != line.cls
                ? Add(true, "clsid-two-classes",
                      "the CLSID " + EscapeText(line.text) + " is given to two classes, " +
                          EscapeText(first.cls) + " and " + EscapeText(line.cls) +
                          "; the first line in walk order wins")
                : Add(true, "clsid-two-libraries",
                      "the class " + EscapeText(line.cls) +
                          " is given two libraries; the first line in walk order wins");
        WinsAndRefused(diagnostic, first.at,
                       EscapeText(first.cls) + " " + EscapeText(first.library), line.at,
                       EscapeText(line.cls) + " " + EscapeText(line.library));
        break;
      }
    }
  }

  void CheckLines() {
    std::map<std::string, Diagnostic> crlf;  // by file: one report per file
    for (size_t i = 0; i < d_.lines.size(); ++i) {
      const FlaggedLine& line = d_.lines[i];
      if ((line.flags & zelsysts::kLineEndsInCr) != 0 && line.reached_reader) {
        Diagnostic& diagnostic = crlf[line.at.file];
        diagnostic.at.push_back({line.at, EscapeText(line.bytes)});
      }
      if ((line.flags & zelsysts::kLineHasNul) != 0) {
        Add(false, "nul-byte", "a NUL byte cuts the line: what follows it is never read")
            .at.push_back({line.at, EscapeText(line.bytes)});
      }
      if ((line.flags & zelsysts::kLineFilledBuffer) != 0 && !line.continuation) {
        std::vector<Involved> pieces{{line.at, "the first 2047 bytes"}};
        bool live = false;
        for (size_t j = i + 1; j < d_.lines.size() && d_.lines[j].continuation; ++j) {
          live = live || d_.lines[j].reached_reader;
          pieces.push_back(
              {d_.lines[j].at, d_.lines[j].reached_reader
                                   ? "read as a line of its own, and handed to the reader"
                                   : "read as a line of its own"});
        }
        if (pieces.size() == 1) continue;  // the file ended right at the buffer's end
        Add(live, "long-line",
            live ? "a line longer than the reader's 2047-byte buffer: its rest is read as "
                   "further lines, and became an entry"
                 : "a line longer than the reader's 2047-byte buffer: its rest is read as "
                   "further lines")
            .at = pieces;
      }
    }
    for (auto& [file, diagnostic] : crlf) {
      diagnostic.error = true;
      diagnostic.code = "carriage-return";
      diagnostic.message =
          "CRLF line ends: the last field of these lines ends in a carriage return, which "
          "stays in the name, so nothing matches it";
      out_.push_back(std::move(diagnostic));
    }
  }

  // With libraries loaded, whether an extension class exists is asked of the registrations
  // (CheckLibraries), which supersedes looking for its name in other lines.
  void CheckNames(bool load) {
    std::map<std::string, std::vector<Involved>> noIid, leafNoIid, extensions;
    std::set<std::string> classes;
    for (const Pair& pair : d_.pairs) {
      if (pair.lines.empty()) continue;
      classes.insert(pair.cls);
      if (pair.itf != "CreateInterface" && d_.iid_of_name.count(pair.itf) == 0) {
        for (const Place& at : pair.lines) noIid[pair.itf].push_back({at, EscapeText(pair.cls)});
      }
      if (!pair.leaf.empty() && d_.iid_of_name.count(pair.leaf) == 0) {
        for (const Place& at : pair.lines) leafNoIid[pair.leaf].push_back({at, ""});
      }
      if (!pair.extended_by.empty()) {
        for (const Place& at : pair.lines) extensions[pair.extended_by].push_back({at, ""});
      }
    }
    for (const ClsidLine& line : d_.clsids) classes.insert(line.cls);
    for (auto& [itf, at] : noIid) {
      Add(false, "interface-without-iid",
          "the interface " + EscapeText(itf) +
              " has no identifier in any .iidts file: no query can reach it")
          .at = at;
    }
    for (auto& [leaf, at] : leafNoIid) {
      Add(false, "leaf-without-iid",
          "the ITFLEAF leaf " + EscapeText(leaf) + " has no identifier in any .iidts file")
          .at = at;
    }
    for (auto& [ext, at] : extensions) {
      if (!load && classes.count(ext) == 0) {
        Add(false, "extension-not-named",
            "the EXTENDED_BY class " + EscapeText(ext) + " is named by no other line")
            .at = at;
      }
    }
  }

  void CheckLibraries() {
    // Every library that a line names, with those lines, in walk order.
    std::vector<std::string> order;
    std::map<std::string, std::vector<Involved>> named;
    const auto name = [&](const std::string& library, const Place& at, const std::string& why) {
      if (named.count(library) == 0) order.push_back(library);
      named[library].push_back({at, why});
    };
    for (const Pair& pair : d_.pairs) {
      if (pair.library.empty()) continue;
      for (const Place& at : pair.lines) name(pair.library, at, CreatorName(pair));
    }
    for (const ClsidLine& line : d_.clsids) {
      if (line.has_library && line.outcome != zelsysts::kRecordConflict) {
        name(line.library, line.at, "ZELSysTSDllGetClassObject");
      }
    }
    std::set<std::string> loaded;
    for (const std::string& library : order) {
      const std::string error = LoadLibraryByName(library);
      libraries_.emplace_back(library, error);
      if (error.empty()) {
        loaded.insert(library);
        continue;
      }
      Add(true, "library-not-loaded",
          "the library " + EscapeText(library) + " cannot be loaded: " + EscapeText(error))
          .at = named[library];
    }
    for (const std::string& library : order) {
      if (loaded.count(library) == 0) continue;
      std::set<std::string> reported;
      for (const Involved& line : named[library]) {
        if (HasFunction(library, line.note)) continue;
        if (!reported.insert(line.note).second) continue;
        std::vector<Involved> at;
        for (const Involved& other : named[library]) {
          if (other.note == line.note) at.push_back({other.at, ""});
        }
        Add(true, "function-missing",
            "the library " + EscapeText(library) + " lacks the function " + EscapeText(line.note) +
                " that these lines need")
            .at = at;
      }
    }
    // After every library has loaded: the extensions they registered.
    std::map<std::string, std::vector<Involved>> extensions;
    for (const Pair& pair : d_.pairs) {
      if (pair.extended_by.empty()) continue;
      for (const Place& at : pair.lines) extensions[pair.extended_by].push_back({at, ""});
    }
    for (auto& [ext, at] : extensions) {
      if (RegisteredMetaObject(ext) != nullptr) continue;
      Add(true, "extension-not-registered",
          "no loaded library registered the EXTENDED_BY class " + EscapeText(ext))
          .at = at;
    }
  }

  void CheckRemainingMessages() {
    for (size_t i = 0; i < d_.messages.size(); ++i) {
      if (taken_.count(i) != 0) continue;
      const Place at = d_.messages[i].at;
      std::vector<std::string> said = TakeMessages(at);
      Diagnostic& diagnostic = Add(true, "loader-message", said.front());
      if (!at.file.empty()) diagnostic.at.push_back({at, ""});
      diagnostic.said = std::move(said);
    }
  }

  const Dictionary& d_;
  std::vector<Diagnostic> out_;
  std::set<size_t> taken_;
  std::set<std::string> explained_;  // "file:line" of refused identifier lines, reported
  std::vector<std::pair<std::string, std::string>> libraries_;  // name, error ("" loaded)
};

void PrintText(const Dictionary& d, const std::vector<Diagnostic>& diagnostics, int errors,
               int warnings) {
  std::printf("dictionary path: %s\n", EscapeText(d.path).c_str());
  std::printf("%zu files read, %zu .dicts, %zu .iidts and %zu .clsidts lines entered\n\n",
              d.files.size(), d.dicts.size(), d.iids.size(), d.clsids.size());
  for (const Diagnostic& diagnostic : diagnostics) {
    std::printf("%s [%s] %s\n", diagnostic.error ? "error" : "warning", diagnostic.code.c_str(),
                diagnostic.message.c_str());
    for (const Involved& involved : diagnostic.at) {
      std::printf("    %s%s%s\n", Where(involved.at).c_str(), involved.note.empty() ? "" : "  ",
                  involved.note.c_str());
    }
    for (const std::string& line : diagnostic.said) {
      std::printf("    the loader said: %s\n", EscapeText(line).c_str());
    }
  }
  std::printf("%s%d error%s, %d warning%s\n", diagnostics.empty() ? "" : "\n", errors,
              errors == 1 ? "" : "s", warnings, warnings == 1 ? "" : "s");
}

void PrintJson(const Dictionary& d, const std::vector<Diagnostic>& diagnostics, int errors,
               int warnings, const Checker& checker, bool load) {
  JsonWriter json;
  json.BeginObject().Key("command").String("check").Key("path").String(d.path);
  json.Key("loaded").Bool(d.complete);
  json.Key("files").BeginArray();
  for (const FileRead& file : d.files) {
    json.BeginObject().Key("path").String(file.path).Key("kind").String(KindName(file.kind));
    json.Key("lines").Number(file.last_line);
    json.Key("result").String(!file.regular         ? "not-regular"
                              : file.result >= 0    ? "read"
                              : file.last_line == 0 ? "unreadable"
                                                    : "rejected");
    json.EndObject();
  }
  json.EndArray().Key("diagnostics").BeginArray();
  for (const Diagnostic& diagnostic : diagnostics) {
    json.BeginObject().Key("severity").String(diagnostic.error ? "error" : "warning");
    json.Key("code").String(diagnostic.code).Key("message").String(diagnostic.message);
    json.Key("at").BeginArray();
    for (const Involved& involved : diagnostic.at) {
      json.BeginObject().Key("file").String(involved.at.file).Key("line").Number(involved.at.line);
      json.Key("note").String(involved.note).EndObject();
    }
    json.EndArray().Key("loader_said").BeginArray();
    for (const std::string& line : diagnostic.said) json.String(line);
    json.EndArray().EndObject();
  }
  json.EndArray();
  if (load) {
    json.Key("libraries").BeginArray();
    for (const auto& [name, error] : checker.libraries()) {
      json.BeginObject().Key("name").String(name).Key("loaded").Bool(error.empty());
      if (!error.empty()) json.Key("error").String(error);
      json.EndObject();
    }
    json.EndArray();
  }
  json.Key("errors").Number(errors).Key("warnings").Number(warnings).EndObject();
  std::fputs(json.Text().c_str(), stdout);
}

}  // namespace

int RunCheck(const Invocation& invocation) {
  std::map<std::string, bool> flags{{"--load", false}};
  std::vector<std::string> directories;
  std::string error;
  if (!ParseArguments(invocation.args, &flags, nullptr, &directories, &error)) {
    return UsageError(kCheckHelp, error);
  }
  const Dictionary d = ReadDictionary(directories);
  Checker checker(d);
  const std::vector<Diagnostic> diagnostics = checker.Run(flags["--load"]);
  int errors = 0;
  for (const Diagnostic& diagnostic : diagnostics) errors += diagnostic.error ? 1 : 0;
  const int warnings = static_cast<int>(diagnostics.size()) - errors;
  if (invocation.json) {
    PrintJson(d, diagnostics, errors, warnings, checker, flags["--load"]);
  } else {
    PrintText(d, diagnostics, errors, warnings);
  }
  return errors > 0 ? kExitErrors : warnings > 0 ? kExitWarnings : kExitClean;
}

}  // namespace zeldict
