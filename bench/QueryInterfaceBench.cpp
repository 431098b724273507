// Cost of a repeated QueryInterface answered from a meta object's interface table, successful
// (a recorded creator, called) and failing (the remembered absence), on objects with and without
// a mutex of their own, from one thread and from two threads on two objects of one class (each
// thread pinned to its own core; they share the meta object's mutex). The floor is what such a
// query cannot avoid: two uncontended recursive lock/unlock pairs (one for an object without a
// mutex) around a binary search of a table of the same size.
//
// Filling: one class's interface table taken from empty to 65,000 entries, a query per new IID
// (each one a miss, searched in the dictionary and remembered absent), the IIDs in scattered
// order so that most land inside the table.
//
// No library is loaded: the creators are recorded in the dictionary beforehand, by names with a
// library and by identifiers with the creator, so that resolution finds them at its first lookup.
#include <pthread.h>
#include <sched.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "MetaBenchSupport.h"
#include "ZELSysTSBaseUnknown.h"
#include "ZELSysTSFindOrCreateMetaObject.h"
#include "ZELSysTSGuid.h"
#include "dictionary/DicoStore.h"
#include "meta/ZELSysTSMetaClassImpl.h"

namespace {

constexpr int kOffered = 8;  // interfaces recorded for the class; one more is remembered absent
const _GUID kClassId = {0xBE1C0001, 0x0001, 0x4000, {0xA0, 0, 0, 0, 0, 0, 0, 1}};
const _GUID kMissing = {0xBE1CFFFF, 0x0001, 0x4000, {0xA0, 0, 0, 0, 0, 0, 0, 0xFF}};

_GUID OfferedIid(int i) {
  return _GUID{0xBE1C1000u + 0x1111u * static_cast<uint32_t>(i),
               0x0002,
               0x4000,
               {0xB0, 0, 0, 0, 0, 0, 0, static_cast<uint8_t>(i)}};
}

IUnknown* AnswerWithObject(ZELSysTSBaseUnknown* object, unsigned char) {
  return object;
}

class BenchObject : public ZELSysTSBaseUnknown {
 public:
  BenchObject(ZELSysTSMetaClass* meta, unsigned char threadSafe)
      : ZELSysTSBaseUnknown(threadSafe), meta_(meta) {}
  ZELSysTSMetaClass* GetMetaObject() const override { return meta_; }

 private:
  ZELSysTSMetaClass* meta_;
};

ZELSysTSMetaClass* g_meta = nullptr;

// Registers the class, records its creators and lets one query of each interface fill the table.
void PrepareClass() {
  static char dir[] = "/tmp/zelsysts-qibench-XXXXXX";
  if (mkdtemp(dir) == nullptr) std::abort();
  setenv("ZELDictionaryPath", dir, 1);
  g_meta = ZELSysTSFindOrCreateMetaObject("QiBenchClass", ZELSysTSTypeImplementation, &kClassId,
                                          nullptr, nullptr);
  for (int i = 0; i < kOffered; ++i) {
    const std::string itf = "IQiBench" + std::to_string(i);
    const _GUID iid = OfferedIid(i);
    DicoEntry* entry = DicoStore::InsertByNames("QiBenchClass", itf.c_str(), "QiBenchLib", nullptr,
                                                nullptr, nullptr, nullptr);
    if (entry == nullptr ||
        DicoStore::InsertByGuids(&kClassId, &iid, reinterpret_cast<void*>(&AnswerWithObject),
                                 entry) != entry) {
      std::abort();
    }
  }
  BenchObject probe(g_meta, 1);
  for (int i = 0; i < kOffered; ++i) {
    void* itf = nullptr;
    if (probe.QueryInterface(OfferedIid(i), &itf) != S_OK) std::abort();
    probe.Release();
  }
  void* none = nullptr;
  if (probe.QueryInterface(kMissing, &none) != E_NOINTERFACE) std::abort();
  rmdir(dir);
}

// Pins the calling benchmark thread to one core for the life of the scope.
class PinnedToCore {
 public:
  explicit PinnedToCore(int index) {
    pthread_getaffinity_np(pthread_self(), sizeof saved_, &saved_);
    const long cores = sysconf(_SC_NPROCESSORS_ONLN);
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(static_cast<int>(index % (cores > 0 ? cores : 1)), &set);
    pthread_setaffinity_np(pthread_self(), sizeof set, &set);
  }
  ~PinnedToCore() { pthread_setaffinity_np(pthread_self(), sizeof saved_, &saved_); }

