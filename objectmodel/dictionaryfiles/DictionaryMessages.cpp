// The messages of the dictionary files, written and observed.
#include "dictionaryfiles/DictionaryMessages.h"

#include <cstdarg>
#include <cstdio>

#include "util/Observer.h"

namespace {

// Formats the message on the stack and hands it to the observer: observing obtains no memory.
// The longest message holds a path and a line's fields; a longer text is cut to the buffer.
void ObserveFormatted(const char* path, int line, const char* format, va_list args) {
  char text[8192];
  if (std::vsnprintf(text, sizeof text, format, args) < 0) return;
  zelsysts::Observation observation{zelsysts::Step::kMessage};
  observation.file = path;
  observation.line = line;
  observation.text[0] = text;
  zelsysts::Observe(observation);
}

}  // namespace

void WriteDictionaryMessage(const char* path, int line, const char* format, ...) {
  va_list args;
  va_start(args, format);
  if (zelsysts::Observed()) {
    va_list copy;
    va_copy(copy, args);
    ObserveFormatted(path, line, format, copy);
    va_end(copy);
  }
  std::vfprintf(stderr, format, args);
  va_end(args);
}

void ObserveDictionaryMessage(const char* path, int line, const char* format, ...) {
  if (!zelsysts::Observed()) return;
  va_list args;
  va_start(args, format);
  ObserveFormatted(path, line, format, args);
  va_end(args);
}

void ObserveIdentifierRecord(zelsysts::Step step, const char* path, int line, const char* text,
                             const char* name, const char* library, const _GUID& guid,
                             long outcome) {
  zelsysts::Observation observation{step};
  observation.file = path;
  observation.line = line;
  observation.text[0] = text;
  observation.text[1] = name;
  observation.text[2] = library;
  observation.guid[0] = &guid;
  observation.value = outcome;
  zelsysts::Observe(observation);
}
