// The locks of the object model, in rank order, and the five shared table locks themselves.
//
// A thread that holds a lock may take only locks of a later rank (or the same recursive lock
// again); the pools' locks are always innermost.
//
//   1. an object's mutex (ZELSysTSBaseUnknown::mutex, recursive). Held across the creator that
//      QueryInterface calls; never two objects' mutexes at once.
//   2. the dictionary lock (SharedLocks::DictionaryLock(), recursive; DicoStore::DictionaryLock()
//      names it too). Held by registration for a whole find-or-create and by DicoLoader::Load
//      for the whole reading of the files.
//   3. a meta object's locks: its interface-table mutex (ZELSysTSMetaClassImpl::mutex) and an
//      extension's extended-class mutex (ZELSysTSMetaClassExt::ext_mutex). The two are never
//      nested, and the interface-table mutex is never held with the dictionary lock.
//   4. the identifier tables' locks (SharedLocks::IidTableLock(), ClsidTableLock()): they guard
//      only the one-time initialisation of their tables.
//   5. the pools' locks (SharedLocks::StringPoolLock(), GuidPoolLock()): innermost; a pool takes
//      no other lock while it holds its own.
//
// No lock of ranks 2 to 5 is held while a library is loaded or a function is looked up
// (ZELThrLibraryManager), so that a library's initialisation can register its classes.
//
// The five table locks live in never-destroyed storage, each built at its first use. When the
// library loads they are constructed in this order: class identifier table, GUID pool,
// interface identifier table, string pool, dictionary lock; a table used earlier (from another
// library's static initialisation) has built its lock at that first use, and the load-time step
// then finds it built.
#pragma once

#include "ZELSysTSMutex.h"

namespace SharedLocks {

ZELSmartMutex& ClsidTableLock();
ZELSmartMutex& GuidPoolLock();
ZELSmartMutex& IidTableLock();
ZELSmartMutex& StringPoolLock();
ZELSmartMutex& DictionaryLock();

}  // namespace SharedLocks
