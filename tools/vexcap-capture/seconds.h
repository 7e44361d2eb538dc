// Option values in seconds as steady-clock durations.
#pragma once

#include <chrono>

namespace vexcap::tool {

inline std::chrono::steady_clock::duration seconds(double value) {
  return std::chrono::duration_cast<std::chrono::steady_clock::duration>(std::chrono::duration<double>(value));
}

}  // namespace vexcap::tool
