// Lookups in the dictionary store: hits by names and by GUIDs in a store of 10,000 records, the
// path that interface resolution and creation by name take.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "dictionary/DicoStore.h"

namespace {

constexpr int kRecords = 10000;

int g_creator;

// Sixteen pseudo-random bytes, so that the GUIDs spread over the buckets as real ones do.
_GUID RandomGuid(uint32_t& seed) {
  _GUID guid;
  unsigned char* bytes = reinterpret_cast<unsigned char*>(&guid);
  for (size_t i = 0; i < sizeof(guid); ++i) {
    seed = seed * 1664525u + 1013904223u;
    bytes[i] = static_cast<unsigned char>(seed >> 24);
  }
  return guid;
}

struct Keys {
  std::vector<std::string> classes;
  std::vector<std::string> interfaces;
  std::vector<_GUID> classIds;
  std::vector<_GUID> interfaceIds;
};

const Keys& FilledStore() {
  static const Keys* keys = [] {
    Keys* k = new Keys;
    uint32_t seed = 12345;
    std::vector<_GUID> classIds, interfaceIds;
    for (int c = 0; c < kRecords / 10; ++c) classIds.push_back(RandomGuid(seed));
    for (int n = 0; n < 10; ++n) interfaceIds.push_back(RandomGuid(seed));
    for (int i = 0; i < kRecords; ++i) {
      k->classes.push_back("BenchClass" + std::to_string(i / 10));
      k->interfaces.push_back("IBenchInterface" + std::to_string(i % 10));
      k->classIds.push_back(classIds[i / 10]);
      k->interfaceIds.push_back(interfaceIds[i % 10]);
      DicoEntry* rec = DicoStore::InsertByNames(k->classes[i].c_str(), k->interfaces[i].c_str(),
                                                "libBenchImpl", nullptr, nullptr, nullptr, nullptr);
      DicoStore::InsertByGuids(&k->classIds[i], &k->interfaceIds[i], &g_creator, rec);
    }
    return k;
  }();
  return *keys;
}

void BM_FindByNamesHit(benchmark::State& state) {
  const Keys& keys = FilledStore();
  int i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        DicoStore::FindByNames(keys.classes[i].c_str(), keys.interfaces[i].c_str()));
    i = (i + 7919) % kRecords;
  }
}
BENCHMARK(BM_FindByNamesHit);

void BM_FindByGuidsHit(benchmark::State& state) {
  const Keys& keys = FilledStore();
  int i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(DicoStore::FindByGuids(&keys.classIds[i], &keys.interfaceIds[i]));
    i = (i + 7919) % kRecords;
  }
}
BENCHMARK(BM_FindByGuidsHit);

}  // namespace

BENCHMARK_MAIN();
