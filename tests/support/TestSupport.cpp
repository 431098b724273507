#include "TestSupport.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace zeltest {

namespace fs = std::filesystem;

TempDir::TempDir() {
  const char* base = std::getenv("TMPDIR");
  std::string templ = std::string(base != nullptr && base[0] != '\0' ? base : "/tmp") +
                      "/zelsysts-test-XXXXXX";
  std::vector<char> buffer(templ.begin(), templ.end());
  buffer.push_back('\0');
  if (mkdtemp(buffer.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
  path_ = buffer.data();
}

TempDir::~TempDir() {
  std::error_code ec;
  // Restore permissions that a test may have removed, so that everything can be deleted.
  for (auto it = fs::recursive_directory_iterator(path_, ec); !ec && it != fs::end(it);
       it.increment(ec)) {
    if (it->is_directory(ec) || it->is_regular_file(ec)) {
      fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, ec);
    }
  }
  fs::remove_all(path_, ec);
}

std::string TempDir::Write(const std::string& relative, const std::string& content) const {
  const fs::path full = fs::path(path_) / relative;
  fs::create_directories(full.parent_path());
  std::ofstream out(full, std::ios::binary | std::ios::trunc);
  out.write(content.data(), static_cast<std::streamsize>(content.size()));
  if (!out) throw std::runtime_error("cannot write " + full.string());
  return full.string();
}

std::string TempDir::MakeDir(const std::string& relative) const {
  const fs::path full = fs::path(path_) / relative;
  fs::create_directories(full);
  return full.string();
}

StderrCapture::StderrCapture() {
  std::fflush(stderr);
  char name[] = "/tmp/zelsysts-stderr-XXXXXX";
  const int fd = mkstemp(name);
  if (fd < 0) throw std::runtime_error("mkstemp failed");
  file_ = name;
  saved_fd_ = dup(2);
  dup2(fd, 2);
  close(fd);
}

std::string StderrCapture::Take() {
  if (!done_) {
    std::fflush(stderr);
    dup2(saved_fd_, 2);
    close(saved_fd_);
    saved_fd_ = -1;
    std::ifstream in(file_, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    text_ = ss.str();
    unlink(file_.c_str());
    done_ = true;
  }
  return text_;
}

StderrCapture::~StderrCapture() { Take(); }

ScopedEnv::ScopedEnv(const char* name, const char* value) : name_(name) {
  const char* old = std::getenv(name);
  if (old != nullptr) {
    had_ = true;
    old_ = old;
  }
  if (value != nullptr) {
    setenv(name, value, 1);
  } else {
    unsetenv(name);
  }
}

ScopedEnv::~ScopedEnv() {
  if (had_) {
    setenv(name_.c_str(), old_.c_str(), 1);
  } else {
    unsetenv(name_.c_str());
  }
}

std::string SourceDir() {
  const char* d = std::getenv("ZELSYSTS_TEST_SOURCE_DIR");
  return d != nullptr ? d : ".";
}

std::string BinaryDir() {
  const char* d = std::getenv("ZELSYSTS_TEST_BINARY_DIR");
  return d != nullptr ? d : ".";
}

}  // namespace zeltest
