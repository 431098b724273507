// Cost of the one reading of the dictionary files, against its floor.
//
// A dictionary of 200 files (160 ".dicts", 20 ".iidts", 20 ".clsidts") with N lines in all is
// generated in a temporary folder for each N. Since a process loads its dictionary once, every
// iteration forks a child that does the work and exits; the parent times fork to waitpid (manual
// time). The floor does the same walk with scandir, fopen and fgets only; ForkOnly is the cost
// of the child itself. Load / floor is the price of splitting, checking and entering the lines.
//
// Every class and interface name is new (N/10 of each), so the sizes 10k, 100k and 1M make a
// growth table: time per line should stay flat. The load's child also measures its resident
// memory before and after the load (the pages the load touched, from /proc/self/statm) and
// reports it per line. A table of the three sizes (load / floor, ns and bytes per line, growth
// against the smallest size) is printed at the end.
#include <benchmark/benchmark.h>
#include <dirent.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "dictionaryfiles/DicoLoader.h"
#include "dictionaryfiles/DictionaryFile.h"

namespace {

constexpr int kDictsFiles = 160;
constexpr int kIidtsFiles = 20;
constexpr int kClsidtsFiles = 20;

const char* const kModules[] = {"Geom",     "Mesh",      "Sketch",   "Part",   "Assembly",
                                "Drafting", "Kinematic", "Analysis", "Render", "Product"};
const char* const kNouns[] = {"Curve",  "Surface", "Body",   "Feature", "Constraint",
                              "Sketch", "Joint",   "Sensor", "Layer",   "Material"};

uint64_t SplitMix(uint64_t x) {
  x += 0x9E3779B97F4A7C15ull;
  x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ull;
  x = (x ^ (x >> 27)) * 0x94D049BB133111EBull;
  return x ^ (x >> 31);
}

std::string GuidText(uint64_t seed) {
  const uint64_t a = SplitMix(seed * 2);
  const uint64_t b = SplitMix(seed * 2 + 1);
  char text[39];
  std::snprintf(text, sizeof text, "{%08" PRIX32 "-%04X-%04X-%04X-%012" PRIX64 "}",
                static_cast<uint32_t>(a >> 32), static_cast<unsigned>((a >> 16) & 0xFFFF),
                static_cast<unsigned>(a & 0xFFFF), static_cast<unsigned>(b >> 48),
                static_cast<uint64_t>(b & 0xFFFFFFFFFFFFull));
  return text;
}

std::string ClassName(int64_t i) {
  return std::string("ZEL") + kModules[i % 10] + kNouns[(i / 10) % 10] + std::to_string(i);
}
std::string InterfaceName(int64_t i) {
  return std::string("IZEL") + kModules[(i / 3) % 10] + kNouns[i % 10] + std::to_string(i);
}
std::string LibraryName(int64_t cls) {
  // Half the lines name the library with its "lib" prefix, as real dictionaries do.
  return std::string(cls % 2 == 0 ? "lib" : "") + "ZEL" + kModules[cls % 10] + "Impl" +
         std::to_string(cls % 25);
}

void WriteFile(const std::string& path, const std::string& content) {
  FILE* f = std::fopen(path.c_str(), "w");
  if (f == nullptr || std::fwrite(content.data(), 1, content.size(), f) != content.size()) {
    std::perror(path.c_str());
    std::exit(2);
  }
  std::fclose(f);
}

// Writes `lines` lines of one kind over `files` files named prefix<k><ending>.
template <typename LineMaker>
void WriteKind(const std::string& dir, const char* prefix, const char* ending, int files,
               int64_t lines, LineMaker makeLine) {
  int64_t next = 0;
  for (int f = 0; f < files; ++f) {
    const int64_t end = lines * (f + 1) / files;
    std::string content = "# generated dictionary\n// " + std::to_string(end - next) + " lines\n";
    for (; next < end; ++next) content += makeLine(next);
    char name[64];
    std::snprintf(name, sizeof name, "/%s%03d%s", prefix, f, ending);
    WriteFile(dir + name, content);
  }
}

std::string Generate(int64_t n) {
  char templ[] = "/tmp/zelsysts-bench-XXXXXX";
  if (mkdtemp(templ) == nullptr) {
    std::perror("mkdtemp");
    std::exit(2);
  }
  const std::string dir = templ;
  const int64_t itfs = n / 10;     // one ".iidts" line per interface
  const int64_t classes = n / 10;  // one ".clsidts" line per class
  const int64_t dictsLines = n - itfs - classes;
  // Each class offers 8 distinct interfaces, so every (class, interface) pair is new.
  WriteKind(dir, "Module", ".dicts", kDictsFiles, dictsLines, [&](int64_t k) {
    const int64_t cls = (k / 8) % classes;
    const int64_t itf = (cls * 31 + (k % 8) * 977) % itfs;
    std::string line = ClassName(cls) + " " + InterfaceName(itf) + "\t" + LibraryName(cls);
    if (k % 20 == 3) line += " ITFLEAF " + InterfaceName((itf + 1) % itfs);
    if (k % 20 == 11) line += " EXTENDED_BY " + ClassName((cls + 1) % classes) + "Ext";
    return line + "\n";
  });
  WriteKind(dir, "Interfaces", ".iidts", kIidtsFiles, itfs, [&](int64_t i) {
    return GuidText(static_cast<uint64_t>(i)) + " " + InterfaceName(i) + "\n";
  });
  WriteKind(dir, "Classes", ".clsidts", kClsidtsFiles, classes, [&](int64_t c) {
    std::string line = GuidText(static_cast<uint64_t>(c) + (1ull << 40)) + " " + ClassName(c);
    if (c % 4 != 0) line += " " + LibraryName(c);
    return line + "\n";
  });
  return dir;
}

// One generated folder per N, removed at exit.
struct Dictionaries {
  std::map<int64_t, std::string> dirs;
  ~Dictionaries() {
    for (const auto& entry : dirs) {
      std::error_code ec;
      std::filesystem::remove_all(entry.second, ec);
    }
  }
  const std::string& For(int64_t n) {
    auto it = dirs.find(n);
    if (it == dirs.end()) it = dirs.emplace(n, Generate(n)).first;
    return it->second;
  }
};

Dictionaries& GeneratedDictionaries() {
  static Dictionaries dictionaries;
  return dictionaries;
}

// The floor: the same directory walk and line reads, nothing done with the lines.
int ReadFloor(const char* dir) {
  struct dirent** list = nullptr;
  const int n = scandir(dir, &list, IsDictionaryFile, alphasort);
  long lines = 0;
  char buffer[2048];
  for (int i = 0; i < n; ++i) {
    const std::string path = std::string(dir) + "/" + list[i]->d_name;
    if (FILE* f = std::fopen(path.c_str(), "r")) {
      while (std::fgets(buffer, sizeof buffer, f) != nullptr) ++lines;
      std::fclose(f);
    }
    std::free(list[i]);
  }
  std::free(list);
  return lines > 0 ? 0 : 1;
}

double ResidentBytes() {
  long pages = 0, resident = 0;
  if (FILE* f = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(f, "%ld %ld", &pages, &resident) != 2) resident = 0;
    std::fclose(f);
  }
  return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE));
}

