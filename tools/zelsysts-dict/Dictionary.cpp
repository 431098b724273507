// Reading the dictionary through the library, and the model the commands share.
#include "Dictionary.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "Libraries.h"
#include "Observe.h"
#include "Output.h"
#include "ZELSysTSObjectCreation.h"

namespace zeldict {

namespace {

// Gathers the observations of one load. The library calls it under the dictionary lock, so it
// only copies.
class Gatherer {
 public:
  explicit Gatherer(Dictionary& d) : d_(d) {}

  void operator()(const zelsysts::Observation& o) {
    using zelsysts::Step;
    const auto text = [&](int i) { return std::string(o.text[i] != nullptr ? o.text[i] : ""); };
    const Place at{o.file != nullptr ? o.file : "", o.line};
    switch (o.step) {
      case Step::kWalkBegin:
        d_.walked = true;
        d_.path = text(0);
        break;
      case Step::kDirectory:
        d_.directories.emplace_back(text(0), o.value);
        break;
      case Step::kFileRead:
        FlushLine();
        d_.files.push_back(FileRead{at.file, static_cast<int>(o.value)});
        in_file_ = true;
        break;
      case Step::kFileHidden:
        HideFile(text(0), text(1));
        break;
      case Step::kFileNotRegular:
        if (!d_.files.empty()) d_.files.back().regular = false;
        break;
      case Step::kLine: {
        const bool continuation = previous_filled_ && SameFile(at);
        FlushLine();
        std::string bytes = text(0);
        if (!bytes.empty() && bytes.back() == '\n') bytes.pop_back();
        current_ = FlaggedLine{at, bytes, o.value, continuation, false};
        previous_filled_ = (o.value & zelsysts::kLineFilledBuffer) != 0;
        break;
      }
      case Step::kDictsRecord:
        current_.reached_reader = true;
        d_.dicts.push_back(
            DictsLine{at, text(0), text(1), text(2), o.value & zelsysts::kRecordLeaf ? text(3) : "",
                      o.value & zelsysts::kRecordExtendedBy ? text(3) : "", o.value & 0xFF});
        break;
      case Step::kIidRecord:
        current_.reached_reader = true;
        d_.iids.push_back(IidLine{at, text(0), text(1), *o.guid[0], o.value & 0xFF});
        break;
      case Step::kClsidRecord:
        current_.reached_reader = true;
        d_.clsids.push_back(ClsidLine{at, text(0), text(1), text(2), o.text[2] != nullptr,
                                      *o.guid[0], o.value & 0xFF});
        break;
      case Step::kMessage:
        // The store's message names no line: it belongs to the line being read.
        if (at.file.empty() && in_file_) {
          raw_messages_.push_back(Message{current_.at, text(0)});
        } else {
          raw_messages_.push_back(Message{at, text(0)});
        }
        if (in_file_ && at.line == current_.at.line) current_.reached_reader = true;
        break;
      case Step::kFileEnd:
        FlushLine();
        if (!d_.files.empty()) {
          d_.files.back().last_line = o.line;
          d_.files.back().result = o.value;
        }
        in_file_ = false;
        previous_filled_ = false;
        break;
      case Step::kWalkEnd:
        d_.complete = o.value != 0;
        break;
      default:
        break;  // steps of interface resolution: not part of a load
    }
  }

  // The observed messages, split into lines; what was written to stderr without being observed
  // (by no code of the dictionary files) is kept as messages that concern no line.
  void Finish(const std::string& captured) {
    FlushLine();
    std::string observed;
    for (size_t i = 0; i < raw_messages_.size();) {
      std::string text;
      size_t j = i;
      for (; j < raw_messages_.size() && SamePlace(raw_messages_[j].at, raw_messages_[i].at); ++j) {
        text += raw_messages_[j].text;
      }
      observed += text;
      for (const std::string& line : Lines(text)) {
        d_.messages.push_back(Message{raw_messages_[i].at, line});
      }
      i = j;
    }
    if (captured == observed) return;
    const std::vector<std::string> known = Lines(observed);
    size_t k = 0;
    for (const std::string& line : Lines(captured)) {
      if (k < known.size() && known[k] == line) {
        ++k;
      } else {
        d_.messages.push_back(Message{Place{}, line});
      }
    }
  }

 private:
  static bool SamePlace(const Place& a, const Place& b) {
    return a.file == b.file && a.line == b.line;
  }
  bool SameFile(const Place& at) const { return current_.at.file == at.file; }

  static std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    size_t start = 0;
    while (start < text.size()) {
      size_t end = text.find('\n', start);
      if (end == std::string::npos) end = text.size();
      if (end > start) lines.push_back(text.substr(start, end - start));
      start = end + 1;
    }
    return lines;
  }

  void HideFile(const std::string& directory, const std::string& name) {
    const Place hidden{directory + "/" + name, 0};
    for (const FileRead& file : d_.files) {
      const size_t slash = file.path.rfind('/');
      if (file.path.compare(slash + 1, std::string::npos, name) == 0) {
        d_.hidden.emplace_back(hidden, file.path);
        return;
      }
    }
    d_.hidden.emplace_back(hidden, "");  // hidden by a file that could not be kept in the walk
  }

