// NoDestructor<T>: a T built in place and never destroyed. Process-wide tables and their locks
// live in such storage, built at first use, so that a client library calling in during its
// static initialisation or at exit never meets a table that is not there (or no longer there).
#pragma once

#include <new>
#include <utility>

template <typename T>
class NoDestructor {
 public:
  template <typename... Args>
  explicit NoDestructor(Args&&... args) {
    new (&value_) T(std::forward<Args>(args)...);
  }
  // Deliberately leaves value_ alive: it must outlive every other static of the process.
  ~NoDestructor() {}
  NoDestructor(const NoDestructor&) = delete;
  NoDestructor& operator=(const NoDestructor&) = delete;

  T* get() { return &value_; }
  T& operator*() { return value_; }
  T* operator->() { return &value_; }

 private:
  union {
    T value_;
  };
};
