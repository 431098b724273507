// The locks of the object model, in rank order. A thread that holds a lock may take only locks
// of a later rank (or the same recursive lock again); the pools' locks are always innermost.
//
//   1. an object's mutex (ZELSysTSBaseUnknown::mutex, recursive). Held across the creator that
//      QueryInterface calls; never two objects' mutexes at once.
//   2. the dictionary lock (DicoStore::DictionaryLock(), recursive). Held by registration for a
//      whole find-or-create and by DicoLoader::Load for the whole reading of the files.
//   3. a meta object's locks: its interface-table mutex (ZELSysTSMetaClassBase::mutex) and an
//      extension's extended-class mutex (ZELSysTSMetaClassExt::ext_mutex). The two are never
//      nested, and the interface-table mutex is never held with the dictionary lock.
//   4. the identifier tables' locks (IidTable::TableLock(), ClsidTable::TableLock()): they guard
//      only the one-time initialisation of their tables.
//   5. the pools' locks (StringPool::Lock(), GuidPool::Lock()): innermost; a pool takes no other
//      lock while it holds its own.
//
// No lock of ranks 2 to 5 is held while a library is loaded or a function is looked up
// (ZELThrLibraryManager), so that a library's initialisation can register its classes.
//
// The five table locks (ranks 2, 4, 5) live in never-destroyed storage. They are constructed
// when the library loads, in this order: class identifier table, GUID pool, interface
// identifier table, string pool, dictionary lock; a table used earlier (from another library's
// static initialisation) constructs its lock at that first use.
#pragma once
