// DicoLoader: reads every dictionary file of the process exactly once, at first need, from the
// directories named by ZELDictionaryPath (separated by ':'). Files are recognised by their
// ending (".dicts", ".iidts", ".clsidts"), read in alphasort order per directory, and a file
// name met in an earlier directory hides later files of that name.
//
// Thread safety: Load may be called from any thread any number of times. The loaded flag is
// tested without a lock, then again under the dictionary lock, which is held for the whole walk;
// it is set behind a full fence once a walk has completed, and never reset. A thread that sees
// it set reads the store and the identifier tables without locking.
#pragma once

class DicoLoader {
 public:
  // Ensures that the dictionary files have been read. Writes
  // "Error in reading dictionaries : ZELDictionaryPath is not defined.\n" and stays unloaded
  // when ZELDictionaryPath is absent or ZELDictionaryNoPathNoFallback is present.
  static void Load();
  // True once a walk has completed.
  static bool IsLoaded();
};
