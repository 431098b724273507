// The one reading of the dictionary files.
//
// Read without a lock: the loaded flag (a OnceFlag). It is set once, after a completed walk,
// behind a full fence; whoever sees it set may read the store and the identifier tables without
// locking, since nothing changes them after the walk.
//
// Under the dictionary lock (DicoStore::DictionaryLock(), recursive): the whole load attempt,
// from the second test of the flag to its setting. The readers' inserts into the store take the
// same lock again on this thread; the identifier tables' inserts take none (this lock serialises
// them); the pools' locks nest inside.
#include "dictionaryfiles/DicoLoader.h"

#include <dirent.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "ZELSysTSStrtok.h"
#include "dictionary/DicoStore.h"
#include "dictionaryfiles/DictionaryFile.h"
#include "dictionaryfiles/DictionaryMessages.h"
#include "dictionaryfiles/DictionaryReaders.h"
#include "dictionaryfiles/SeenFileSet.h"
#include "util/LockOrder.h"
#include "util/Observer.h"
#include "util/OnceFlag.h"

namespace {

// Set after a completed walk (see the file comment).
OnceFlag g_loaded;

// The three readers, stateless, used through the reader interface only.
struct Readers {
  ZELSysTSDicReader dicts;
  ZELSysTSIidReader iidts;
  ZELSysTSClsidReader clsidts;

  ZELSysTSDictionaryReader* ForKind(int kind) {
    switch (static_cast<DicoFileKind>(kind)) {
      case DicoFileKind::Dicts:
        return &dicts;
      case DicoFileKind::Iidts:
        return &iidts;
      case DicoFileKind::Clsidts:
        return &clsidts;
      case DicoFileKind::None:
        break;
    }
    return nullptr;
  }
};

// Tells an observer of a step of the walk that concerns a directory or a file.
void ObserveWalk(zelsysts::Step step, const char* file, const char* text0, const char* text1,
                 long value) {
  zelsysts::Observation observation{step};
  observation.file = file;
  observation.text[0] = text0;
  observation.text[1] = text1;
  observation.value = value;
  zelsysts::Observe(observation);
}

// Reads the dictionary files of one directory, in alphasort order, skipping names already seen
// in this walk. A directory that cannot be scanned or holds no dictionary file is passed over
// in silence. False when memory ran out on the way (a file or the directory may then have been
// passed over, a name not marked seen, or a line not entered): the walk is not complete. Caller
// holds the dictionary lock.
bool ReadDirectoryLocked(const char* directory, SeenFileSet& seen, Readers& readers) {
  struct dirent** list = nullptr;
  errno = 0;
  const int n = scandir(directory, &list, IsDictionaryFile, alphasort);
  const int scanError = errno;
  if (zelsysts::Observed()) {
    ObserveWalk(zelsysts::Step::kDirectory, nullptr, directory, nullptr, n < 0 ? -scanError : n);
  }
  if (n <= 0) {
    const bool outOfMemory = n < 0 && scanError == ENOMEM;
    std::free(list);
    return !outOfMemory;
  }
  bool complete = true;
  const size_t directoryLength = std::strlen(directory);
  for (int i = 0; i < n; ++i) {
    const char* name = list[i]->d_name;
    // Marked seen first, so that a file of the same name in a later directory stays hidden even
    // when this one cannot be read; a lack of memory then stops the walk, which the next request
    // makes again from the start. A name the set could not hold stops it too: without it a later
    // file of that name would be read.
    const bool seenBefore = complete && seen.TestAndAdd(name) != 0;
    if (complete && seen.OutOfMemory()) complete = false;
    if (complete && seenBefore && zelsysts::Observed()) {
      ObserveWalk(zelsysts::Step::kFileHidden, nullptr, directory, name, 0);
    }
    if (complete && !seenBefore) {
      const size_t nameLength = std::strlen(name);
      char* fullPath = static_cast<char*>(std::malloc(directoryLength + 1 + nameLength + 1));
      if (fullPath == nullptr) {
        complete = false;
      } else {
        std::memcpy(fullPath, directory, directoryLength);
        fullPath[directoryLength] = '/';
        std::memcpy(fullPath + directoryLength + 1, name, nameLength + 1);
        // One file's failure never stops the walk; a lack of memory makes it incomplete.
        const int kind = DictionaryFileKind(fullPath);
        if (zelsysts::Observed()) {
          ObserveWalk(zelsysts::Step::kFileRead, fullPath, nullptr, nullptr, kind);
        }
        if (ReadDictionaryFile(fullPath, readers.ForKind(kind)) == E_OUTOFMEMORY) {
          complete = false;
        }
        std::free(fullPath);
      }
    }
    std::free(list[i]);
  }
  std::free(list);
  return complete;
}

}  // namespace

bool DicoLoader::IsLoaded() {
  return g_loaded.Done();
}

void DicoLoader::Load() {
  g_loaded.Run(SharedLocks::DictionaryLock(), [] {
    if (!DicoStore::IsInitialized()) DicoStore::Initialize();

    const char* path = std::getenv("ZELDictionaryPath");
    const char* noFallback = std::getenv("ZELDictionaryNoPathNoFallback");
    if (noFallback != nullptr || path == nullptr) {
      // Not loaded: the next call tries again (and says so again).
      WriteDictionaryMessage(nullptr, 0,
                             "Error in reading dictionaries : ZELDictionaryPath is not defined.\n");
      return false;
    }

    // The tokeniser writes into its text, so it works on a private copy of the path.
    char* pathCopy = strdup(path);
    if (pathCopy == nullptr) return false;  // no memory: stay unloaded, a later call may succeed
    if (zelsysts::Observed()) ObserveWalk(zelsysts::Step::kWalkBegin, nullptr, path, nullptr, 0);
    bool complete = true;
    {
      SeenFileSet seen;
      Readers readers;
      char* state = nullptr;
      for (char* directory = ZELSysTSStrtok(pathCopy, ":", &state); directory != nullptr;
           directory = ZELSysTSStrtok(nullptr, ":", &state)) {
        // A walk that ran out of memory stops: it is made again, whole, at the next request.
        if (!ReadDirectoryLocked(directory, seen, readers)) {
          complete = false;
          break;
        }
      }
      complete = complete && !seen.OutOfMemory();
    }
    std::free(pathCopy);
    if (zelsysts::Observed()) {
      ObserveWalk(zelsysts::Step::kWalkEnd, nullptr, nullptr, nullptr, complete ? 1 : 0);
    }
    // A walk that lost something for lack of memory is not a load: the next request walks again
    // (a line read twice gives the record it gave the first time).
    return complete;
  });
}
