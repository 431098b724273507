#include "pools/StringPool.h"

#include <atomic>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "pools/HashIndex.h"
#include "util/LockOrder.h"
#include "util/OnceFlag.h"
#include "util/ScopedLock.h"
#include "util/ThreadAnnotations.h"

namespace {

struct StringNode {
  StringNode* next;
  const char* text;
  int32_t length;
};

// One allocation: the link to the next chunk, then the text storage.
struct Chunk {
  Chunk* next;
  char storage[StringPool::kChunkBytes];
};

// A sorted mirror of one chain: the same nodes in the same order, in an array, so that finding
// a text or its place costs a binary search instead of a walk. Chains can grow long (4096 fixed
// buckets, and similar names cluster in a few of them). If the array cannot grow, the mirror of
// that bucket gives up for good and the chain is walked instead.
struct ChainMirror {
  StringNode** nodes;
  int32_t count;
  int32_t capacity;
  bool abandoned;
};

// Process-wide state in static storage. Every member has an initialiser, so the whole state is
// constant-initialized: it exists, empty, before any static initialiser of any library runs, and
// no load-time initialiser resets it.
struct StringPoolState {
  StringNode* heads[StringPool::kBuckets] = {};
  ChainMirror mirrors[StringPool::kBuckets] = {};
  HashIndex<const char> index;  // every pooled text by a 64-bit hash: a hit costs one probe
  Chunk* chunk_head = {};
  Chunk* chunk_tail = {};
  char* write_position = {};
  int32_t bytes_left = {};
};

StringPoolState g_pool GUARDED_BY(SharedLocks::StringPoolLock());
OnceFlag g_initialized;
std::atomic<void* (*)(size_t)> g_allocate{&std::malloc};

void* Allocate(size_t size) {
  return g_allocate.load(std::memory_order_relaxed)(size);
}

// Where a node stands against the text (text, n) in chain order: negative when the node comes
// first (longer, or as long and smaller by strcmp), 0 when equal, positive when it comes after.
int ChainOrder(const StringNode* node, const char* text, int32_t n) {
  if (node->length != n) return node->length > n ? -1 : 1;
  return std::strcmp(node->text, text);
}

// Puts node at position pos of the mirror (the same position it took in the chain).
void MirrorInsertLocked(ChainMirror& mirror, int32_t pos, StringNode* node)
    EXCLUSIVE_LOCKS_REQUIRED(SharedLocks::StringPoolLock()) {
  if (mirror.abandoned) return;
  if (mirror.count == mirror.capacity) {
    const int32_t capacity = mirror.capacity == 0 ? 4 : mirror.capacity * 2;
    auto* nodes = static_cast<StringNode**>(Allocate(sizeof(StringNode*) * size_t(capacity)));
    if (nodes == nullptr) {
      std::free(mirror.nodes);
      mirror = ChainMirror{nullptr, 0, 0, true};
      return;
    }
    if (mirror.count > 0)
      std::memcpy(nodes, mirror.nodes, sizeof(StringNode*) * size_t(mirror.count));
    std::free(mirror.nodes);
    mirror.nodes = nodes;
    mirror.capacity = capacity;
  }
  std::memmove(mirror.nodes + pos + 1, mirror.nodes + pos,
               sizeof(StringNode*) * size_t(mirror.count - pos));
  mirror.nodes[pos] = node;
  ++mirror.count;
}

}  // namespace

void StringPool::Initialize() {
  g_initialized.Run(SharedLocks::StringPoolLock(),
                    [&]() EXCLUSIVE_LOCKS_REQUIRED(SharedLocks::StringPoolLock()) {
                      for (StringNode*& head : g_pool.heads) head = nullptr;
                    });
}

uint32_t StringPool::Bucket(const char* text, int32_t* length) {
  uint32_t sum = 0;
  size_t n = 0;
  for (; text[n] != '\0'; ++n) {
    sum += static_cast<uint32_t>(n) * static_cast<unsigned char>(text[n]);
  }
  if (length != nullptr) *length = n > static_cast<size_t>(INT32_MAX) ? INT32_MAX : int32_t(n);
  return sum & 0xFFFu;
}

const char* StringPool::Intern(const char* text) {
  if (text == nullptr) return nullptr;
  if (!g_initialized.Done()) Initialize();

  int32_t n = 0;
  const uint32_t bucket = Bucket(text, &n);
  const uint64_t hash = HashOfNames(text, "");

  ScopedLock guard(SharedLocks::StringPoolLock());
  if (g_pool.index.Usable()) {
    // The slots hold the pooled texts themselves, so a hit reads no chain node.
    const char* known = g_pool.index.Find(
        hash, [text](const char* pooled) { return std::strcmp(pooled, text) == 0; });
    if (known != nullptr) return known;
  }
  // Find the string, or the place where it goes: chains are ordered by length, longest first,
  // then by ascending strcmp order.
  ChainMirror& mirror = g_pool.mirrors[bucket];
  StringNode** link = &g_pool.heads[bucket];
  int32_t pos = 0;
  if (!mirror.abandoned) {
    int32_t hi = mirror.count;
    while (pos < hi) {
      const int32_t mid = pos + (hi - pos) / 2;
      if (ChainOrder(mirror.nodes[mid], text, n) < 0) {
        pos = mid + 1;
      } else {
        hi = mid;
      }
    }
    if (pos < mirror.count && ChainOrder(mirror.nodes[pos], text, n) == 0) {
      return mirror.nodes[pos]->text;
    }
    if (pos > 0) link = &mirror.nodes[pos - 1]->next;
  } else {
    for (StringNode* node = *link; node != nullptr; link = &node->next, node = *link) {
      const int order = ChainOrder(node, text, n);
      if (order == 0) return node->text;
      if (order > 0) break;
    }
  }

  if (n >= kChunkBytes) return nullptr;
  // Obtain everything before changing anything, so that a failure leaves the pool as it was.
  auto* node = static_cast<StringNode*>(Allocate(sizeof(StringNode)));
  if (node == nullptr) return nullptr;
  if (g_pool.bytes_left <= n) {
    // The text and its terminator do not fit in the newest chunk: open a new one; the rest of
    // the old chunk stays unused for good.
    auto* chunk = static_cast<Chunk*>(Allocate(sizeof(Chunk)));
    if (chunk == nullptr) {
      std::free(node);
      return nullptr;
    }
    chunk->next = nullptr;
    if (g_pool.chunk_tail == nullptr) {
      g_pool.chunk_head = chunk;
    } else {
      g_pool.chunk_tail->next = chunk;
    }
    g_pool.chunk_tail = chunk;
    g_pool.write_position = chunk->storage;
    g_pool.bytes_left = kChunkBytes;
  }

  char* pooled = g_pool.write_position;
  std::memcpy(pooled, text, static_cast<size_t>(n) + 1);
  g_pool.write_position += n + 1;
  g_pool.bytes_left -= n + 1;

  node->text = pooled;
  node->length = n;
  node->next = *link;
  *link = node;
  MirrorInsertLocked(mirror, pos, node);
  g_pool.index.Add(hash, pooled);
  return pooled;
}

void StringPool::SetAllocatorForTesting(void* (*allocate)(size_t)) {
  g_allocate.store(allocate != nullptr ? allocate : &std::malloc);
  ScopedLock guard(SharedLocks::StringPoolLock());
  g_pool.index.SetAllocator(allocate);
}
