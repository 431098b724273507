// zelsysts-dict explain: resolves one interface for one class in this process, with the library's
// own code, and prints every step the library reports as it takes it (objectmodel/util/
// Observer.h), then the result. The tool itself only prepares the request as a client would: it
// has the dictionary read, loads the class's library by the name its records give, and gets the
// class's meta object with ZELSysTSFindOrCreateMetaObject; then it asks that meta object's
// FindInterfaceCreator and never calls the creation function it returns.
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "Command.h"
#include "Dictionary.h"
#include "GuidText.h"
#include "Observe.h"
#include "Output.h"
#include "ZELSysTSObjectModeler.h"
#include "ZELThrLibraryManager.h"
#include "meta/ZELSysTSMetaClassBase.h"

namespace zeldict {

const char kExplainHelp[] =
    "usage: zelsysts-dict explain CLASS INTERFACE [DIR...]\n"
    "\n"
    "Resolves INTERFACE for CLASS (names, or GUIDs in the dictionary's text form) as\n"
    "QueryInterface on an object of CLASS does, and prints each step the library takes: the\n"
    "interface table, the dictionary records (file:line), the libraries loaded and the\n"
    "functions looked up, the leaf and extension checks, the base classes, the answer\n"
    "recorded. The class's library, named by its .clsidts record or its CreateInterface\n"
    "line, is loaded first, as the program that made the object has. The dictionary is read\n"
    "from the DIRs, or from ZELDictionaryPath. The creation function found is not called.\n"
    "\n"
    "exit status: 0 when CLASS offers INTERFACE, 2 when not, 64 usage\n";

namespace {

using zelsysts::Observation;
using zelsysts::Step;

// The dictionary's records that explain names, looked up in what the loader reported: only the
// lines the tables kept, the first one first.
bool Kept(long outcome) {
  outcome &= 0xFF;
  return outcome == zelsysts::kRecordAdded || outcome == zelsysts::kRecordSame;
}

// "file:line" as it stands (JSON keeps the bytes; text escapes them).
std::string PlaceText(const Place& place) {
  return place.file.empty() ? "" : place.file + ":" + std::to_string(place.line);
}

const IidLine* InterfaceNamed(const Dictionary& d, const std::string& name) {
  for (const IidLine& line : d.iids) {
    if (Kept(line.outcome) && line.name == name) return &line;
  }
  return nullptr;
}

const ClsidLine* ClassWithId(const Dictionary& d, const _GUID& clsid) {
  for (const ClsidLine& line : d.clsids) {
    if (Kept(line.outcome) && line.clsid == clsid) return &line;
  }
  return nullptr;
}

const Pair* PairOf(const Dictionary& d, const std::string& cls, const std::string& itf) {
  for (const Pair& pair : d.pairs) {
    if (pair.cls == cls && pair.itf == itf && !pair.lines.empty()) return &pair;
  }
  return nullptr;
}

// Which classes the dictionary says offer the interface iid: a hint for a request that failed.
std::string OfferedBy(const Dictionary& d, const _GUID& iid) {
  std::string name;
  for (const IidLine& line : d.iids) {
    if (Kept(line.outcome) && line.iid == iid && name.empty()) name = line.name;
  }
  std::string offered;
  for (const Pair& pair : d.pairs) {
    if (!name.empty() && pair.itf == name && !pair.lines.empty()) {
      offered += (offered.empty() ? "" : ", ") + EscapeText(pair.cls) + " (" +
                 Where(pair.lines.front()) + ")";
    }
  }
  const std::string itf = name.empty() ? GuidText(iid) : EscapeText(name);
  return offered.empty() ? "hint: no .dicts line offers " + itf + " for any class"
                         : "hint: the .dicts lines offer " + itf + " for " + offered;
}

// The library of a class's objects: its ".clsidts" line with a library, else its
// "CreateInterface" line. False when neither names one.
bool ClassLibrary(const Dictionary& d, const std::string& cls, std::string* library, Place* at) {
  for (const ClsidLine& line : d.clsids) {
    if (Kept(line.outcome) && line.cls == cls && line.has_library && !line.library.empty()) {
      *library = line.library;
      *at = line.at;
      return true;
    }
  }
  const Pair* creation = PairOf(d, cls, "CreateInterface");
  if (creation == nullptr || creation->library.empty()) return false;
  *library = creation->library;
  *at = creation->lines.front();
  return true;
}

std::string Name(const char* text) {
  return text != nullptr ? EscapeText(text) : "(none)";
}

const char* KindName(long kind) {
  switch (kind) {
    case ZELSysTSTypeImplementation:
      return "implementation";
    case ZELSysTSTypeChainedExtension:
      return "chained extension";
    case ZELSysTSTypeTransientExtension:
      return "transient extension";
    default:
      return "plain, without interfaces";
  }
}

// The dynamic loader's reason why `library` could not be loaded or lacks `function`. The library
// manager clears the loader's error text, so the file it opens (ZELThrLibraryManager.h: a name
// ending in ".so" as is, "lib" + name + ".so" otherwise) is asked again; a failed open changes
// nothing.
std::string LoaderReason(const char* library, const char* function) {
  if (library == nullptr) return "no library named";
  std::string file = library;
  const bool so = file.size() >= 3 && file.compare(file.size() - 3, 3, ".so") == 0;
  if (!so) file = (file.rfind("lib", 0) == 0 ? "" : "lib") + file + ".so";
  if (void* handle = dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD)) {
    std::string reason = "loaded, but it does not export it";
    dlerror();
    if (function != nullptr && dlsym(handle, function) == nullptr) {
      if (const char* error = dlerror()) reason = error;
    }
    dlclose(handle);
    return reason;
  }
  if (void* handle = dlopen(file.c_str(), RTLD_NOW | RTLD_GLOBAL)) {
    dlclose(handle);
    return "loads when asked again";
  }
  const char* error = dlerror();
  return error != nullptr ? error : "unknown reason";
}

struct ExplainStep {
  std::string step;
  std::string outcome;
  std::string message;
  std::vector<std::pair<std::string, std::string>> fields;
};

class Explanation {
 public:
  explicit Explanation(bool json) : json_(json) {}

