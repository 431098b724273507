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
// Thread safety: none of its own. The owner's lock guards the chains and the index (the owner
// says which lock where it declares the table), or the owner says why none is needed.
#pragma once

#include <cstdint>
#include <cstdlib>

#include "pools/HashIndex.h"

template <typename Item, int kBuckets>
class ChainedTable {
 public:
  // Empties every chain (the nodes stay allocated; a table is cleared only before first use).
  void Clear() {
    for (int i = 0; i < kBuckets; ++i) heads_[i] = tails_[i] = nullptr;
  }
  // The first item of bucket's chain for which matches(item) holds, through the index while
  // it is complete (hash is the item's key hash), else by walking the chain.
  template <typename Match>
  Item* Find(int bucket, uint64_t hash, Match matches) const {
    if (index_.Usable()) return index_.Find(hash, matches);
    for (const Node* node = heads_[bucket]; node != nullptr; node = node->next) {
      if (matches(node->item)) return node->item;
    }
    return nullptr;
  }

  struct Node {
    Item* item;
    Node* next;
  };

  // A node for a later Append, or null when memory runs out. A node that is not appended goes
  // back through FreeNode. Lets an owner obtain everything before it changes anything.
  Node* NewNode() { return static_cast<Node*>(allocate_(sizeof(Node))); }
  static void FreeNode(Node* node) { std::free(node); }

  // Appends item at the end of bucket's chain in node (from NewNode) and indexes it under hash.
  void Append(int bucket, uint64_t hash, Item* item, Node* node) {
    node->item = item;
    node->next = nullptr;
    if (tails_[bucket] == nullptr) {
      heads_[bucket] = node;
    } else {
      tails_[bucket]->next = node;
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
  Node* heads_[kBuckets] = {};
  Node* tails_[kBuckets] = {};  // make an append O(1)
  HashIndex<Item> index_;
  void* (*allocate_)(size_t) = &std::malloc;
};
