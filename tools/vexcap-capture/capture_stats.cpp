#include "capture_stats.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "frame_pixels.h"

namespace vexcap::tool {

Percentiles percentiles_of(std::vector<double> values) {
  if (values.empty()) return {};
  std::sort(values.begin(), values.end());
  const auto rank = [&](double p) {
    const auto index = static_cast<std::size_t>(std::ceil(p * static_cast<double>(values.size())));
    return values[std::clamp<std::size_t>(index, 1, values.size()) - 1];
  };
  return {rank(0.50), rank(0.90), rank(0.99), values.back()};
}

void CaptureStats::add(const vexcap_frame& frame) {
  if (frames_ == 0) first_timestamp_ = frame.timestamp;
  else intervals_us_.push_back(static_cast<double>(frame.timestamp - last_timestamp_));
  last_timestamp_ = frame.timestamp;
  ++frames_;
  bytes_ += frame_buffer_bytes(frame);
}

double CaptureStats::frames_per_second() const {
  const auto span_us = static_cast<double>(last_timestamp_ - first_timestamp_);
  return frames_ < 2 || span_us <= 0 ? 0.0 : static_cast<double>(frames_ - 1) * 1e6 / span_us;
}

std::uint64_t CaptureStats::missing_frames() const {
  const double typical = percentiles_of(intervals_us_).p50;
  if (typical <= 0) return 0;
  std::uint64_t missing = 0;
  for (double interval : intervals_us_) {
    const double periods = std::round(interval / typical);
    if (periods >= 2) missing += static_cast<std::uint64_t>(periods) - 1;
  }
  return missing;
}

Percentiles CaptureStats::interval_ms() const {
  Percentiles us = percentiles_of(intervals_us_);
  return {us.p50 / 1000, us.p90 / 1000, us.p99 / 1000, us.max / 1000};
}

std::string summary_text(const CaptureStats& stats, std::uint64_t dropped_by_tool,
                         const std::vector<double>& callback_us) {
  const double span_s = stats.frames_per_second() > 0
                            ? static_cast<double>(stats.frames() - 1) / stats.frames_per_second()
                            : 0.0;
  const Percentiles interval = stats.interval_ms();
  const Percentiles callback = percentiles_of(callback_us);
  char line[512];
  std::snprintf(line, sizeof line,
                "summary: %llu frames in %.2f s, %.2f fps, %llu dropped, %.1f MB\n"
                "  interval between frames (ms)  p50 %.2f  p90 %.2f  p99 %.2f  max %.2f\n"
                "  callback latency (us)         p50 %.1f  p90 %.1f  p99 %.1f  max %.1f",
                static_cast<unsigned long long>(stats.frames()), span_s, stats.frames_per_second(),
                static_cast<unsigned long long>(stats.missing_frames() + dropped_by_tool),
                static_cast<double>(stats.bytes()) / 1e6, interval.p50, interval.p90, interval.p99,
                interval.max, callback.p50, callback.p90, callback.p99, callback.max);
  return line;
}

}  // namespace vexcap::tool
