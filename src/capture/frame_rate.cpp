#include "capture/frame_rate.h"

#include <atomic>

#include "log/log.h"

namespace vexcap::capture {
namespace {

// Read and written by the frame threads of every client without further coordination.
std::atomic<std::int64_t> g_last_accepted{0};

}  // namespace

double measure_frame_rate(std::int64_t timestamp) {
  const std::int64_t last = g_last_accepted.load(std::memory_order_relaxed);
  if (last == 0) {
    g_last_accepted.store(timestamp, std::memory_order_relaxed);
    return 0.0;
  }
  // An earlier timestamp wraps to a huge gap and so to a rate near zero.
  const auto gap = static_cast<std::uint64_t>(timestamp - last);
  return 1000000.0 / static_cast<double>(gap);
}

std::int64_t last_accepted_frame_time() { return g_last_accepted.load(std::memory_order_relaxed); }

std::uint32_t frames_per_second_for_code(std::uint32_t code) {
  static constexpr std::uint32_t kRates[] = {30, 25, 20, 15, 10, 5, 1};  // codes 2..8 and 11..17
  if (code >= 2 && code <= 8) return kRates[code - 2];
  if (code >= 11 && code <= 17) return kRates[code - 11];
  return 0;
}

void FrameRateLimit::set(std::uint32_t frames_per_second) {
  MutexLock guard(lock_);
  limit_ = frames_per_second;
}

std::uint32_t FrameRateLimit::get() const {
  MutexLock guard(lock_);
  return limit_;
}

bool FrameRateLimit::admit(double rate, std::int64_t timestamp) {
  MutexLock guard(lock_);
  // The threshold is computed in single precision first, as the limit has always been.
  if (limit_ != 0 && rate > static_cast<double>(static_cast<float>(limit_) * 1.1f)) return false;
  g_last_accepted.store(timestamp, std::memory_order_relaxed);
  VXLOG('D', "Framerate: %lf", rate);
  return true;
}

}  // namespace vexcap::capture
