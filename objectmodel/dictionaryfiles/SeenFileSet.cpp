// The set of file names already read during one directory walk, keyed by interned pointer.
#include "dictionaryfiles/SeenFileSet.h"

#include <cstdint>
#include <cstdlib>

#include "pools/StringPool.h"

struct SeenFileSet::Node {
  const char* name;  // interned: equal names have equal pointers
  Node* next;
};

namespace {

int PointerBucket(const char* pooled) {
  return static_cast<int>(reinterpret_cast<uintptr_t>(pooled) & (SeenFileSet::kBuckets - 1));
}

}  // namespace

SeenFileSet::SeenFileSet()
    : buckets_(static_cast<Node**>(std::calloc(kBuckets, sizeof(Node*)))),
      out_of_memory_(buckets_ == nullptr) {}

SeenFileSet::~SeenFileSet() {
  if (buckets_ == nullptr) return;
  for (int i = 0; i < kBuckets; ++i) {
    Node* node = buckets_[i];
    while (node != nullptr) {
      Node* next = node->next;
      std::free(node);
      node = next;
    }
  }
  std::free(buckets_);
}

int SeenFileSet::TestAndAdd(const char* name) {
  const char* pooled = StringPool::Intern(name);
  if (pooled == nullptr || buckets_ == nullptr) {
    out_of_memory_ = true;
    return 0;
  }
  Node** head = &buckets_[PointerBucket(pooled)];
  for (const Node* node = *head; node != nullptr; node = node->next) {
    if (node->name == pooled) return 1;
  }
  Node* node = static_cast<Node*>(std::malloc(sizeof(Node)));
  if (node == nullptr) {
    out_of_memory_ = true;
    return 0;
  }
  node->name = pooled;
  node->next = *head;
  *head = node;
  return 0;
}
