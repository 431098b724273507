// Cost of the uncontended lock/unlock pair of a ZELSmartMutex(0), the pair that every
// QueryInterface of a thread-safe object pays, against a bare recursive pthread mutex.
//
// The process creates and joins one thread before measuring: the C library takes cheaper paths
// in a process that has never been multi-threaded, and the object model always runs in one that
// is (or may become) multi-threaded.
#include <benchmark/benchmark.h>
#include <pthread.h>

#include <thread>

#include "ZELSysTSMutex.h"

namespace {

void BM_ZELSmartMutexLockUnlock(benchmark::State& state) {
  ZELSmartMutex mutex(0);
  for (auto _ : state) {
    mutex.ZELMutex::LockF();
    mutex.ZELMutex::UnlockF();
  }
}
BENCHMARK(BM_ZELSmartMutexLockUnlock);

// The same pair through pointer-to-member values the compiler cannot see through.
void BM_ZELSmartMutexLockUnlockThroughPointerToMember(benchmark::State& state) {
  ZELSmartMutex mutex(0);
  int (ZELMutex::*lock)() = &ZELMutex::LockF;
  int (ZELMutex::*unlock)() = &ZELMutex::UnlockF;
  benchmark::DoNotOptimize(lock);
  benchmark::DoNotOptimize(unlock);
  for (auto _ : state) {
    (mutex.*lock)();
    (mutex.*unlock)();
  }
}
BENCHMARK(BM_ZELSmartMutexLockUnlockThroughPointerToMember);

void BM_PthreadRecursiveMutexLockUnlock(benchmark::State& state) {
  pthread_mutexattr_t attr;
  pthread_mutexattr_init(&attr);
  pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_t mutex;
  pthread_mutex_init(&mutex, &attr);
  pthread_mutexattr_destroy(&attr);
  for (auto _ : state) {
    pthread_mutex_lock(&mutex);
    pthread_mutex_unlock(&mutex);
  }
  pthread_mutex_destroy(&mutex);
}
BENCHMARK(BM_PthreadRecursiveMutexLockUnlock);

// A second level taken by the holder, as when an object's lock is taken again under itself.
void BM_ZELSmartMutexNestedLockUnlock(benchmark::State& state) {
  ZELSmartMutex mutex(0);
  mutex.LockF();
  for (auto _ : state) {
    mutex.LockF();
    mutex.UnlockF();
  }
  mutex.UnlockF();
}
BENCHMARK(BM_ZELSmartMutexNestedLockUnlock);

}  // namespace

int main(int argc, char** argv) {
  std::thread([] {}).join();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
