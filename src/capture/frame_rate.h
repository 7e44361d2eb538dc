// Frame-rate measurement against the last accepted frame, and the host's frame-rate limit.
#pragma once

#include <cstdint>
#include <mutex>

#include "common/mutex.h"

namespace vexcap::capture {

// Frames per second since the last accepted frame; 0.0 for the first frame of the process,
// which also becomes the last accepted one. Timestamps are in microseconds.
double measure_frame_rate(std::int64_t timestamp);

// The process-wide time of the last accepted frame (microseconds, 0 = none yet). Shared by
// every client and stream on purpose.
std::int64_t last_accepted_frame_time();

// Frames per second of a frame-rate code (the colour and infrared format codes share the
// rates: 2 and 11 are 30, ..., 8 and 17 are 1); 0 for every other code.
std::uint32_t frames_per_second_for_code(std::uint32_t code);

// A limit in frames per second, 0 = none. Shared between the frame threads and the setter.
class FrameRateLimit {
 public:
  void set(std::uint32_t frames_per_second);
  std::uint32_t get() const;
  // True when a frame at `rate` is within the limit (10% tolerance); it then becomes the last
  // accepted frame and its rate is logged. A frame over the limit moves nothing.
  bool admit(double rate, std::int64_t timestamp);

 private:
  mutable Mutex lock_;
  std::uint32_t limit_ VEXCAP_GUARDED_BY(lock_) = 0;
};

}  // namespace vexcap::capture
