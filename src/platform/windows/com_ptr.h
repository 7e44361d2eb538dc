// ComPtr: owns one reference to a COM (or Windows Runtime ABI) interface.
//
// Interfaces declared by this adapter carry their IID as a static `iid` member; the classic
// COM interfaces of the system headers are found through __uuidof. Off Windows (the adapter's
// own unit tests) only the former exist.
#pragma once

#include "platform/windows/winrt/abi_base.h"

#include <cstddef>
#include <utility>

namespace vexcap::windows {

template <class T>
const GUID& iid_of() {
  if constexpr (requires { T::iid; }) {
    return T::iid;
  } else {
#if defined(_WIN32)
    return __uuidof(T);
#else
    static_assert(requires { T::iid; }, "interfaces off Windows carry their IID");
#endif
  }
}

template <class T>
class ComPtr {
 public:
  ComPtr() noexcept = default;
  ComPtr(std::nullptr_t) noexcept {}
  ComPtr(const ComPtr& other) noexcept : raw_(other.raw_) { add_ref(); }
  ComPtr(ComPtr&& other) noexcept : raw_(std::exchange(other.raw_, nullptr)) {}
  ~ComPtr() { release(); }

  ComPtr& operator=(const ComPtr& other) noexcept {
    ComPtr(other).swap(*this);
    return *this;
  }
  ComPtr& operator=(ComPtr&& other) noexcept {
    ComPtr(std::move(other)).swap(*this);
    return *this;
  }
  ComPtr& operator=(std::nullptr_t) noexcept {
    reset();
    return *this;
  }

  // Takes over a reference the caller owns.
  static ComPtr attach(T* raw) noexcept {
    ComPtr result;
    result.raw_ = raw;
    return result;
  }
  // Adds a reference of its own to a borrowed pointer.
  static ComPtr copy_from(T* raw) noexcept {
    ComPtr result;
    result.raw_ = raw;
    result.add_ref();
    return result;
  }

  T* get() const noexcept { return raw_; }
  T* operator->() const noexcept { return raw_; }
  explicit operator bool() const noexcept { return raw_ != nullptr; }

  // For out parameters: drops the current reference first.
  T** put() noexcept {
    reset();
    return &raw_;
  }
  void** put_void() noexcept { return reinterpret_cast<void**>(put()); }

  // Hands the reference to the caller.
  [[nodiscard]] T* detach() noexcept { return std::exchange(raw_, nullptr); }
  void reset() noexcept {
    release();
    raw_ = nullptr;
  }
  void swap(ComPtr& other) noexcept { std::swap(raw_, other.raw_); }

  // QueryInterface for U; the result says why when it is empty.
  template <class U>
  HRESULT query(ComPtr<U>& out) const noexcept {
    if (!raw_) {
      out.reset();
      return E_POINTER;
    }
    return raw_->QueryInterface(iid_of<U>(), out.put_void());
  }
  template <class U>
  ComPtr<U> try_as() const noexcept {
    ComPtr<U> out;
    query(out);
    return out;
  }

 private:
  void add_ref() const noexcept {
    if (raw_) raw_->AddRef();
  }
  void release() noexcept {
    if (raw_) std::exchange(raw_, nullptr)->Release();
  }

  T* raw_ = nullptr;
};

}  // namespace vexcap::windows
