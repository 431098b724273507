// ZELSysTSPtr<I>: an owning pointer to an interface I (any type with ZELSysTSInterfaceTraits).
//
// Ownership: a non-empty ZELSysTSPtr holds exactly one reference, given back by its destructor,
// by Release()/reset(), or by assigning something else to it. Copying adds a reference, moving
// transfers it. Building or assigning a ZELSysTSPtr<I> from a pointer to another interface J asks
// the object for I with QueryInterface: the result holds the reference that QueryInterface gave,
// and is empty (holding nothing) when the object does not offer I. From a raw I* the reference is
// either taken over (Attach: no AddRef) or added (Retain: AddRef), always said explicitly.
//
// Dereferencing an empty pointer is a programming error: it asserts in debug builds.
//
// Thread safety: like a raw pointer. One ZELSysTSPtr is not shared between threads that change
// it; distinct ZELSysTSPtr to one object may be used from several threads when the object is
// thread-safe.
#pragma once

#include <cassert>
#include <cstddef>
#include <type_traits>
#include <utility>

#include "ZELSysTSInterfaceTraits.h"
#include "ZELSysTSTypes.h"

template <class I>
class ZELSysTSPtr {
  static_assert(std::is_base_of_v<IUnknown, I>,
                "ZELSysTSPtr holds interfaces derived from IUnknown");
  static_assert(ZELSysTSHasInterfaceTraits<I>::value,
                "ZELSysTSPtr<I> needs the identity of I: ZELSYSTS_DECLARE_INTERFACE(I, \"{...}\")");

 public:
  using element_type = I;

  constexpr ZELSysTSPtr() noexcept = default;
  constexpr ZELSysTSPtr(std::nullptr_t) noexcept {}  // NOLINT: an empty pointer reads as null

  // Takes over the reference that `raw` carries (no AddRef). Null gives an empty pointer.
  static ZELSysTSPtr Attach(I* raw) noexcept {
    ZELSysTSPtr result;
    result.ptr_ = raw;
    return result;
  }
  // Adds a reference of its own to `raw` (AddRef). Null gives an empty pointer.
  static ZELSysTSPtr Retain(I* raw) noexcept {
    if (raw != nullptr) raw->AddRef();
    return Attach(raw);
  }
  // Asks the object behind `any` (any of its interfaces) for I; empty when it is null or the
  // object does not offer I.
  static ZELSysTSPtr Query(IUnknown* any) { return Attach(QueryFrom(any)); }

  ZELSysTSPtr(const ZELSysTSPtr& other) noexcept : ptr_(other.ptr_) {
    if (ptr_ != nullptr) ptr_->AddRef();
  }
  ZELSysTSPtr(ZELSysTSPtr&& other) noexcept : ptr_(other.ptr_) { other.ptr_ = nullptr; }

  // QueryInterface for I on the object that `other` points to; `other` keeps its reference.
  template <class J, std::enable_if_t<!std::is_same_v<I, J>, int> = 0>
  ZELSysTSPtr(const ZELSysTSPtr<J>& other)  // NOLINT: conversion by QueryInterface is the point
      : ptr_(QueryFrom(AsUnknown(other.Get()))) {}

  ~ZELSysTSPtr() { Release(); }

  // Copy-and-swap: self-assignment adds and gives back one reference, the count ends unchanged.
  ZELSysTSPtr& operator=(const ZELSysTSPtr& other) noexcept {
    ZELSysTSPtr(other).Swap(*this);
    return *this;
  }
  ZELSysTSPtr& operator=(ZELSysTSPtr&& other) noexcept {
    ZELSysTSPtr(std::move(other)).Swap(*this);
    return *this;
  }
  template <class J, std::enable_if_t<!std::is_same_v<I, J>, int> = 0>
  ZELSysTSPtr& operator=(const ZELSysTSPtr<J>& other) {
    ZELSysTSPtr(other).Swap(*this);
    return *this;
  }
  ZELSysTSPtr& operator=(std::nullptr_t) noexcept {
    Release();
    return *this;
  }

  // Gives back the reference (if any) and leaves the pointer empty. The member is cleared before
  // the object's Release runs, so a destructor that reaches this pointer finds it empty.
  void Release() noexcept {
    I* old = ptr_;
    ptr_ = nullptr;
    if (old != nullptr) old->Release();
  }
  void reset() noexcept { Release(); }

  // Hands the reference to the caller and leaves the pointer empty.
  [[nodiscard]] I* Detach() noexcept {
    I* old = ptr_;
    ptr_ = nullptr;
    return old;
  }

  I* Get() const noexcept { return ptr_; }
  I* operator->() const noexcept {
    assert(ptr_ != nullptr && "ZELSysTSPtr: use of an empty interface pointer");
    return ptr_;
  }
  I& operator*() const noexcept {
    assert(ptr_ != nullptr && "ZELSysTSPtr: use of an empty interface pointer");
    return *ptr_;
  }
  explicit operator bool() const noexcept { return ptr_ != nullptr; }

  void Swap(ZELSysTSPtr& other) noexcept { std::swap(ptr_, other.ptr_); }

  // For an out-parameter `void** ppv` that receives one reference, as in
  //   ZELSysTSCreateInstance(clsid, ZELSysTSIIDOf<I>(), ptr.Receive());
  // Empties the pointer now; what the callee wrote is attached at the end of the full expression.
  class OutParameter {
   public:
    explicit OutParameter(ZELSysTSPtr& owner) noexcept : owner_(owner) {}
    ~OutParameter() { owner_.ptr_ = static_cast<I*>(raw_); }
    operator void**() noexcept { return &raw_; }  // NOLINT: meant to convert
    OutParameter(const OutParameter&) = delete;
    OutParameter& operator=(const OutParameter&) = delete;

   private:
    ZELSysTSPtr& owner_;
    void* raw_ = nullptr;
  };
  [[nodiscard]] OutParameter Receive() noexcept {
    Release();
    return OutParameter(*this);
  }

 private:
  template <class J>
  static IUnknown* AsUnknown(J* p) noexcept {
    return p;
  }
  static I* QueryFrom(IUnknown* any) {
    if (any == nullptr) return nullptr;
    void* out = nullptr;
    if (any->QueryInterface(ZELSysTSIIDOf<I>(), &out) < 0) return nullptr;
    return static_cast<I*>(out);
  }

  I* ptr_ = nullptr;
};

// Pointer equality of one interface type. (Whether two pointers reach the same object is asked
// of their ZELSysTSPtr<ZELSysTSBaseUnknown>, which QueryInterface answers with the object.)
template <class I>
bool operator==(const ZELSysTSPtr<I>& a, const ZELSysTSPtr<I>& b) noexcept {
  return a.Get() == b.Get();
}
template <class I>
bool operator!=(const ZELSysTSPtr<I>& a, const ZELSysTSPtr<I>& b) noexcept {
  return !(a == b);
}
template <class I>
bool operator==(const ZELSysTSPtr<I>& a, std::nullptr_t) noexcept {
  return !a;
}
template <class I>
bool operator!=(const ZELSysTSPtr<I>& a, std::nullptr_t) noexcept {
  return static_cast<bool>(a);
}