  void Add(std::string step, std::string outcome, std::string message,
           std::vector<std::pair<std::string, std::string>> fields = {}) {
    if (!json_) {
      std::printf("  %s\n", message.c_str());
      std::fflush(stdout);  // each step as it happens, before a library that crashes
    }
    steps_.push_back({std::move(step), std::move(outcome), std::move(message), std::move(fields)});
  }

  std::string Where(const std::string& className, const std::string& interfaceName) const {
    const Pair* pair =
        dictionary != nullptr ? PairOf(*dictionary, className, interfaceName) : nullptr;
    return pair != nullptr ? " (" + zeldict::Where(pair->lines.front()) + ")" : "";
  }

  static void OnObservation(const Observation& observation, void* context) {
    static_cast<Explanation*>(context)->Observe(observation);
  }

  void Write(const std::string& className, const std::string& interfaceText, bool resolved,
             const std::string& function, const std::string& library) const {
    JsonWriter json;
    json.BeginObject().Key("command").String("explain");
    json.Key("class").String(className).Key("interface").String(interfaceText);
    json.Key("steps").BeginArray();
    for (const ExplainStep& step : steps_) {
      json.BeginObject().Key("step").String(step.step).Key("outcome").String(step.outcome);
      json.Key("message").String(step.message);
      for (const auto& field : step.fields) json.Key(field.first).String(field.second);
      json.EndObject();
    }
    json.EndArray().Key("result").BeginObject().Key("resolved").Bool(resolved);
    json.Key("function");
    function.empty() ? json.Null() : json.String(function);
    json.Key("library");
    library.empty() ? json.Null() : json.String(library);
    std::fputs(json.EndObject().EndObject().Text().c_str(), stdout);
  }

  const Dictionary* dictionary = nullptr;  // as the loader reported it
  int resolution_steps = 0;                // steps reported by FindInterfaceCreator
  bool class_found = false;  // the class's meta object existed when the tool asked for it
  long class_kind = 0;
  std::string class_name;  // the class whose registration the tool waits for
  std::string class_base;

 private:
  void Observe(const Observation& o);

