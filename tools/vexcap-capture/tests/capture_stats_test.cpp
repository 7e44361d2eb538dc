// The summary's numbers from frame timestamps: rate, missing frames, percentiles.
#include <gtest/gtest.h>

#include "capture_stats.h"

namespace vexcap::tool {
namespace {

vexcap_frame frame_at(std::int64_t timestamp_us) {
  vexcap_frame frame{};
  frame.width = 4;
  frame.height = 2;
  frame.stride = 8;
  frame.pixel_format = VEXCAP_PIXEL_FORMAT_NV12;
  frame.timestamp = timestamp_us;
  return frame;
}

TEST(CaptureStatsTest, RateBytesAndMissingFramesComeFromTheTimestamps) {
  CaptureStats stats;
  // 50 ms apart, with one frame missing between the third and the fourth and two after it.
  for (std::int64_t t : {1000000, 1050000, 1100000, 1200000, 1250000, 1400000}) stats.add(frame_at(t));
  EXPECT_EQ(stats.frames(), 6u);
  EXPECT_EQ(stats.bytes(), 6u * (8 * 2 + 8));  // Y plane and half again for chroma
  EXPECT_DOUBLE_EQ(stats.frames_per_second(), 5 / 0.4);
  EXPECT_EQ(stats.missing_frames(), 3u);
  EXPECT_DOUBLE_EQ(stats.interval_ms().p50, 50.0);
  EXPECT_DOUBLE_EQ(stats.interval_ms().max, 150.0);
}

TEST(CaptureStatsTest, PercentilesTakeTheNearestRank) {
  std::vector<double> values;
  for (int i = 100; i >= 1; --i) values.push_back(i);
  const Percentiles p = percentiles_of(values);
  EXPECT_EQ(p.p50, 50);
  EXPECT_EQ(p.p90, 90);
  EXPECT_EQ(p.p99, 99);
  EXPECT_EQ(p.max, 100);
  EXPECT_EQ(percentiles_of({7}).p50, 7);
  EXPECT_EQ(percentiles_of({}).max, 0);
}

TEST(CaptureStatsTest, OneFrameHasNoRate) {
  CaptureStats stats;
  stats.add(frame_at(5));
  EXPECT_EQ(stats.frames_per_second(), 0);
  EXPECT_EQ(stats.missing_frames(), 0u);
  EXPECT_NE(summary_text(stats, 2, {3.0}).find("summary: 1 frames in 0.00 s, 0.00 fps, 2 dropped"), std::string::npos);
}

}  // namespace
}  // namespace vexcap::tool
