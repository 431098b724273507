// Cost of AddRef + Release on an ordinary object, with and without a mutex of its own, against
// the floor that the design sets: two uncontended recursive mutex lock/unlock pairs (each of
// AddRef and Release changes the count under the object's lock). The object has a meta object,
// so each call also works out the extension view (three virtual calls on meta objects).
#include <pthread.h>

#include "MetaBenchSupport.h"
#include "ZELSysTSBaseUnknown.h"
#include "ZELSysTSFindOrCreateMetaObject.h"

namespace {

class CountedObject : public ZELSysTSBaseUnknown {
 public:
  explicit CountedObject(unsigned char threadSafe) : ZELSysTSBaseUnknown(threadSafe) {}
  ZELSysTSMetaClass* GetMetaObject() const override { return Meta(); }
  static ZELSysTSMetaClass* Meta() {
    static ZELSysTSMetaClass* const meta = ZELSysTSFindOrCreateMetaObject(
        "RefCountBenchObject", ZELSysTSTypeImplementation, nullptr, MetaObject(), nullptr);
    return meta;
  }
};

void AddRefRelease(benchmark::State& state, unsigned char threadSafe) {
  auto* object = new CountedObject(threadSafe);
  for (auto _ : state) {
    object->AddRef();
    benchmark::DoNotOptimize(object->Release());
  }
  object->Release();
}

void BM_AddRefRelease_ObjectMutex(benchmark::State& state) {
  AddRefRelease(state, 1);
}
void BM_AddRefRelease_NoObjectMutex(benchmark::State& state) {
  AddRefRelease(state, 0);
}

void BM_Floor_TwoRecursiveLockPairs(benchmark::State& state) {
  pthread_mutexattr_t attr;
  pthread_mutexattr_init(&attr);
  pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_t mutex;
  pthread_mutex_init(&mutex, &attr);
  unsigned count = 1;
  for (auto _ : state) {
    pthread_mutex_lock(&mutex);
    ++count;
    pthread_mutex_unlock(&mutex);
    pthread_mutex_lock(&mutex);
    --count;
    pthread_mutex_unlock(&mutex);
    benchmark::DoNotOptimize(count);
  }
  pthread_mutex_destroy(&mutex);
  pthread_mutexattr_destroy(&attr);
}

BENCHMARK(BM_AddRefRelease_ObjectMutex);
BENCHMARK(BM_AddRefRelease_NoObjectMutex);
BENCHMARK(BM_Floor_TwoRecursiveLockPairs);

}  // namespace

int main(int argc, char** argv) {
  metabench::RatioReporter reporter(
      {{"BM_AddRefRelease_ObjectMutex", "BM_Floor_TwoRecursiveLockPairs"},
       {"BM_AddRefRelease_NoObjectMutex", "BM_Floor_TwoRecursiveLockPairs"}},
      1.0);
  return metabench::Main(argc, argv, reporter);
}
