#include "dictionary/StringPool.h"

#include <atomic>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "core/NoDestructor.h"
#include "core/ScopedLock.h"

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

// Process-wide state in static storage, zero at load (constant initialisation: usable from any
// library's static initialisation). Everything but `initialized` is guarded by StringPool::Lock().
struct StringPoolState {
  StringNode* heads[StringPool::kBuckets];
  Chunk* chunk_head;
  Chunk* chunk_tail;
  char* write_position;
  int32_t bytes_left;
  std::atomic<bool> initialized;
};

StringPoolState g_pool;
std::atomic<void* (*)(size_t)> g_allocate{&std::malloc};

void* Allocate(size_t size) {
  return g_allocate.load(std::memory_order_relaxed)(size);
}

}  // namespace

ZELSmartMutex& StringPool::Lock() {
  static NoDestructor<ZELSmartMutex> lock(0);
  return *lock;
}

void StringPool::Initialize() {
  ScopedLock guard(Lock());
  if (g_pool.initialized.load(std::memory_order_relaxed)) return;
  for (StringNode*& head : g_pool.heads) head = nullptr;
  // A sequentially consistent read-modify-write: a full fence after the heads are cleared.
  g_pool.initialized.exchange(true, std::memory_order_seq_cst);
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
  if (!g_pool.initialized.load(std::memory_order_acquire)) Initialize();

  int32_t n = 0;
  const uint32_t bucket = Bucket(text, &n);

  ScopedLock guard(Lock());
  // Find the string, or the place where it goes: chains are ordered by length, longest first,
  // then by ascending strcmp order.
  StringNode** link = &g_pool.heads[bucket];
  for (StringNode* node = *link; node != nullptr; link = &node->next, node = *link) {
    if (node->length < n) break;
    if (node->length > n) continue;
    const int order = std::strcmp(node->text, text);
    if (order == 0) return node->text;
    if (order > 0) break;
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
  return pooled;
}

void StringPool::SetAllocatorForTesting(void* (*allocate)(size_t)) {
  g_allocate.store(allocate != nullptr ? allocate : &std::malloc);
}

int StringPool::ChainForTesting(uint32_t bucket, const char** texts, int max) {
  if (bucket >= static_cast<uint32_t>(kBuckets)) return 0;
  ScopedLock guard(Lock());
  int count = 0;
  for (StringNode* node = g_pool.heads[bucket]; node != nullptr && count < max; node = node->next) {
    texts[count++] = node->text;
  }
  return count;
}

int32_t StringPool::BytesLeftForTesting() {
  ScopedLock guard(Lock());
  return g_pool.bytes_left;
}
