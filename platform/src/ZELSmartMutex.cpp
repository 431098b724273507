#include <atomic>
#include <cstdlib>

#include "ZELSysTSMutex.h"

namespace {

// Recursive mutexes held inside libZELSysTS for the ZELSmartMutex(0) whose own mutex cannot be
// allocated: construction never leaves an object or a table that asked for a mutex without one.
// Initialised statically (no call that can fail), never destroyed. Each is handed out once; past
// the last, they are handed out again in turn (two holders then share one recursive mutex).
constexpr unsigned kReserve = 64;
pthread_mutex_t g_reserve[kReserve] = {
#define ZELSYSTS_R PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP
#define ZELSYSTS_R8 \
  ZELSYSTS_R, ZELSYSTS_R, ZELSYSTS_R, ZELSYSTS_R, ZELSYSTS_R, ZELSYSTS_R, ZELSYSTS_R, ZELSYSTS_R
    ZELSYSTS_R8, ZELSYSTS_R8, ZELSYSTS_R8, ZELSYSTS_R8,
    ZELSYSTS_R8, ZELSYSTS_R8, ZELSYSTS_R8, ZELSYSTS_R8,
#undef ZELSYSTS_R8
#undef ZELSYSTS_R
};
std::atomic<unsigned> g_reserve_used{0};

bool FromReserve(const pthread_mutex_t* m) {
  return m >= g_reserve && m < g_reserve + kReserve;
}

}  // namespace

ZELSmartMutex::ZELSmartMutex(int noMutex) {
  if (noMutex != 0) return;
  auto* m = static_cast<pthread_mutex_t*>(std::malloc(sizeof(pthread_mutex_t)));
  if (m != nullptr) {
    pthread_mutexattr_t attr;
    pthread_mutexattr_init(&attr);
    pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_RECURSIVE);
    if (pthread_mutex_init(m, &attr) != 0) {
      std::free(m);
      m = nullptr;
    }
    pthread_mutexattr_destroy(&attr);
  }
  if (m == nullptr) m = &g_reserve[g_reserve_used.fetch_add(1) % kReserve];
  handle_ = m;
}

ZELSmartMutex::~ZELSmartMutex() {
  if (handle_ == nullptr || FromReserve(handle_)) return;
  pthread_mutex_destroy(handle_);
  std::free(handle_);
  handle_ = nullptr;
}
