// Constructs the locks of the five shared tables when the library is loaded, in their fixed
// order (see core/LockOrder.h). Each accessor builds its lock at first use in never-destroyed
// storage, so a table used before this runs (from another library's static initialisation)
// already has its lock, and this step then finds it built.
#include "dictionary/DicoStore.h"
#include "dictionary/GuidPool.h"
#include "dictionary/StringPool.h"
#include "dictionaryfiles/ClsidTable.h"
#include "dictionaryfiles/IidTable.h"

namespace {

struct SharedLocksAtLoad {
  SharedLocksAtLoad() {
    ClsidTable::TableLock();
    GuidPool::Lock();
    IidTable::TableLock();
    StringPool::Lock();
    DicoStore::DictionaryLock();
  }
};

const SharedLocksAtLoad g_shared_locks_at_load;

}  // namespace
