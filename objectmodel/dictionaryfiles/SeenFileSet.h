// SeenFileSet: the file names already read during one walk of the dictionary directories. Keys
// are interned pointers (equal names, equal pointers); 2048 buckets by the pointer's low 11
// bits; new nodes pushed at the head. Lives for one walk, used by one thread under the
// dictionary lock.
#pragma once

class SeenFileSet {
 public:
  static constexpr int kBuckets = 2048;

  SeenFileSet();
  // Frees every node and the bucket array; the names stay interned.
  ~SeenFileSet();
  SeenFileSet(const SeenFileSet&) = delete;
  SeenFileSet& operator=(const SeenFileSet&) = delete;

  // 1 when name is in the set already; otherwise adds it and returns 0. A name that cannot be
  // added for lack of memory is treated as not seen (0), and OutOfMemory() turns true.
  int TestAndAdd(const char* name);
  // True once memory ran out in this set: a name may then be missing from it.
  bool OutOfMemory() const { return out_of_memory_; }

 private:
  struct Node;
  Node** buckets_;
  bool out_of_memory_;
};
