#include "TestSupport.h"

#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <thread>

namespace zeltest {

namespace fs = std::filesystem;

TempDir::TempDir() {
  path_ = (fs::temp_directory_path() / "zelsysts-test-XXXXXX").string();  // honours TMPDIR
  if (mkdtemp(&path_[0]) == nullptr) throw std::runtime_error("mkdtemp failed");
}

TempDir::~TempDir() {
  std::error_code ec;
  fs::remove_all(path_, ec);
}

std::string TempDir::Write(const std::string& relative, const std::string& content) const {
  const fs::path full = fs::path(path_) / relative;
  fs::create_directories(full.parent_path());
  std::ofstream out(full, std::ios::binary | std::ios::trunc);
  out << content;
  if (!out) throw std::runtime_error("cannot write " + full.string());
  return full.string();
}

ScopedEnv::ScopedEnv(const char* name, const char* value) : name_(name) {
  const char* old = std::getenv(name);
  had_ = old != nullptr;
  if (had_) old_ = old;
  value != nullptr ? setenv(name, value, 1) : unsetenv(name);
}

ScopedEnv::~ScopedEnv() {
  had_ ? setenv(name_.c_str(), old_.c_str(), 1) : unsetenv(name_.c_str());
}

DictionaryPath::DictionaryPath()
    : env_path_("ZELDictionaryPath", path().c_str()),
      env_no_fallback_("ZELDictionaryNoPathNoFallback", nullptr) {}

// Captures file descriptor 2 in a temporary file while body runs.
std::string StderrOf(const std::function<void()>& body) {
  std::fflush(stderr);
  char name[] = "/tmp/zelsysts-stderr-XXXXXX";
  const int fd = mkstemp(name), saved = dup(2);
  if (fd < 0) throw std::runtime_error("mkstemp failed");
  dup2(fd, 2);
  close(fd);
  body();
  std::fflush(stderr);
  dup2(saved, 2);
  close(saved);
  std::ifstream in(name, std::ios::binary);
  unlink(name);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void RunTogether(int threads, const std::function<void(int)>& body) {
  std::atomic<int> starting{threads};
  std::vector<std::thread> pool;
  for (int i = 0; i < threads; ++i) {
    pool.emplace_back([&, i] {
      starting.fetch_sub(1);
      while (starting.load() > 0) std::this_thread::yield();  // until every thread has started
      body(i);
    });
  }
  for (std::thread& thread : pool) thread.join();
}

static std::string DirOf(const char* variable) {
  const char* dir = std::getenv(variable);
  return dir != nullptr ? dir : ".";
}
std::string SourceDir() {
  return DirOf("ZELSYSTS_TEST_SOURCE_DIR");
}
std::string BinaryDir() {
  return DirOf("ZELSYSTS_TEST_BINARY_DIR");
}

}  // namespace zeltest
