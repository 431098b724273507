// zelsysts-dict list: who offers what, with the file:line of each line that says so.
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "Command.h"
#include "Dictionary.h"
#include "Libraries.h"
#include "Output.h"

namespace zeldict {

const char kListHelp[] =
    "usage: zelsysts-dict [--json] list [classes|interfaces|libraries] [DIR...]\n"
    "\n"
    "Has the library read the dictionary directories (none named: those of ZELDictionaryPath)\n"
    "and lists who offers what, as the library holds it, with the file:line of each line:\n"
    "  classes      each class, its CLSID, and the interfaces it offers, from which library\n"
    "  interfaces   each interface, its IID, and the classes that offer it\n"
    "  libraries    each library, and the classes and interfaces it implements\n"
    "Without a kind, all three. Lines that the library refused are not listed (check says why).\n"
    "\n"
    "exit status: 0, or 2 when the dictionary could not be read; 64 usage\n";

namespace {

struct Index {
  std::vector<std::string> classes, interfaces, libraries;  // in order of first mention
  std::map<std::string, std::vector<const Pair*>> by_class, by_interface, by_library;
  std::map<std::string, const ClsidLine*> clsid_of_class;
  std::map<std::string, const IidLine*> iid_of_interface;

  explicit Index(const Dictionary& d) {
    const auto note = [](std::vector<std::string>& order, auto& map, const std::string& key) {
      if (map.count(key) == 0) order.push_back(key);
      return &map[key];
    };
    for (const Pair& pair : d.pairs) {
      if (pair.lines.empty()) continue;
      note(classes, by_class, pair.cls)->push_back(&pair);
      if (pair.itf != "CreateInterface") note(interfaces, by_interface, pair.itf)->push_back(&pair);
      if (!pair.library.empty()) note(libraries, by_library, pair.library)->push_back(&pair);
    }
    for (const ClsidLine& line : d.clsids) {
      if (line.outcome == zelsysts::kRecordConflict) continue;
      note(classes, by_class, line.cls);
      clsid_of_class.emplace(line.cls, &line);
      if (line.has_library) note(libraries, by_library, line.library);
    }
    for (const IidLine& line : d.iids) {
      if (line.outcome == zelsysts::kRecordConflict) continue;
      note(interfaces, by_interface, line.name);
      iid_of_interface.emplace(line.name, &line);
    }
  }
};

std::string Keywords(const Pair& pair) {
  std::string text;
  if (!pair.leaf.empty()) text += " ITFLEAF " + EscapeText(pair.leaf);
  if (!pair.extended_by.empty()) text += " EXTENDED_BY " + EscapeText(pair.extended_by);
  return text;
}

void PrintText(const Dictionary& d, const Index& index, const std::string& kind) {
  const bool all = kind.empty();
  if (all || kind == "classes") {
    std::printf("classes\n");
    for (const std::string& cls : index.classes) {
      std::printf("  %s\n", EscapeText(cls).c_str());
      const auto clsid = index.clsid_of_class.find(cls);
      if (clsid != index.clsid_of_class.end()) {
        const ClsidLine& line = *clsid->second;
        std::printf("    CLSID %s%s%s  %s\n", EscapeText(line.text).c_str(),
                    line.has_library ? " in " : "", EscapeText(line.library).c_str(),
                    Where(line.at).c_str());
      }
      const auto pairs = index.by_class.find(cls);
      for (const Pair* pair : pairs->second) {
        std::printf("    %s from %s%s  %s\n", EscapeText(pair->itf).c_str(),
                    EscapeText(pair->library).c_str(), Keywords(*pair).c_str(),
                    Where(pair->lines.front()).c_str());
      }
    }
  }
  if (all || kind == "interfaces") {
    std::printf("interfaces\n");
    for (const std::string& itf : index.interfaces) {
      const auto iid = index.iid_of_interface.find(itf);
      std::printf("  %s  %s\n", EscapeText(itf).c_str(),
                  iid != index.iid_of_interface.end()
                      ? (EscapeText(iid->second->text) + "  " + Where(iid->second->at)).c_str()
                      : "(no IID)");
      for (const Pair* pair : index.by_interface.find(itf)->second) {
        std::printf("    offered by %s from %s%s  %s\n", EscapeText(pair->cls).c_str(),
                    EscapeText(pair->library).c_str(), Keywords(*pair).c_str(),
                    Where(pair->lines.front()).c_str());
      }
    }
  }
  if (all || kind == "libraries") {
    std::printf("libraries\n");
    for (const std::string& library : index.libraries) {
      std::printf("  %s\n", EscapeText(library).c_str());
      for (const Pair* pair : index.by_library.find(library)->second) {
        std::printf("    %s %s: %s  %s\n", EscapeText(pair->cls).c_str(),
                    EscapeText(pair->itf).c_str(), EscapeText(CreatorName(*pair)).c_str(),
                    Where(pair->lines.front()).c_str());
      }
      for (const ClsidLine& line : d.clsids) {
        if (line.has_library && line.library == library &&
            line.outcome != zelsysts::kRecordConflict) {
          std::printf("    %s by CLSID: ZELSysTSDllGetClassObject  %s\n",
                      EscapeText(line.cls).c_str(), Where(line.at).c_str());
        }
      }
    }
  }
}

void WritePlace(JsonWriter& json, const Place& at) {
  json.Key("file").String(at.file).Key("line").Number(at.line);
}

void WritePair(JsonWriter& json, const Pair& pair) {
  json.Key("class").String(pair.cls).Key("interface").String(pair.itf);
  json.Key("library").String(pair.library).Key("function").String(CreatorName(pair));
  json.Key("itf_leaf");
  pair.leaf.empty() ? json.Null() : json.String(pair.leaf);
  json.Key("extended_by");
  pair.extended_by.empty() ? json.Null() : json.String(pair.extended_by);
  json.Key("at").BeginArray();
  for (const Place& at : pair.lines) {
    json.BeginObject();
    WritePlace(json, at);
    json.EndObject();
  }
  json.EndArray();
}

void PrintJson(const Dictionary& d, const Index& index, const std::string& kind) {
  JsonWriter json;
  json.BeginObject().Key("command").String("list").Key("path").String(d.path);
  const bool all = kind.empty();
  if (all || kind == "classes") {
    json.Key("classes").BeginArray();
    for (const std::string& cls : index.classes) {
      json.BeginObject().Key("name").String(cls).Key("clsid");
      const auto clsid = index.clsid_of_class.find(cls);
      if (clsid == index.clsid_of_class.end()) {
        json.Null();
      } else {
        json.BeginObject().Key("text").String(clsid->second->text).Key("library");
        clsid->second->has_library ? json.String(clsid->second->library) : json.Null();
        WritePlace(json, clsid->second->at);
        json.EndObject();
      }
      json.Key("interfaces").BeginArray();
      for (const Pair* pair : index.by_class.find(cls)->second) {
        json.BeginObject();
        WritePair(json, *pair);
        json.EndObject();
      }
      json.EndArray().EndObject();
    }
    json.EndArray();
  }
  if (all || kind == "interfaces") {
    json.Key("interfaces").BeginArray();
    for (const std::string& itf : index.interfaces) {
      json.BeginObject().Key("name").String(itf).Key("iid");
      const auto iid = index.iid_of_interface.find(itf);
      if (iid == index.iid_of_interface.end()) {
        json.Null();
      } else {
        json.BeginObject().Key("text").String(iid->second->text);
        WritePlace(json, iid->second->at);
        json.EndObject();
      }
      json.Key("offered_by").BeginArray();
      for (const Pair* pair : index.by_interface.find(itf)->second) {
        json.BeginObject();
        WritePair(json, *pair);
        json.EndObject();
      }
      json.EndArray().EndObject();
    }
    json.EndArray();
  }
  if (all || kind == "libraries") {
    json.Key("libraries").BeginArray();
    for (const std::string& library : index.libraries) {
      json.BeginObject().Key("name").String(library).Key("offers").BeginArray();
      for (const Pair* pair : index.by_library.find(library)->second) {
        json.BeginObject();
        WritePair(json, *pair);
        json.EndObject();
      }
      json.EndArray().EndObject();
    }
    json.EndArray();
  }
  json.EndObject();
  std::fputs(json.Text().c_str(), stdout);
}

}  // namespace

int RunList(const Invocation& invocation) {
  std::vector<std::string> args = invocation.args;
  std::string kind;
  if (!args.empty() &&
      (args[0] == "classes" || args[0] == "interfaces" || args[0] == "libraries")) {
    kind = args[0];
    args.erase(args.begin());
  }
  std::vector<std::string> directories;
  std::string error;
  if (!ParseArguments(args, nullptr, nullptr, &directories, &error)) {
    return UsageError(kListHelp, error);
  }
  const Dictionary d = ReadDictionary(directories);
  const Index index(d);
  if (invocation.json) {
    PrintJson(d, index, kind);
  } else {
    PrintText(d, index, kind);
  }
  if (!d.walked) {
    std::fputs("zelsysts-dict: ZELDictionaryPath is not defined: nothing was read\n", stderr);
    return kExitErrors;
  }
  return kExitClean;
}

}  // namespace zeldict
