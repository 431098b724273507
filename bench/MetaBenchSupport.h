// Shared pieces of the meta object benchmarks: the one-thread warm-up that every measurement
// needs, and a console reporter that also prints, at the end, the ratio of chosen benchmarks to
// their reference.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace metabench {

// The C library takes cheaper paths in a process that has never been multi-threaded; the object
// model always runs in one that is (or may become) multi-threaded.
inline void BecomeMultiThreaded() {
  std::thread([] {}).join();
}

// Prints "<name>: <ratio> x <reference>" for each (name, reference) pair whose two results ran.
// Times are real time per iteration as reported, divided by `per_iteration` items.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  RatioReporter(std::vector<std::pair<std::string, std::string>> pairs, double perIteration)
      : pairs_(std::move(pairs)), per_iteration_(perIteration) {}

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
      const double ns = run.GetAdjustedRealTime() *
                        (1e9 / benchmark::GetTimeUnitMultiplier(run.time_unit)) / per_iteration_;
      ns_[run.benchmark_name()] = ns;
    }
    ConsoleReporter::ReportRuns(runs);
  }

  void Finalize() override {
    ConsoleReporter::Finalize();
    std::printf("\n%-58s %12s %12s %8s\n", "per item", "ns", "ref ns", "ratio");
    for (const auto& [name, reference] : pairs_) {
      const auto a = ns_.find(name);
      const auto b = ns_.find(reference);
      if (a == ns_.end() || b == ns_.end() || b->second <= 0) continue;
      std::printf("%-58s %12.1f %12.1f %8.2f  (vs %s)\n", name.c_str(), a->second, b->second,
                  a->second / b->second, reference.c_str());
    }
  }

 private:
  std::vector<std::pair<std::string, std::string>> pairs_;
  double per_iteration_;
  std::map<std::string, double> ns_;
};

// Runs the registered benchmarks with the reporter; the warm-up thread runs first.
inline int Main(int argc, char** argv, RatioReporter& reporter) {
  BecomeMultiThreaded();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}

}  // namespace metabench