  void FlushLine() {
    if (!current_.at.file.empty() && (current_.flags != 0 || current_.continuation)) {
      d_.lines.push_back(current_);
    }
    current_ = FlaggedLine{};
  }

  Dictionary& d_;
  FlaggedLine current_;
  bool previous_filled_ = false;
  bool in_file_ = false;
  std::vector<Message> raw_messages_;
};

// A class identifier that no dictionary file lists: 16 random bytes (or, without them, a
// value of this process and moment).
_GUID UnlistedClassId() {
  _GUID guid{};
  if (!RandomGuid(&guid)) {
    guid.Data1 = static_cast<unsigned>(std::time(nullptr)) ^ static_cast<unsigned>(getpid());
    guid.Data2 = 0x7E57;
  }
  return guid;
}

std::string ReadAll(int fd) {
  std::string text;
  char buffer[4096];
  lseek(fd, 0, SEEK_SET);
  for (ssize_t n; (n = read(fd, buffer, sizeof buffer)) > 0;) text.append(buffer, n);
  return text;
}

void BuildPairs(Dictionary& d) {
  std::map<std::pair<std::string, std::string>, size_t> index;
  for (size_t i = 0; i < d.dicts.size(); ++i) {
    const DictsLine& line = d.dicts[i];
    auto [it, fresh] = index.emplace(std::make_pair(line.cls, line.itf), d.pairs.size());
    if (fresh) {
      if (line.outcome == zelsysts::kRecordConflict) {
        // Refused without a line before it: the record came from a registration.
        d.pairs.push_back(Pair{line.cls, line.itf, "", "", "", {}, {}});
      } else {
        d.pairs.push_back(
            Pair{line.cls, line.itf, line.library, line.leaf, line.extended_by, {}, {}});
      }
    }
    Pair& pair = d.pairs[it->second];
    if (line.outcome == zelsysts::kRecordConflict) {
      pair.refused.push_back(i);
    } else if (line.outcome != zelsysts::kRecordOutOfMemory) {
      pair.lines.push_back(line.at);
      if (pair.library.empty()) pair.library = line.library;
      if (pair.leaf.empty()) pair.leaf = line.leaf;
      if (pair.extended_by.empty()) pair.extended_by = line.extended_by;
    }
  }
  for (const IidLine& line : d.iids) {
    if (line.outcome == zelsysts::kRecordAdded) d.iid_of_name.emplace(line.name, line.at);
  }
}

}  // namespace

bool ParseArguments(const std::vector<std::string>& args, std::map<std::string, bool>* flags,
                    std::map<std::string, std::string>* values,
                    std::vector<std::string>* directories, std::string* error) {
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (arg.rfind("-", 0) != 0 || arg == "-") {
      directories->push_back(arg);
    } else if (flags != nullptr && flags->count(arg) != 0) {
      (*flags)[arg] = true;
    } else if (values != nullptr && values->count(arg) != 0) {
      if (i + 1 >= args.size()) {
        *error = "option " + arg + " needs a value";
        return false;
      }
      (*values)[arg] = args[++i];
    } else {
      *error = "unknown option \"" + EscapeText(arg) + "\"";
      return false;
    }
  }
  return true;
}

Dictionary ReadDictionary(const std::vector<std::string>& directories) {
  Dictionary d;
  if (!directories.empty()) {
    std::string path;
    for (const std::string& directory : directories) {
      path += (path.empty() ? "" : ":") + directory;
    }
    setenv("ZELDictionaryPath", path.c_str(), 1);
    unsetenv("ZELDictionaryNoPathNoFallback");
  }
  Gatherer gatherer(d);
  // The library's own lines go to a file while it loads, so that they are not printed twice.
  std::fflush(stderr);
  FILE* capture = std::tmpfile();
  const int saved = capture != nullptr ? dup(STDERR_FILENO) : -1;
  if (saved >= 0) dup2(fileno(capture), STDERR_FILENO);
  {
    ScopedObserver observe([&](const zelsysts::Observation& o) { gatherer(o); });
    const _GUID unlisted = UnlistedClassId();
    void* object = nullptr;
    ZELSysTSCreateInstance(unlisted, unlisted, &object);  // loads, and finds no such class
  }
  std::fflush(stderr);
  std::string captured;
  if (saved >= 0) {
    dup2(saved, STDERR_FILENO);
    close(saved);
    captured = ReadAll(fileno(capture));
  }
  if (capture != nullptr) std::fclose(capture);
  gatherer.Finish(captured);
  BuildPairs(d);
  return d;
}

std::string Where(const Place& place) {
  if (place.file.empty()) return "(no file)";
  return EscapeText(place.file) + (place.line > 0 ? ":" + std::to_string(place.line) : "");
}

const char* KindName(int kind) {
  switch (kind) {
    case 1:
      return "dicts";
    case 2:
      return "iidts";
    case 3:
      return "clsidts";
    default:
      return "none";
  }
}

}  // namespace zeldict