 private:
  cpu_set_t saved_;
};

void QueryLoop(benchmark::State& state, unsigned char threadSafe, const _GUID& iid,
               HRESULT expected) {
  PinnedToCore pin(state.thread_index());
  auto* object = new BenchObject(g_meta, threadSafe);
  void* itf = nullptr;
  for (auto _ : state) {
    const HRESULT hr = object->QueryInterface(iid, &itf);
    benchmark::DoNotOptimize(itf);
    if (hr != expected) {
      state.SkipWithError("unexpected QueryInterface result");
      break;
    }
  }
  // Each successful query counted one reference on the object.
  if (expected == S_OK) {
    for (benchmark::IterationCount i = 0; i < state.iterations(); ++i) object->Release();
  }
  object->Release();
}

void BM_QI_Success_ObjectMutex(benchmark::State& state) {
  QueryLoop(state, 1, OfferedIid(kOffered / 2), S_OK);
}
void BM_QI_Success_NoObjectMutex(benchmark::State& state) {
  QueryLoop(state, 0, OfferedIid(kOffered / 2), S_OK);
}
void BM_QI_Failure_ObjectMutex(benchmark::State& state) {
  QueryLoop(state, 1, kMissing, E_NOINTERFACE);
}
void BM_QI_Failure_NoObjectMutex(benchmark::State& state) {
  QueryLoop(state, 0, kMissing, E_NOINTERFACE);
}

int CompareEntries(const void* a, const void* b) {
  return ZELSysTSCompareIid(*static_cast<const ItfTableEntry*>(a)->iid,
                            *static_cast<const ItfTableEntry*>(b)->iid);
}

// The floor: per thread, its own mutexes (uncontended) and its own sorted table of the size of
// the class's table, searched for the same identifier.
void FloorLoop(benchmark::State& state, int pairs) {
  PinnedToCore pin(state.thread_index());
  std::vector<_GUID> iids;
  for (int i = 0; i < kOffered; ++i) iids.push_back(OfferedIid(i));
  iids.push_back(kMissing);
  std::vector<ItfTableEntry> table;
  for (const _GUID& iid : iids) table.push_back({&iid, &AnswerWithObject});
  std::qsort(table.data(), table.size(), sizeof(ItfTableEntry), &CompareEntries);
  ZELSmartMutex outer(0);
  ZELSmartMutex inner(0);
  const _GUID wanted = OfferedIid(kOffered / 2);
  const ItfTableEntry key = {&wanted, nullptr};
  for (auto _ : state) {
    if (pairs == 2) outer.LockF();
    inner.LockF();
    const void* hit =
        std::bsearch(&key, table.data(), table.size(), sizeof(ItfTableEntry), &CompareEntries);
    inner.UnlockF();
    if (pairs == 2) outer.UnlockF();
    benchmark::DoNotOptimize(hit);
  }
}

void BM_Floor_TwoLockPairs(benchmark::State& state) {
  FloorLoop(state, 2);
}
void BM_Floor_OneLockPair(benchmark::State& state) {
  FloorLoop(state, 1);
}

constexpr int kFillEntries = 65000;

void BM_QI_FillInterfaceTable(benchmark::State& state) {
  static int classes = 0;
  std::vector<_GUID> iids;
  for (uint32_t i = 0; i < kFillEntries; ++i) {
    const uint32_t scattered = i * 2654435761u;  // a bijection on 32-bit words
    iids.push_back(_GUID{scattered, 0x0003, 0x4000, {0xC0, 0, 0, 0, 0, 0, 0, 3}});
  }
  for (auto _ : state) {
    state.PauseTiming();
    const std::string name = "QiFillClass" + std::to_string(++classes);
    ZELSysTSMetaClass* meta = ZELSysTSFindOrCreateMetaObject(
        name.c_str(), ZELSysTSTypeImplementation, nullptr, nullptr, nullptr);
    BenchObject object(meta, 1);
    state.ResumeTiming();
    for (const _GUID& iid : iids) {
      void* itf = nullptr;
      if (object.QueryInterface(iid, &itf) != E_NOINTERFACE) std::abort();
    }
  }
}
BENCHMARK(BM_QI_FillInterfaceTable)->Iterations(2)->Unit(benchmark::kMillisecond);

BENCHMARK(BM_QI_Success_ObjectMutex)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_QI_Failure_ObjectMutex)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_Floor_TwoLockPairs)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_QI_Success_NoObjectMutex)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_QI_Failure_NoObjectMutex)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_Floor_OneLockPair)->Threads(1)->Threads(2)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::pair<std::string, std::string>> pairs;
  for (const char* threads : {"1", "2"}) {
    const std::string suffix = std::string("/real_time/threads:") + threads;
    for (const char* name : {"BM_QI_Success_ObjectMutex", "BM_QI_Failure_ObjectMutex"}) {
      pairs.emplace_back(name + suffix, "BM_Floor_TwoLockPairs" + suffix);
    }
    for (const char* name : {"BM_QI_Success_NoObjectMutex", "BM_QI_Failure_NoObjectMutex"}) {
      pairs.emplace_back(name + suffix, "BM_Floor_OneLockPair" + suffix);
    }
  }
  metabench::BecomeMultiThreaded();
  PrepareClass();
  metabench::RatioReporter reporter(std::move(pairs), 1.0);
  return metabench::Main(argc, argv, reporter);
}