// Loads, and writes to `report` the resident bytes that the load added.
int RunLoad(int report) {
  const double before = ResidentBytes();
  DicoLoader::Load();
  const double added = ResidentBytes() - before;
  if (write(report, &added, sizeof added) != static_cast<ssize_t>(sizeof added)) return 1;
  return DicoLoader::IsLoaded() ? 0 : 1;
}

// Times one child that runs work(fd) and exits with its result; what the child writes to fd (one
// double, or nothing) is averaged into the counter `reported` / lines, when given.
template <typename Work>
void TimeChildren(benchmark::State& state, Work work, const char* reported = nullptr) {
  double sum = 0;
  for (auto _ : state) {
    int fds[2];
    if (pipe(fds) != 0) {
      state.SkipWithError("pipe failed");
      break;
    }
    const auto start = std::chrono::steady_clock::now();
    const pid_t pid = fork();
    if (pid == 0) _exit(work(fds[1]));
    int status = 0;
    const bool ok =
        pid > 0 && waitpid(pid, &status, 0) == pid && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    const auto stop = std::chrono::steady_clock::now();
    close(fds[1]);
    double value = 0;
    if (read(fds[0], &value, sizeof value) == static_cast<ssize_t>(sizeof value)) sum += value;
    close(fds[0]);
    if (!ok) {
      state.SkipWithError("child failed");
      break;
    }
    state.SetIterationTime(std::chrono::duration<double>(stop - start).count());
  }
  const auto lines = static_cast<double>(state.range(0));
  if (lines <= 0) return;
  state.SetItemsProcessed(state.iterations() * state.range(0));
  state.counters["ns_per_line"] =
      benchmark::Counter(lines * static_cast<double>(state.iterations()) / 1e9,
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
  if (reported != nullptr && state.iterations() > 0) {
    state.counters[reported] = sum / static_cast<double>(state.iterations()) / lines;
  }
}

void BM_ForkOnly(benchmark::State& state) {
  TimeChildren(state, [](int) { return 0; });
}

void BM_Floor(benchmark::State& state) {
  const std::string& dir = GeneratedDictionaries().For(state.range(0));
  TimeChildren(state, [&](int) { return ReadFloor(dir.c_str()); });
}

void BM_DicoLoaderLoad(benchmark::State& state) {
  const std::string& dir = GeneratedDictionaries().For(state.range(0));
  setenv("ZELDictionaryPath", dir.c_str(), 1);
  unsetenv("ZELDictionaryNoPathNoFallback");
  TimeChildren(state, RunLoad, "bytes_per_line");
}

void RegisterAll() {
  const struct {
    int64_t lines;
    int iterations;
  } sizes[] = {{10000, 30}, {100000, 10}, {1000000, 3}};
  benchmark::RegisterBenchmark("ForkOnly", BM_ForkOnly)
      ->Arg(0)
      ->UseManualTime()
      ->Iterations(30)
      ->Unit(benchmark::kMillisecond);
  for (const auto& size : sizes) {
    benchmark::RegisterBenchmark("Floor", BM_Floor)
        ->Arg(size.lines)
        ->UseManualTime()
        ->Iterations(size.iterations)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("DicoLoaderLoad", BM_DicoLoaderLoad)
        ->Arg(size.lines)
        ->UseManualTime()
        ->Iterations(size.iterations)
        ->Unit(benchmark::kMillisecond);
  }
}

// The console output, then the table: per size, load and floor (ms), their ratio, ns and bytes
// per line, and the growth of ns per line against the smallest size.
class TableReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
      const std::string name = run.benchmark_name();
      const size_t slash = name.find('/');
      if (slash == std::string::npos) continue;
      const long long lines = std::atoll(name.c_str() + slash + 1);
      const double ms =
          run.GetAdjustedRealTime() / benchmark::GetTimeUnitMultiplier(run.time_unit) * 1e3;
      Row& row = rows_[lines];
      if (name.compare(0, slash, "Floor") == 0) row.floor_ms = ms;
      if (name.compare(0, slash, "DicoLoaderLoad") == 0) {
        row.load_ms = ms;
        const auto bytes = run.counters.find("bytes_per_line");
        if (bytes != run.counters.end()) row.bytes_per_line = bytes->second.value;
      }
    }
    ConsoleReporter::ReportRuns(runs);
  }

  void Finalize() override {
    ConsoleReporter::Finalize();
    std::printf("\n%10s %10s %10s %8s %9s %8s %8s\n", "lines", "load ms", "floor ms", "ratio",
                "ns/line", "B/line", "growth");
    double first = 0;
    for (const auto& [lines, row] : rows_) {
      if (lines <= 0 || row.load_ms <= 0) continue;
      const double ns = row.load_ms * 1e6 / static_cast<double>(lines);
      if (first == 0) first = ns;
      std::printf("%10lld %10.1f %10.1f %8.2f %9.0f %8.1f %8.2f\n", lines, row.load_ms,
                  row.floor_ms, row.floor_ms > 0 ? row.load_ms / row.floor_ms : 0.0, ns,
                  row.bytes_per_line, ns / first);
    }
  }

 private:
  struct Row {
    double load_ms = 0, floor_ms = 0, bytes_per_line = 0;
  };
  std::map<long long, Row> rows_;
};

}  // namespace

int main(int argc, char** argv) {
  RegisterAll();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  TableReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}
