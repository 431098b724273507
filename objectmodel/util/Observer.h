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
  // A meta object asked for by name: text {class, extended class or null, base class or null},
  // guid {class identifier}, value kRegistered* | kind. Under the dictionary lock.
  kRegistration,
  // The class's interface table looked up: text {class}, guid {iid}, value kTable*.
  kTableLookup,
  // The meta class identifier asked for as an interface: text {class}, guid {iid}. Ends the
  // dictionary search with null.
  kMetaClassIdentifier,
  // The record under (class identifier, iid): text {class, library or null}, guid {class
  // identifier, iid}, value kRecord*. A record with a creator ends the dictionary search.
  kRecordByIdentifiers,
  // The name of the requested interface: text {name or null}, guid {iid}. Null ends the search.
  kInterfaceName,
  // The record under (class name, interface name): text {class, interface, library or null},
  // value 1 when found. Not found ends the search.
  kRecordByNames,
  // The record's leaf interface: text {leaf}, guid {iid}, value kLeaf*.
  kLeafCheck,
  // The record's extending class looked for among the registered meta objects (once, and again
  // after its library is loaded): text {extending class}, value 1 when registered.
  kExtensionMetaObject,
  // A library loaded by name: text {library}, value 1 when loaded. Right after the library
  // manager's call, on the calling thread.
  kLibraryLoad,
  // The extending class checked: text {extending class, class}, value kExtension*.
  kExtensionCheck,
  // The record names no library: text {class, interface}. Ends the search with null.
  kNoLibrary,
  // The creation function looked up: text {library, function}, value 1 when found. Right after
  // the library manager's call (which loads the library first), on the calling thread.
  kFunctionLookup,
  // The walk to the base class: text {class, base class or null}, value kBase*.
  kBaseClass,
  // The answer recorded in the class's interface table: text {class}, guid {iid}, value kAnswer*.
  kAnswerRecorded,
};

// Values of the resolution steps.
enum : long {
  kRegisteredFound = 0x100,      // kRegistration: the meta object existed (else it was built)
  kTableMiss = 0,                // kTableLookup
  kTableCreator = 1,             // kTableLookup: a creation function is recorded
  kTableAbsent = 2,              // kTableLookup: "searched before, not found" is recorded
  kRecordNone = 0,               // kRecordByIdentifiers: no record, or one without a creator
  kRecordCreator = 1,            // kRecordByIdentifiers: a creation function found before
  kRecordNotImplementation = 2,  // kRecordByIdentifiers: a creator without library
  kLeafUnregistered = 0,         // kLeafCheck: no meta object has the leaf's name
  kLeafDerives = 1,              // kLeafCheck: the leaf's meta object is a kind of iid
  kLeafUnrelated = 2,            // kLeafCheck: it is not
  kExtensionNotExtension = 0,    // kExtensionCheck: the class registered is not an extension
  kExtensionExtends = 1,         // kExtensionCheck: it lists the class
  kExtensionNotListed = 2,       // kExtensionCheck: it does not list the class
  kBaseNone = 0,                 // kBaseClass: no base class; the search ends
  kBaseSearched = 1,             // kBaseClass: an implementation base, searched in turn
  kBasePlain = 2,                // kBaseClass: a base without interfaces (its answer is null)
  kAnswerAbsent = 0,             // kAnswerRecorded: "not found" recorded
  kAnswerFound = 1,              // kAnswerRecorded: the creation function found in the dictionary
  kAnswerInherited = 2,          // kAnswerRecorded: the base class's creation function
  kAnswerNotRecorded = 3,        // kAnswerRecorded: nothing recorded (memory ran out: null may be
                                 // wrong, the next request searches again)
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
