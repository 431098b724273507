// The messages of the dictionary files: fixed texts written to standard error, and the same
// bytes told to an observer (util/Observer.h) with the file and line they concern.
#pragma once

#include "util/Observer.h"

struct _GUID;

// Writes the message to standard error exactly as fprintf(stderr, format, ...) would. When a
// program observes, it is also told the bytes written (a kMessage observation with path and
// line; null and 0 when the message concerns no line); nothing is formatted twice otherwise.
void WriteDictionaryMessage(const char* path, int line, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

// Tells an observer of a message that was written by other means (perror): the same as the
// observation above, without writing anything. Does nothing when nobody observes.
void ObserveDictionaryMessage(const char* path, int line, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

// Tells an observer what became of an identifier line (.iidts: text, name; .clsidts: text, class,
// library): step kIidRecord or kClsidRecord, outcome one of zelsysts::kRecord*.
void ObserveIdentifierRecord(zelsysts::Step step, const char* path, int line, const char* text,
                             const char* name, const char* library, const _GUID& guid,
                             long outcome);
