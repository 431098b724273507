// zelsysts-dict guid: new random GUIDs, and one GUID converted between the dictionary's text
// form, the C initialiser and the client kit's literal. A text is read by the library's own
// conversion (ZELSysTSConvertStringToGUID), and every way in which it differs from the strict
// form is told with its character: an error when the library rejects it, a warning when the
// library reads it, but leniently (the GUID may not be the one meant).
#include <cstdio>
#include <cstdlib>
#include <string>

#include "Command.h"
#include "GuidText.h"
#include "Output.h"

namespace zeldict {

const char kGuidHelp[] =
    "usage: zelsysts-dict guid [--new [N]] [TEXT]\n"
    "\n"
    "  --new [N]  print N (default 1) new random GUIDs (version 4) in the dictionary's text\n"
    "             form, one a line\n"
    "  TEXT       a GUID as the dictionary writes it, {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX},\n"
    "             or as a C initialiser, \"{0x..., 0x..., 0x..., {0x.., ...}}\": print it in the\n"
    "             text form, as a C initialiser and as the client kit's literal\n"
    "             (ZELSysTSGuid(\"...\"), as in ZELSYSTS_DECLARE_INTERFACE)\n"
    "\n"
    "A text is read by the library's own conversion. What it rejects is an error (exit 2);\n"
    "a separator that is not a dash, or a byte that is not a hexadecimal digit (read as 0),\n"
    "is a warning (exit 1): the dictionary reads such a text, maybe not as meant.\n";

namespace {

void WriteForms(JsonWriter& json, const _GUID& guid) {
  json.Key("text").String(GuidText(guid));
  json.Key("c_initializer").String(GuidInitializer(guid));
  json.Key("kit_literal").String(GuidKitLiteral(guid));
}

int RunNew(const Invocation& invocation, long count) {
  JsonWriter json;
  json.BeginObject().Key("command").String("guid").Key("guids").BeginArray();
  for (long i = 0; i < count; ++i) {
    const _GUID guid = NewRandomGuid();
    if (invocation.json) {
      WriteForms(json.BeginObject(), guid);
      json.EndObject();
    } else {
      std::printf("%s\n", GuidText(guid).c_str());
    }
  }
  if (invocation.json) std::fputs(json.EndArray().EndObject().Text().c_str(), stdout);
  return kExitClean;
}

int RunConvert(const Invocation& invocation, const std::string& text) {
  GuidReading reading;
  if (IsInitializer(text)) {
    std::string problem;
    reading.accepted = ReadGuidInitializer(text, &reading.guid, &problem);
    if (!reading.accepted) reading.problems.push_back({true, 0, problem});
  } else {
    reading = ReadGuidText(text);
  }
  bool error = false;
  for (const GuidProblem& problem : reading.problems) error = error || problem.error;
  const int status = error ? kExitErrors : reading.problems.empty() ? kExitClean : kExitWarnings;

  if (invocation.json) {
    JsonWriter json;
    json.BeginObject().Key("command").String("guid").Key("input").String(text);
    json.Key("guid");
    if (reading.accepted) {
      WriteForms(json.BeginObject(), reading.guid);
      json.EndObject();
    } else {
      json.Null();
    }
    json.Key("problems").BeginArray();
    for (const GuidProblem& problem : reading.problems) {
      json.BeginObject().Key("severity").String(problem.error ? "error" : "warning");
      json.Key("character").Number(problem.position).Key("message").String(problem.message);
      json.EndObject();
    }
    std::fputs(json.EndArray().EndObject().Text().c_str(), stdout);
    return status;
  }
  for (const GuidProblem& problem : reading.problems) {
    std::printf("%s: %s\n", problem.error ? "error" : "warning", problem.message.c_str());
  }
  if (reading.accepted) {
    std::printf("text:        %s\n", GuidText(reading.guid).c_str());
    std::printf("C:           %s\n", GuidInitializer(reading.guid).c_str());
    std::printf("client kit:  %s\n", GuidKitLiteral(reading.guid).c_str());
  }
  return status;
}

}  // namespace

int RunGuid(const Invocation& invocation) {
  const std::vector<std::string>& args = invocation.args;
  if (args.empty()) return RunNew(invocation, 1);
  if (args[0] == "--new") {
    if (args.size() > 2) return UsageError(kGuidHelp, "--new takes one count, no TEXT");
    if (args.size() == 1) return RunNew(invocation, 1);
    char* end = nullptr;
    const long count = std::strtol(args[1].c_str(), &end, 10);
    if (args[1].empty() || *end != '\0' || count < 1 || count > 100000) {
      return UsageError(kGuidHelp, "--new N: N must be a count from 1 to 100000, not \"" +
                                       EscapeText(args[1]) + "\"");
    }
    return RunNew(invocation, count);
  }
  if (args.size() != 1 || args[0].rfind("--", 0) == 0) {
    return UsageError(
        kGuidHelp, args.size() != 1 ? "guid takes one TEXT" : "unknown option \"" + args[0] + "\"");
  }
  return RunConvert(invocation, args[0]);
}

}  // namespace zeldict
