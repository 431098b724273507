// The five shared table locks: each built at first use in never-destroyed storage, and all five
// built when the library loads, in the order that util/LockOrder.h gives.
#include "util/LockOrder.h"

#include "util/NoDestructor.h"

namespace SharedLocks {

ZELSmartMutex& ClsidTableLock() {
  static NoDestructor<ZELSmartMutex> lock(0);
  return *lock;
}

ZELSmartMutex& GuidPoolLock() {
  static NoDestructor<ZELSmartMutex> lock(0);
  return *lock;
}

ZELSmartMutex& IidTableLock() {
  static NoDestructor<ZELSmartMutex> lock(0);
  return *lock;
}

ZELSmartMutex& StringPoolLock() {
  static NoDestructor<ZELSmartMutex> lock(0);
  return *lock;
}

ZELSmartMutex& DictionaryLock() {
  static NoDestructor<ZELSmartMutex> lock(0);
  return *lock;
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
