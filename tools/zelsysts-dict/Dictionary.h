// The dictionary as the library read it: the tool makes the library load its dictionary files
// and keeps what the loader, the readers and the store told its observer (util/Observer.h),
// step by step. Every command works on this one model; none reads a dictionary file itself.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "ZELSysTSTypes.h"
#include "util/Observer.h"

namespace zeldict {

// A line of a dictionary file (line 0: the file as a whole; an empty file: no file at all).
struct Place {
  std::string file;
  int line = 0;
};

// A line whose bytes the reader could not take at face value (kLine flags), or the piece that
// follows a line that filled the buffer.
struct FlaggedLine {
  Place at;
  std::string bytes;          // as the reader sees them: cut at the first NUL, without the newline
  long flags = 0;             // zelsysts::kLine*
  bool continuation = false;  // the rest of the line before it, read as a line of its own
  bool reached_reader = false;  // not a comment or blank: it became a record or a message
};

// One line handed to a table, and what became of it (zelsysts::kRecord*).
struct DictsLine {
  Place at;
  std::string cls, itf, library, leaf, extended_by;  // library as the store holds it if entered
  long outcome = 0;
};
struct IidLine {
  Place at;
  std::string text, name;
  _GUID iid{};
  long outcome = 0;
};
struct ClsidLine {
  Place at;
  std::string text, cls, library;
  bool has_library = false;
  _GUID clsid{};
  long outcome = 0;
};

// One line of text that the library wrote to standard error, with the line it concerns (no file
// when it concerns none).
struct Message {
  Place at;
  std::string text;
};

struct FileRead {
  std::string path;
  int kind = 0;         // DicoFileKind: 1 .dicts, 2 .iidts, 3 .clsidts
  int last_line = 0;    // the last line read
  long result = 0;      // 0, or the HRESULT of a failure (a rejected line, no fopen)
  bool regular = true;  // false: a fifo, device or directory, left unread
};

// A class+interface pair as the store holds it: the fields of the lines it accepted (which never
// disagree), every line that gave it, and the lines it refused.
struct Pair {
  std::string cls, itf, library, leaf, extended_by;
  std::vector<Place> lines;     // accepted, in walk order: the first made the record
  std::vector<size_t> refused;  // indexes into Dictionary::dicts
};

struct Dictionary {
  std::string path;       // the ZELDictionaryPath the library walked
  bool walked = false;    // a walk began (the path was defined)
  bool complete = false;  // the walk completed: the dictionary is loaded
  std::vector<std::pair<std::string, long>> directories;  // as written; dictionary files or -errno
  std::vector<FileRead> files;
  std::vector<std::pair<Place, std::string>> hidden;  // the hidden file, the file hiding it
  std::vector<FlaggedLine> lines;
  std::vector<DictsLine> dicts;
  std::vector<IidLine> iids;
  std::vector<ClsidLine> clsids;
  std::vector<Message> messages;

  // Derived from dicts after the load: the pairs in order of first definition.
  std::vector<Pair> pairs;
  // The interface names that an .iidts line entered, with their line.
  std::map<std::string, Place> iid_of_name;
};

// Parses the command's arguments: directories, and the options in `flags` (given ones are set
// to true) and in `values` (each takes the next argument). False, with the message, on an
// unknown option or a missing value.
bool ParseArguments(const std::vector<std::string>& args, std::map<std::string, bool>* flags,
                    std::map<std::string, std::string>* values,
                    std::vector<std::string>* directories, std::string* error);

// Has the library read the dictionary: ZELDictionaryPath is set to the directories joined by ':'
// (none: the environment's value stays, and so does ZELDictionaryNoPathNoFallback), the library
// is asked for a class that no file can list, and its observations are gathered. The library's
// own lines on standard error are kept from the terminal and come back as messages.
Dictionary ReadDictionary(const std::vector<std::string>& directories);

// Where a place is, for text: "file:line" ("file" for line 0), escaped.
std::string Where(const Place& place);

// "dicts", "iidts" or "clsidts" for a DicoFileKind.
const char* KindName(int kind);

}  // namespace zeldict
