// ChainedTable<Item, kBuckets>: a process-wide table of items in a fixed number of chains, each
// chain in order of first insertion, with a HashIndex beside the chains so that finding an
// item costs one short probe sequence however long its chain has grown.
//
// The chains are the table's truth (their order, their first-match rule); the index only
// accelerates and holds at most one item per key (an owner appends a key at most once). When
// the index cannot grow for lack of memory it gives up for good and Find walks the chains
// again: nothing is lost.
//
// Storage: every member is constant-initialized, so a table in static storage exists, empty,
// before any static initialiser of any library runs, and no load-time initialiser resets it.
// Nodes and the index live until the process ends.
//
// Thread safety: appends run under the owner's lock (the owner says which where it declares the
// table). Finds run under it too, or, for a table of IndexReaders::kLockFree, without a lock and
// concurrently with appends: chain links and index slots are published with release stores.
#pragma once

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "pools/HashIndex.h"

template <typename Item, int kBuckets, IndexReaders kReaders = IndexReaders::kLocked>
class ChainedTable {
 public:
  // Empties every chain (the nodes stay allocated; a table is cleared only before first use).
  void Clear() {
    for (int i = 0; i < kBuckets; ++i) {
      heads_[i].store(nullptr, std::memory_order_relaxed);
      tails_[i] = nullptr;
    }
  }

  // The first item of bucket's chain for which matches(item) holds, through the index while
  // it is complete (hash is the item's key hash), else by walking the chain.
  template <typename Match>
  Item* Find(int bucket, uint64_t hash, Match matches) const {
    if (index_.Usable()) return index_.Find(hash, matches);
    for (const Node* node = heads_[bucket].load(std::memory_order_acquire); node != nullptr;
         node = node->next.load(std::memory_order_acquire)) {
      if (matches(node->item)) return node->item;
    }
    return nullptr;
  }

  struct Node {
    Item* item;
    std::atomic<Node*> next;  // published with release: a lock-free reader sees the item
  };

  // A node for a later Append, or null when memory runs out. A node that is not appended goes
  // back through FreeNode. Lets an owner obtain everything before it changes anything.
  Node* NewNode() { return static_cast<Node*>(allocate_(sizeof(Node))); }
  static void FreeNode(Node* node) { std::free(node); }

  // Appends item at the end of bucket's chain in node (from NewNode) and indexes it under hash.
  void Append(int bucket, uint64_t hash, Item* item, Node* node) {
    new (node) Node{item, {nullptr}};
    if (tails_[bucket] == nullptr) {
      heads_[bucket].store(node, std::memory_order_release);
    } else {
      tails_[bucket]->next.store(node, std::memory_order_release);
    }
    tails_[bucket] = node;
    index_.Add(hash, item);
  }

  // As above with a node of its own. False, with the table unchanged, when memory runs out.
  bool Append(int bucket, uint64_t hash, Item* item) {
    Node* node = NewNode();
    if (node == nullptr) return false;
    Append(bucket, hash, item, node);
    return true;
  }

  // The allocation function for nodes and the index (std::malloc unless a test replaces it).
  void SetAllocator(void* (*allocate)(size_t)) {
    allocate_ = allocate != nullptr ? allocate : &std::malloc;
    index_.SetAllocator(allocate);
  }

 private:
  std::atomic<Node*> heads_[kBuckets] = {};
  Node* tails_[kBuckets] = {};  // make an append O(1); the appending thread's own
  HashIndex<Item, kReaders> index_;
  void* (*allocate_)(size_t) = &std::malloc;
};