  bool json_;
  std::vector<ExplainStep> steps_;
};

void Explanation::Observe(const Observation& o) {
  if (o.step < Step::kResolutionFirst) return;
  const std::string t0 = Name(o.text[0]), t1 = Name(o.text[1]), t2 = Name(o.text[2]);
  const std::string id = o.guid[0] != nullptr ? GuidText(*o.guid[0]) : "";
  const bool yes = o.value != 0;
  if (o.step != Step::kRegistration) ++resolution_steps;
  switch (o.step) {
    case Step::kRegistration: {
      const bool found = (o.value & zelsysts::kRegisteredFound) != 0;
      const long kind = o.value & ~long{zelsysts::kRegisteredFound};
      if (o.text[0] != nullptr && class_name == o.text[0]) {
        class_found = found;
        class_kind = kind;
        class_base = o.text[2] != nullptr ? o.text[2] : "";
        return;  // the tool's own request, told once it returns
      }
      if (found) return;  // a library asking again for a class registered before
      Add("registration", KindName(kind),
          "    registers " + t0 + " (" + KindName(kind) +
              (o.text[2] != nullptr ? ", base " + t2 : "") +
              (o.text[1] != nullptr ? ", extends " + t1 : "") + ")",
          {{"class", t0}});
      return;
    }
    case Step::kTableLookup:
      Add("table", yes ? (o.value == zelsysts::kTableAbsent ? "absent" : "creator") : "miss",
          t0 + "'s interface table: " +
              (o.value == zelsysts::kTableMiss     ? "nothing recorded"
               : o.value == zelsysts::kTableAbsent ? "\"not found\" recorded before"
                                                   : "a creation function recorded before"),
          {{"class", t0}});
      return;
    case Step::kMetaClassIdentifier:
      Add("meta_class_identifier", "refused",
          "the meta class identifier names no interface: the search ends", {{"class", t0}});
      return;
    case Step::kRecordByIdentifiers:
      Add("record_by_identifiers",
          o.value == zelsysts::kRecordNone      ? "none"
          : o.value == zelsysts::kRecordCreator ? "creator"
                                                : "not_implementation",
          "record (" + t0 + ", " + GuidText(*o.guid[1]) + ") by identifiers: " +
              (o.value == zelsysts::kRecordNone ? std::string("none")
               : o.value == zelsysts::kRecordCreator
                   ? "a creation function found before, in " + t1
                   : std::string("not an implementation (no library): the search ends")),
          {{"class", t0}});
      return;
    case Step::kInterfaceName:
      Add("interface_name", yes || o.text[0] != nullptr ? "named" : "unnamed",
          "name of " + id + ": " +
              (o.text[0] != nullptr ? t0
                                    : std::string("none (no .iidts record, no interface meta "
                                                  "object): the search ends")),
          {{"interface", o.text[0] != nullptr ? t0 : ""}});
      return;
    case Step::kRecordByNames: {
      const std::string where = o.text[0] && o.text[1] ? Where(o.text[0], o.text[1]) : "";
      Add("record_by_names", yes ? "found" : "none",
          "record (" + t0 + ", " + t1 +
              ") by names: " + (yes ? "library " + t2 + where : std::string("none")),
          {{"class", t0}, {"interface", t1}, {"library", yes ? t2 : ""}, {"where", where}});
      return;
    }
    case Step::kLeafCheck:
      Add("leaf",
          o.value == zelsysts::kLeafDerives     ? "derives"
          : o.value == zelsysts::kLeafUnrelated ? "unrelated"
                                                : "unregistered",
          "leaf interface " + t0 + ": " +
              (o.value == zelsysts::kLeafDerives ? std::string("derives from ") + id
               : o.value == zelsysts::kLeafUnrelated
                   ? "does not derive from " + id + ": the search ends"
                   : std::string("no meta object registered under that name: the search ends")),
          {{"leaf", t0}});
      return;
    case Step::kExtensionMetaObject:
      Add("extension_meta_object", yes ? "registered" : "unregistered",
          "extending class " + t0 + ": " + (yes ? "registered" : "not registered (yet)"),
          {{"extension", t0}});
      return;
    case Step::kLibraryLoad:
      Add("library_load", yes ? "loaded" : "failed",
          "load " + t0 + ": " + (yes ? "loaded" : "failed: " + LoaderReason(o.text[0], nullptr)),
          {{"library", t0}});
      return;
    case Step::kExtensionCheck:
      Add("extension",
          o.value == zelsysts::kExtensionExtends     ? "extends"
          : o.value == zelsysts::kExtensionNotListed ? "not_listed"
                                                     : "not_extension",
          t0 + " " +
              (o.value == zelsysts::kExtensionExtends ? "is an extension of " + t1
               : o.value == zelsysts::kExtensionNotListed
                   ? "is an extension, but not of " + t1 + ": the search ends"
                   : std::string("is not registered as an extension: the search ends")),
          {{"extension", t0}, {"class", t1}});
      return;
    case Step::kNoLibrary:
      Add("no_library", "none", "the record names no library: the search ends",
          {{"class", t0}, {"interface", t1}});
      return;
    case Step::kFunctionLookup:
      Add("function", yes ? "found" : "missing",
          "function " + t1 + " in " + t0 + ": " +
              (yes ? "found" : "not found: " + LoaderReason(o.text[0], o.text[1])),
          {{"library", t0}, {"function", t1}});
      return;
    case Step::kBaseClass:
      Add("base_class",
          o.value == zelsysts::kBaseSearched ? "searched"
          : o.value == zelsysts::kBasePlain  ? "plain"
                                             : "none",
          "base class of " + t0 + ": " +
              (o.value == zelsysts::kBaseNone ? std::string("none")
               : o.value == zelsysts::kBaseSearched
                   ? t1 + ", searched in turn"
                   : t1 + ", a plain class without interfaces: it answers nothing"),
          {{"class", t0}, {"base", o.text[1] != nullptr ? t1 : ""}});
      return;
    case Step::kAnswerRecorded:
      Add("answer",
          o.value == zelsysts::kAnswerAbsent        ? "absent"
          : o.value == zelsysts::kAnswerNotRecorded ? "not_recorded"
                                                    : "found",
          t0 + " records " +
              (o.value == zelsysts::kAnswerAbsent  ? std::string("\"not found\"")
               : o.value == zelsysts::kAnswerFound ? std::string("the creation function")
               : o.value == zelsysts::kAnswerInherited
                   ? std::string("its base class's creation function")
                   : std::string("nothing (memory ran out; the next request searches again)")),
          {{"class", t0}});
      return;
    default:
      return;
  }
}

}  // namespace

