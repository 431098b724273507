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

  // Interface resolution: the interface table, the dictionary records, the libraries and
  // functions, the leaf and extension checks, the base class, the answer recorded.
  // (Filled in by the resolution's observation points.)
  kResolutionFirst = 200,
};

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
