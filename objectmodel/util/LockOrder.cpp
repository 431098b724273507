// The five shared table locks: each built at first use in never-destroyed storage, and all five
// built when the library loads, in the order that util/LockOrder.h gives.
#include "util/LockOrder.h"

#include "util/NoDestructor.h"

namespace {

enum class TableLock { kClsidTable, kGuidPool, kIidTable, kStringPool, kDictionary };

// The lock of one table, built at its first use and never destroyed.
template <TableLock kTable>
ZELSmartMutex& BuiltAtFirstUse() {
  static NoDestructor<ZELSmartMutex> lock(0);
  return *lock;
}

}  // namespace

namespace SharedLocks {

ZELSmartMutex& ClsidTableLock() {
  return BuiltAtFirstUse<TableLock::kClsidTable>();
}
ZELSmartMutex& GuidPoolLock() {
  return BuiltAtFirstUse<TableLock::kGuidPool>();
}
ZELSmartMutex& IidTableLock() {
  return BuiltAtFirstUse<TableLock::kIidTable>();
}
ZELSmartMutex& StringPoolLock() {
  return BuiltAtFirstUse<TableLock::kStringPool>();
}
ZELSmartMutex& DictionaryLock() {
  return BuiltAtFirstUse<TableLock::kDictionary>();
}

}  // namespace SharedLocks

namespace {

struct SharedLocksAtLoad {
  SharedLocksAtLoad() {
    SharedLocks::ClsidTableLock();
    SharedLocks::GuidPoolLock();
    SharedLocks::IidTableLock();
    SharedLocks::StringPoolLock();
    SharedLocks::DictionaryLock();
  }
};

const SharedLocksAtLoad g_shared_locks_at_load;

}  // namespace