int RunExplain(const Invocation& invocation) {
  const std::vector<std::string>& args = invocation.args;
  if (args.size() < 2) return UsageError(kExplainHelp, "explain needs CLASS and INTERFACE");
  for (const std::string& arg : args) {
    if (arg.rfind("--", 0) == 0) return UsageError(kExplainHelp, "unknown option \"" + arg + "\"");
  }
  const std::string& classArg = args[0];
  const std::string& interfaceArg = args[1];
  // A GUID given for either is read by the library's conversion; what it rejects is a usage error.
  _GUID iid{}, clsid{};
  const bool classById = !classArg.empty() && classArg[0] == '{';
  const bool interfaceById = !interfaceArg.empty() && interfaceArg[0] == '{';
  for (auto [byId, text, guid] : {std::make_tuple(classById, &classArg, &clsid),
                                  std::make_tuple(interfaceById, &interfaceArg, &iid)}) {
    if (!byId) continue;
    const GuidReading reading = ReadGuidText(*text);
    if (!reading.accepted) {
      return UsageError(kExplainHelp, EscapeText(*text) + ": " + reading.problems.front().message);
    }
    *guid = reading.guid;
  }
  // The dictionary, read by the library as a request would have it read.
  const Dictionary dictionary = ReadDictionary({args.begin() + 2, args.end()});
  Explanation explanation(invocation.json);
  explanation.dictionary = &dictionary;
  if (!invocation.json) {
    std::printf("explain %s %s\n", EscapeText(classArg).c_str(), EscapeText(interfaceArg).c_str());
  }
  explanation.Add("dictionary", dictionary.complete ? "read" : "incomplete",
                  "dictionary read from " + EscapeText(dictionary.path) + " (" +
                      std::to_string(dictionary.dicts.size()) + " .dicts, " +
                      std::to_string(dictionary.iids.size()) + " .iidts, " +
                      std::to_string(dictionary.clsids.size()) + " .clsidts lines" +
                      (dictionary.messages.empty() ? ")" : "; the loader complained: see check)"),
                  {{"path", dictionary.path}});
  ScopedObserver observer([&](const Observation& observation) {
    Explanation::OnObservation(observation, &explanation);
  });

  auto finish = [&](bool resolved, const std::string& function, const std::string& library) {
    if (invocation.json) {
      explanation.Write(classArg, interfaceArg, resolved, function, library);
    } else {
      std::printf("result: %s %s %s%s\n", EscapeText(classArg).c_str(),
                  resolved ? "offers" : "does not offer", EscapeText(interfaceArg).c_str(),
                  resolved ? (": " + function + " in " + library).c_str()
                           : " (QueryInterface answers E_NOINTERFACE)");
    }
    return resolved ? kExitClean : kExitErrors;
  };

  // The interface's identifier.
  if (!interfaceById) {
    const IidLine* record = InterfaceNamed(dictionary, interfaceArg);
    if (record == nullptr) {
      explanation.Add("interface", "unknown",
                      "interface " + EscapeText(interfaceArg) +
                          ": no .iidts record gives it an identifier, so no request names it",
                      {{"interface", interfaceArg}});
      return finish(false, "", "");
    }
    iid = record->iid;
    explanation.Add(
        "interface", "identified",
        "interface " + EscapeText(interfaceArg) + ": " + GuidText(iid) + " (" + Where(record->at) +
            ")",
        {{"interface", interfaceArg}, {"iid", GuidText(iid)}, {"where", PlaceText(record->at)}});
  }

  // The class's name, and its library.
  std::string className = classArg;
  if (classById) {
    const ClsidLine* record = ClassWithId(dictionary, clsid);
    if (record == nullptr) {
      explanation.Add("class", "unknown",
                      "class " + GuidText(clsid) + ": no .clsidts record names it",
                      {{"clsid", GuidText(clsid)}});
      return finish(false, "", "");
    }
    className = record->cls;
  }
  std::string library;
  Place libraryLine;
  if (!ClassLibrary(dictionary, className, &library, &libraryLine)) {
    explanation.Add("class_library", "none",
                    "class " + EscapeText(className) +
                        ": no .clsidts record or CreateInterface line names its library",
                    {{"class", className}});
  } else {
    explanation.Add(
        "class_library", "named",
        "class " + EscapeText(className) + ": library " + EscapeText(library) + " (" +
            Where(libraryLine) + ")",
        {{"class", className}, {"library", library}, {"where", PlaceText(libraryLine)}});
    const bool loaded = ZELThrLibraryManager::LoadLibrary(library.c_str()) != nullptr;
    explanation.Add("class_library_load", loaded ? "loaded" : "failed",
                    "load " + EscapeText(library) + ": " +
                        (loaded ? "loaded" : "failed: " + LoaderReason(library.c_str(), nullptr)),
                    {{"library", library}});
  }

  // The meta object, as a client reaches it by name. A class that no library registered is
  // registered here as an implementation class without base, as a program registers its own.
  explanation.class_name = className;
  const _GUID* knownId = classById ? &clsid : nullptr;
  ZELSysTSMetaClass* meta = ZELSysTSFindOrCreateMetaObject(
      className.c_str(), ZELSysTSTypeImplementation, knownId, nullptr, nullptr);
  if (meta == nullptr) {
    explanation.Add("meta_object", "none", "meta object of " + EscapeText(className) + ": none");
    return finish(false, "", "");
  }
  const long kind =
      explanation.class_found ? explanation.class_kind : long{ZELSysTSTypeImplementation};
  explanation.Add(
      "meta_object", explanation.class_found ? "registered" : "made_here",
      "meta object of " + EscapeText(className) + ": " +
          (explanation.class_found
               ? std::string("registered (") + KindName(kind) +
                     (explanation.class_base.empty()
                          ? ", no base class)"
                          : ", base " + EscapeText(explanation.class_base) + ")")
               : std::string("none registered; made here as an implementation class without "
                             "base class")),
      {{"class", className}, {"kind", KindName(kind)}, {"base", explanation.class_base}});

  // The resolution itself, through the meta object's own FindInterfaceCreator.
  explanation.resolution_steps = 0;
  auto* effective = static_cast<ZELSysTSMetaClassBase*>(meta->GetEffectiveMetaObject());
  const ZELSysTSInterfaceCreator creator =
      effective != nullptr ? effective->FindInterfaceCreator(iid) : nullptr;
  if (explanation.resolution_steps == 0) {
    explanation.Add("table", creator != nullptr ? "creator" : "plain",
                    creator != nullptr ? "answered by the interface table (recorded earlier)"
                                       : "a plain class without interfaces: it answers nothing");
  }
  std::string function, file;
  Dl_info info{};
  if (creator != nullptr && dladdr(reinterpret_cast<void*>(creator), &info) != 0) {
    function = info.dli_sname != nullptr ? info.dli_sname : "(unnamed function)";
    file = info.dli_fname != nullptr ? info.dli_fname : "";
    file = file.substr(file.rfind('/') + 1);
  }
  // Not a step of the library's: text only, after the answer.
  if (creator == nullptr && !invocation.json) {
    std::printf("  %s\n", OfferedBy(dictionary, iid).c_str());
  }
  return finish(creator != nullptr, function, file);
}

}  // namespace zeldict
