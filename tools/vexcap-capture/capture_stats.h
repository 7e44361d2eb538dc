// What a capture measured: frames, bytes, rate and gaps from the frames' timestamps, and the
// percentiles the summary line reports.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "vexcap/vexcap.h"

namespace vexcap::tool {

struct Percentiles {
  double p50 = 0;
  double p90 = 0;
  double p99 = 0;
  double max = 0;
};

// Nearest-rank percentiles; all 0 for no values.
Percentiles percentiles_of(std::vector<double> values);

class CaptureStats {
 public:
  void add(const vexcap_frame& frame);

  std::uint64_t frames() const { return frames_; }
  std::uint64_t bytes() const { return bytes_; }
  // Frames per second over the timestamps' span; 0 before the second frame.
  double frames_per_second() const;
  // Frames missing between timestamps: a gap of k typical intervals misses k - 1 frames.
  std::uint64_t missing_frames() const;
  Percentiles interval_ms() const;

 private:
  std::uint64_t frames_ = 0;
  std::uint64_t bytes_ = 0;
  std::int64_t first_timestamp_ = 0;
  std::int64_t last_timestamp_ = 0;
  std::vector<double> intervals_us_;
};

// "summary: 30 frames in 0.97 s, 30.00 fps, 0 dropped, 13.8 MB", then the percentiles of the
// interval between frames and of the callback's latency on two more lines.
std::string summary_text(const CaptureStats& stats, std::uint64_t dropped_by_tool,
                         const std::vector<double>& callback_us);

}  // namespace vexcap::tool
