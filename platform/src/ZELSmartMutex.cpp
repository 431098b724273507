#include <cstdlib>

#include "ZELSysTSMutex.h"

ZELSmartMutex::ZELSmartMutex(int noMutex) {
  if (noMutex != 0) return;
  auto* m = static_cast<pthread_mutex_t*>(std::malloc(sizeof(pthread_mutex_t)));
  if (m == nullptr) return;
  pthread_mutexattr_t attr;
  pthread_mutexattr_init(&attr);
  pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_RECURSIVE);
  if (pthread_mutex_init(m, &attr) != 0) {
    std::free(m);
    m = nullptr;
  }
  pthread_mutexattr_destroy(&attr);
  handle_ = m;
}

ZELSmartMutex::~ZELSmartMutex() {
  if (handle_ == nullptr) return;
  pthread_mutex_destroy(handle_);
  std::free(handle_);
  handle_ = nullptr;
}
