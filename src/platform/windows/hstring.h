// HSTRING ownership and conversion.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "platform/windows/winrt/abi_base.h"

namespace vexcap::windows {

// Owns one HSTRING: created from text, or received through put().
class HString {
 public:
  HString() = default;
  explicit HString(std::wstring_view text);  // throws PlatformError
  HString(const HString&) = delete;
  HString& operator=(const HString&) = delete;
  HString(HString&& other) noexcept : value_(std::exchange(other.value_, nullptr)) {}
  HString& operator=(HString&& other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  ~HString() { reset(); }

  HSTRING get() const { return value_; }
  HSTRING* put() {
    reset();
    return &value_;
  }
  std::wstring text() const;

 private:
  void reset();
  HSTRING value_ = nullptr;
};

// The characters of a borrowed HSTRING (null reads as empty).
std::wstring to_wstring(HSTRING value);

}  // namespace vexcap::windows
