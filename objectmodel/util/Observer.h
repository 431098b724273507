// Observer: what the library does while it reads the dictionary and resolves an interface, told
// step by step to a program that wants to know (the dictionary tool, zelsysts-dict), and to no
// one otherwise.
//
// The program defines the function ZELSysTSObserveStep (extern "C") and exports it from its
// executable (-Wl,--export-dynamic-symbol=ZELSysTSObserveStep). The library refers to it weakly:
// when no program defines it, its address is null and every observation point costs one
// predictable branch. The library never exports the name; it imports it, weakly.
//
// An Observation lives only for the call: its pointers point into the library's buffers, the
// pools or the caller's stack, and the observer copies what it keeps. The observer is called with
// whatever locks the observation point holds (the dictionary lock during a load, none during a
// library load), so it must not call back into the library.
#pragma once

struct _GUID;

namespace zelsysts {

enum class Step : int {
  // The dictionary files: the loader's walk, each file, each line, each record and message.
  // (Filled in by the dictionary files' observation points.)
  kDictionaryFilesFirst = 100,
  // A walk begins: text[0] the value of ZELDictionaryPath.
  kWalkBegin,
  // A directory of the walk: text[0] the directory as written in the path; value the number of
  // dictionary files it lists, or -errno when it cannot be scanned.
  kDirectory,
  // A file is read: file its path; value its DicoFileKind.
  kFileRead,
  // A file passed over because a file of the same name was met earlier in the walk: text[0] the
  // directory, text[1] the name.
  kFileHidden,
  // A file named like a dictionary file that is not a regular file (a fifo, a device, a
  // directory): file its path. It is opened without blocking and left unread.
  kFileNotRegular,
  // One line (or piece of a long line) as read: file, line; text[0] the bytes the reader sees
  // (cut at the first NUL); value the kLine* flags below. Comment and blank lines included.
  kLine,
  // A ".dicts" line handed to the store: file, line; text[0..2] class, interface and library
  // (the library as the store holds it when the insert succeeded, as written otherwise);
  // text[3] the keyword's value, with kRecordLeaf or kRecordExtendedBy in value telling which;
  // value also holds the outcome (kRecord* below, in its low byte).
  kDictsRecord,
  // An ".iidts" line handed to the interface identifier table: text[0] the IID as written,
  // text[1] the name, guid[0] the IID; value the outcome.
  kIidRecord,
  // A ".clsidts" line handed to the class identifier table: text[0] the CLSID as written,
  // text[1] the class, text[2] the library or null, guid[0] the CLSID; value the outcome.
  kClsidRecord,
  // A message written to standard error by the loader, a reader or the store: text[0] the
  // bytes written; file and line when the message concerns a line of a file (the store's
  // message carries none: it belongs to the line being read).
  kMessage,
  // A file's reading ends: file, line the last line read; value the result (0, or an HRESULT
  // failure: E_FAIL when a line was rejected and the rest of the file left unread).
  kFileEnd,
  // The walk ends: value 1 when it completed (the dictionary is loaded), 0 otherwise.
  kWalkEnd,

  // Interface resolution: the interface table, the dictionary records, the libraries and
  // functions, the leaf and extension checks, the base class, the answer recorded.
  // (Filled in by the resolution's observation points.)
  kResolutionFirst = 200,
};

// Flags of a kLine observation.
constexpr long kLineFilledBuffer = 1;  // no newline within the buffer: the rest comes as lines
constexpr long kLineHasNul = 2;        // a NUL byte before the newline: the line is cut there
constexpr long kLineEndsInCr = 4;      // the last field ends in a carriage return

// Outcomes of a record (low byte of value), and the keyword flags of a kDictsRecord.
constexpr long kRecordAdded = 0;           // a new record or identifier
constexpr long kRecordSame = 1;            // the pair or identifier was known and agrees
constexpr long kRecordConflict = 2;        // refused: it disagrees with what is known
constexpr long kRecordOutOfMemory = 3;     // not entered for lack of memory
constexpr long kRecordLeaf = 0x100;        // text[3] is an ITFLEAF value
constexpr long kRecordExtendedBy = 0x200;  // text[3] is an EXTENDED_BY value

struct Observation {
  Step step;
  const char* file = nullptr;  // a dictionary file's path, when the step concerns one
  int line = 0;                // its 1-based line, when the step concerns one
  const char* text[4] = {nullptr, nullptr, nullptr, nullptr};  // names, per step
  const _GUID* guid[2] = {nullptr, nullptr};                   // identifiers, per step
  long value = 0;                                              // outcome or flags, per step
};

}  // namespace zelsysts

extern "C" __attribute__((weak, visibility("default"))) void ZELSysTSObserveStep(
    const zelsysts::Observation* observation);

namespace zelsysts {

// True when a program observes; the observation points test this before building an
// Observation, so an unobserved library does no work for them.
inline bool Observed() {
  return ZELSysTSObserveStep != nullptr;
}

inline void Observe(const Observation& observation) {
  if (ZELSysTSObserveStep != nullptr) ZELSysTSObserveStep(&observation);
}

}  // namespace zelsysts
