// Cost of registering a new class: ZELSysTSFindOrCreateMetaObject for 10,000 new class names per
// iteration (find, build, record under both keys, all under the dictionary lock), against
// registering 10,000 new GObject types with g_type_register_static where GObject is available.
// Every iteration uses names never registered before, so each call builds a meta object; the
// tables keep growing across iterations, as they do in a process that loads many libraries.
#include <string>
#include <vector>

#include "MetaBenchSupport.h"
#include "ZELSysTSFindOrCreateMetaObject.h"

#if defined(ZELSYSTS_HAVE_GOBJECT)
#include <glib-object.h>
#endif

namespace {

constexpr int kClassesPerIteration = 10000;
constexpr int kIterations = 5;

// Names for one iteration, made while the clock is paused.
std::vector<std::string> FreshNames(const char* prefix) {
  static int batch = 0;
  ++batch;
  std::vector<std::string> names;
  names.reserve(kClassesPerIteration);
  for (int i = 0; i < kClassesPerIteration; ++i) {
    names.push_back(std::string(prefix) + std::to_string(batch) + "_" + std::to_string(i));
  }
  return names;
}

void BM_ZELSysTSFindOrCreateMetaObject(benchmark::State& state) {
  ZELSysTSMetaClass* base =
      ZELSysTSFindOrCreateMetaObject("BenchRoot", ZELSysTSTypeBase, nullptr, nullptr, nullptr);
  for (auto _ : state) {
    state.PauseTiming();
    const std::vector<std::string> names = FreshNames("BenchClass");
    state.ResumeTiming();
    for (const std::string& name : names) {
      benchmark::DoNotOptimize(ZELSysTSFindOrCreateMetaObject(
          name.c_str(), ZELSysTSTypeImplementation, nullptr, base, nullptr));
    }
  }
  state.counters["per_registration"] =
      benchmark::Counter(static_cast<double>(state.iterations()) * kClassesPerIteration,
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_ZELSysTSFindOrCreateMetaObject)
    ->Iterations(kIterations)
    ->Unit(benchmark::kMillisecond);

#if defined(ZELSYSTS_HAVE_GOBJECT)
void BM_GTypeRegisterStatic(benchmark::State& state) {
  const GTypeInfo info = {sizeof(GObjectClass), nullptr, nullptr, nullptr, nullptr, nullptr,
                          sizeof(GObject),      0,       nullptr, nullptr};
  for (auto _ : state) {
    state.PauseTiming();
    const std::vector<std::string> names = FreshNames("BenchGType");
    state.ResumeTiming();
    for (const std::string& name : names) {
      benchmark::DoNotOptimize(
          g_type_register_static(G_TYPE_OBJECT, name.c_str(), &info, static_cast<GTypeFlags>(0)));
    }
  }
  state.counters["per_registration"] =
      benchmark::Counter(static_cast<double>(state.iterations()) * kClassesPerIteration,
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_GTypeRegisterStatic)->Iterations(kIterations)->Unit(benchmark::kMillisecond);
#endif

}  // namespace

int main(int argc, char** argv) {
  metabench::RatioReporter reporter(
      {{"BM_ZELSysTSFindOrCreateMetaObject/iterations:5", "BM_GTypeRegisterStatic/iterations:5"}},
      kClassesPerIteration);
  return metabench::Main(argc, argv, reporter);
}
