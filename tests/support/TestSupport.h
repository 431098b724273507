// Helpers shared by the tests: temporary folders with files, a dictionary folder on the path,
// capture of standard error, environment variables set for one scope, and threads that start
// together.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace zeltest {

// A fresh directory under $TMPDIR (or /tmp), removed with its content at the end of the scope.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::string& path() const { return path_; }
  // Writes (or overwrites) a file below the directory, making its folders; returns its path.
  std::string Write(const std::string& relative, const std::string& content) const;

 private:
  std::string path_;
};

// Sets (value non-null) or removes (value null) an environment variable; the previous state is
// restored at the end of the scope.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, const char* value);
  ~ScopedEnv();
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  std::string name_;
  std::string old_;
  bool had_ = false;
};

// A TempDir that is the whole of ZELDictionaryPath for the scope (ZELDictionaryNoPathNoFallback
// removed). Files written before the first dictionary request are what the process reads.
class DictionaryPath : public TempDir {
 public:
  DictionaryPath();

 private:
  ScopedEnv env_path_;
  ScopedEnv env_no_fallback_;
};

// Everything that body writes to standard error.
std::string StderrOf(const std::function<void()>& body);

// Runs body(i) for i in [0, threads) on as many threads, released together once all have
// started (so that they race), and joins them all.
void RunTogether(int threads, const std::function<void(int)>& body);

// The source tree / build tree, as CTest passes them; "." when unset.
std::string SourceDir();
std::string BinaryDir();

}  // namespace zeltest
