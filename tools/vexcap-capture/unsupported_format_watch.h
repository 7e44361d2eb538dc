// Listens for the library's unsupported-format event while a capture runs, so that a camera
// whose frames the library cannot decode is named as such instead of "no frame arrived".
#pragma once

#include <atomic>
#include <cstdint>

#include "vexcap/vexcap.h"

namespace vexcap::tool {

class UnsupportedFormatWatch {
 public:
  explicit UnsupportedFormatWatch(vexcap_device* device);  // a library without the event: never reports
  ~UnsupportedFormatWatch();
  UnsupportedFormatWatch(const UnsupportedFormatWatch&) = delete;
  UnsupportedFormatWatch& operator=(const UnsupportedFormatWatch&) = delete;

  bool reported() const { return reported_.load(); }

 private:
  static void on_unsupported_format(std::uint32_t status, void* context);

  vexcap_device* device_;
  bool registered_ = false;
  std::atomic<bool> reported_{false};
};

}  // namespace vexcap::tool
