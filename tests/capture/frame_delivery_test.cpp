// Frames delivered by a capture client on a virtual camera with a manual clock: record
// layout, pixel bytes against the camera's documented pattern, rotation, illumination,
// timestamps and the frame-rate limit.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "capture/capture_client.h"
#include "capture/frame_rate.h"
#include "frames/rotation.h"
#include "frames/simd/pixel_kernels.h"
#include "platform/virtual/virtual_camera.h"
#include "support/library_fixture.h"
#include "support/log_capture.h"

namespace vexcap::capture {
namespace {

namespace vc = virtual_camera;
using namespace std::chrono_literals;

using testing::default_group_id;

// Keeps every record it is given and returns them through the export at the end.
struct Collector {
  std::mutex lock;
  std::vector<vexcap_frame*> frames;
  bool keep_going = true;
  ~Collector() {
    for (vexcap_frame* frame : frames) EXPECT_EQ(vexcap_return_frame(frame), 0);
  }
  static bool receive(vexcap_frame* frame, void* context) {
    auto* self = static_cast<Collector*>(context);
    std::lock_guard<std::mutex> guard(self->lock);
    self->frames.push_back(frame);
    return self->keep_going;
  }
};

class FrameDelivery : public ::testing::Test {
 protected:
  void SetUp() override { vc::reset(); }
  void TearDown() override {
    if (client_) client_->clear();
    client_.reset();
    vc::reset();
  }
  // Streams the infrared source (index 0) after `edit` shaped it.
  void stream_infrared(const std::function<void(vc::SourceModel&)>& edit) { stream(0, 1, edit); }
  // Streams the colour source (index 1): an RGB24 format in its list gets a reader that hands
  // out the camera's own layouts.
  void stream_colour(const wchar_t* subtype) {
    stream(1, 0, [subtype](vc::SourceModel& s) { s.formats = {format(subtype, 30), format(L"RGB24", 30)}; });
  }
  void stream(std::size_t index, std::uint32_t mode, const std::function<void(vc::SourceModel&)>& edit) {
    vc::Scenario scenario = vc::default_scenario();
    scenario.clock = vc::ClockMode::Manual;
    edit(scenario.groups.at(0).sources.at(index));
    vc::use_scenario(scenario);
    client_ = capture::CaptureClient::create(platform::current(), mode);
    log.resume();
    ASSERT_EQ(client_->initialize(default_group_id(), mode, 640, 480), HR_OK);
    // Start well after the process-wide last accepted frame of earlier tests, so that the
    // first frame here is measured against a long gap.
    const std::int64_t behind = last_accepted_frame_time() * 10 - vc::now();  // 100 ns units
    vc::advance_time(1000s + std::chrono::nanoseconds(std::max<std::int64_t>(behind, 0) * 100));
    start_time = vc::now();
    ASSERT_EQ(client_->start_streaming(&Collector::receive, &collector), HR_OK);
  }
  static vc::FormatModel format(const wchar_t* subtype, std::uint32_t fps,
                                std::optional<std::int32_t> rotation = std::nullopt) {
    vc::FormatModel f;
    f.subtype = subtype;
    f.frame_rate_numerator = fps;
    f.rotation = rotation;
    return f;
  }

  Collector collector;
  testing::LogCapture log;
  std::shared_ptr<capture::CaptureClient> client_;
  std::int64_t start_time = 0;
};

// Documented luma of frame n at (x, y).
std::uint8_t luma(std::uint32_t x, std::uint32_t y, std::uint32_t n) {
  return static_cast<std::uint8_t>(x + 2 * y + 3 * n);
}

TEST_F(FrameDelivery, QuarterTurnDeliversPortraitBytes) {
  stream_infrared([](vc::SourceModel& s) { s.formats = {format(L"L8", 20, 90)}; });
  vc::advance_time(50ms);
  ASSERT_EQ(collector.frames.size(), 1u);
  const vexcap_frame& f = *collector.frames[0];
  EXPECT_EQ(f.width, 480u);
  EXPECT_EQ(f.height, 640u);
  EXPECT_EQ(f.stride, 480);
  // Destination row r, column c shows source column r of row 479 - c.
  for (std::uint32_t r = 0; r < 640; ++r)
    for (std::uint32_t c = 0; c < 480; ++c) ASSERT_EQ(f.data[r * 480 + c], luma(r, 479 - c, 0));
}

// The camera's padded NV12 frame n as the platform lays it out (stride 656, padding 0).
std::vector<std::uint8_t> padded_nv12_pattern(std::uint32_t n) {
  constexpr std::uint32_t kStride = 656;
  std::vector<std::uint8_t> frame(kStride * 480 * 3 / 2, 0);
  for (std::uint32_t y = 0; y < 480; ++y)
    for (std::uint32_t x = 0; x < 640; ++x) frame[y * kStride + x] = luma(x, y, n);
  for (std::uint32_t j = 0; j < 240; ++j)
    for (std::uint32_t i = 0; i < 320; ++i) {
      frame[(480 + j) * kStride + 2 * i] = static_cast<std::uint8_t>(64 + i + j + n);
      frame[(480 + j) * kStride + 2 * i + 1] = static_cast<std::uint8_t>(192 + i + 2 * j + n);
    }
  return frame;
}

// One stream per angle; each instruction-set level, forced in turn, turns the next frame.
// Expected bytes: the documented padded pattern (stride 656, padding 0, chroma U = 64 + i + j,
// V = 192 + i + 2j for block (i, j)) turned by the scalar reference; unturned, the whole
// buffer arrives with its stride.
class FrameDeliveryAtEveryLevel : public FrameDelivery {
 protected:
  void expect_turned_frames(std::int32_t angle) {
    stream_infrared([angle](vc::SourceModel& s) {
      s.formats = {format(L"NV12", 20, angle)};
      s.stride_padding = 16;
    });
    const frames::FrameLayout layout{frames::kNv12, 640, 480, 656};
    std::uint32_t n = 0;
    for (frames::SimdLevel level : {frames::SimdLevel::Scalar, frames::SimdLevel::Sse2,
                                    frames::SimdLevel::Avx2, frames::SimdLevel::Avx512}) {
      frames::ScopedSimdCap cap(level);
      vc::advance_time(50ms);
      ASSERT_EQ(collector.frames.size(), n + 1);
      const vexcap_frame& f = *collector.frames[n];
      std::vector<std::uint8_t> expected = padded_nv12_pattern(n++);
      EXPECT_EQ(f.pixel_format, VEXCAP_PIXEL_FORMAT_NV12);
      if (angle == 0) {
        EXPECT_EQ(f.stride, 656);
      } else if (angle == 180) {
        std::vector<std::uint8_t> turned(expected.size());
        ASSERT_TRUE(frames::rotate_half_turn_copy(layout, expected.data(), expected.size(), turned.data(),
                                                  frames::pixel_kernels_at(frames::SimdLevel::Scalar)));
        expected = std::move(turned);
        EXPECT_EQ(f.stride, 656);
      } else {
        std::vector<std::uint8_t> turned(640 * 480 * 3 / 2);
        ASSERT_TRUE(frames::rotate_quarter_turn(
            layout, expected.data(), angle == 90 ? frames::Rotation::By90 : frames::Rotation::By270,
            turned.data()));
        expected = std::move(turned);
        EXPECT_EQ(f.width, 480u);
        EXPECT_EQ(f.stride, 480);
      }
      ASSERT_EQ(std::vector<std::uint8_t>(f.data, f.data + expected.size()), expected)
          << frames::simd_level_name(level);
    }
  }
};

TEST_F(FrameDeliveryAtEveryLevel, UnturnedKeepsTheWholeBufferAndItsStride) { expect_turned_frames(0); }
TEST_F(FrameDeliveryAtEveryLevel, QuarterTurnClockwise) { expect_turned_frames(90); }
TEST_F(FrameDeliveryAtEveryLevel, HalfTurnKeepsTheWholeBuffer) { expect_turned_frames(180); }
TEST_F(FrameDeliveryAtEveryLevel, QuarterTurnCounterclockwise) { expect_turned_frames(270); }

TEST_F(FrameDelivery, IlluminationAlternatesAndTimestampsAreFrameTimeInMicroseconds) {
  stream_infrared([](vc::SourceModel& s) {
    s.formats = {format(L"L8", 20)};
    s.illumination = vc::IlluminationMetadata::Alternating;
  });
  for (int i = 0; i < 4; ++i) vc::advance_time(50ms);
  ASSERT_EQ(collector.frames.size(), 4u);
  for (std::size_t k = 0; k < 4; ++k) {
    EXPECT_EQ(collector.frames[k]->illumination, k % 2 == 0 ? 1 : 0);
    EXPECT_EQ(collector.frames[k]->timestamp, (start_time + static_cast<std::int64_t>(k + 1) * 500000) / 10);
  }
}

TEST_F(FrameDelivery, MissingMetadataReadsAsLitAnUnreachableSampleAsDark) {
  stream_infrared([](vc::SourceModel& s) {
    s.formats = {format(L"L8", 20)};
    s.illumination = vc::IlluminationMetadata::MetadataMissing;
  });
  vc::advance_time(50ms);
  ASSERT_EQ(collector.frames.size(), 1u);
  EXPECT_EQ(collector.frames[0]->illumination, 1);
  bool logged = false;
  for (const std::string& line : log.lines())
    logged = logged || line.rfind("W: Failed getting frame illumination (HRESULT 0x", 0) == 0;
  EXPECT_TRUE(logged);
  vc::edit_source(default_group_id(), 0,
                  [](vc::SourceModel& s) { s.illumination = vc::IlluminationMetadata::SampleUnreachable; });
  vc::advance_time(50ms);
  ASSERT_EQ(collector.frames.size(), 2u);
  EXPECT_EQ(collector.frames[1]->illumination, 0);
}

TEST_F(FrameDelivery, UndecodableFramesRaiseTheUnsupportedFormatEvent) {
  stream_infrared([](vc::SourceModel& s) { s.formats = {format(L"L8", 20)}; });
  int raised = 0;
  client_->register_unsupported_format(
      [](std::uint32_t status, void* context) {
        EXPECT_EQ(status, 1u);
        ++*static_cast<int*>(context);
      },
      &raised);
  vc::set_unsupported_frames(true);
  vc::advance_time(50ms);
  EXPECT_EQ(raised, 1);
  EXPECT_TRUE(collector.frames.empty());
}

// With the limit at 15 (16.5 with its tolerance), each frame is measured against the last
// accepted one: at 20 fps every second frame passes 100 ms after the last, and 16 fps passes
// only because of the tolerance.
struct LimitCase {
  std::uint32_t fps;
  int frames;
  std::size_t accepted;
  std::int64_t gap;  // between accepted timestamps, microseconds
};

class LimitedDelivery : public FrameDelivery, public ::testing::WithParamInterface<LimitCase> {};

TEST_P(LimitedDelivery, DropsFramesMeasuredAgainstTheLastAcceptedOne) {
  const LimitCase c = GetParam();
  stream_infrared([&](vc::SourceModel& s) { s.formats = {format(L"L8", c.fps)}; });
  client_->set_frame_rate_limit(15);
  for (int i = 0; i < c.frames; ++i) vc::advance_time(std::chrono::microseconds(1000000 / c.fps));
  ASSERT_EQ(collector.frames.size(), c.accepted);
  for (std::size_t k = 1; k < c.accepted; ++k)
    EXPECT_EQ(collector.frames[k]->timestamp - collector.frames[k - 1]->timestamp, c.gap);
}

INSTANTIATE_TEST_SUITE_P(Rows, LimitedDelivery,
                         ::testing::Values(LimitCase{20, 5, 3, 100000}, LimitCase{16, 4, 4, 62500}));

// Each subtype arrives in the format the host is promised, with the documented pattern in its
// first plane: byte b of row y is `expected(b, y)`. A rotation text that is no quarter turn
// leaves the frame as it is; the camera converts YUY2 and BGRA8 to NV12 for the library.
struct SubtypeCase {
  const char* name;
  bool colour;
  const wchar_t* subtype;
  std::optional<std::int32_t> rotation;
  std::uint32_t pixel_format;
  std::int32_t stride;
  std::uint8_t (*expected)(std::uint32_t b, std::uint32_t y);
};

class DeliveredSubtype : public FrameDelivery, public ::testing::WithParamInterface<SubtypeCase> {};

TEST_P(DeliveredSubtype, CarriesThePatternInItsFormat) {
  const SubtypeCase c = GetParam();
  if (c.colour)
    stream_colour(c.subtype);
  else
    stream_infrared([&](vc::SourceModel& s) { s.formats = {format(c.subtype, 30, c.rotation)}; });
  vc::advance_time(34ms);
  ASSERT_EQ(collector.frames.size(), 1u);
  const vexcap_frame& f = *collector.frames[0];
  EXPECT_EQ(f.pixel_format, c.pixel_format);
  EXPECT_EQ(f.width, 640u);
  EXPECT_EQ(f.height, 480u);
  ASSERT_EQ(f.stride, c.stride);
  for (std::uint32_t y = 0; y < 480; ++y)
    for (std::uint32_t b = 0; b < static_cast<std::uint32_t>(c.stride); ++b)
      ASSERT_EQ(f.data[y * c.stride + b], c.expected(b, y)) << "row " << y << " byte " << b;
}

std::uint8_t gray8(std::uint32_t b, std::uint32_t y) { return luma(b, y, 0); }
// L * 257, little-endian: both bytes equal L.
std::uint8_t gray16(std::uint32_t b, std::uint32_t y) { return luma(b / 2, y, 0); }
// Frame 0 in BGRA: R = x, G = y, B = x + y; the camera's integer BT.601 luma.
std::uint8_t bgra_luma(std::uint32_t x, std::uint32_t y) {
  const int r = x % 256, g = y % 256, b = (x + y) % 256;
  return static_cast<std::uint8_t>(((66 * r + 129 * g + 25 * b + 128) >> 8) + 16);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, DeliveredSubtype,
    ::testing::Values(
        SubtypeCase{"Gray8TurnedBy45", false, L"L8", 45, VEXCAP_PIXEL_FORMAT_GRAY8, 640, gray8},
        SubtypeCase{"Gray16Unconverted", false, L"L16", std::nullopt, VEXCAP_PIXEL_FORMAT_GRAY16, 1280,
                    gray16},
        SubtypeCase{"Yuy2AsNv12", true, L"YUY2", std::nullopt, VEXCAP_PIXEL_FORMAT_NV12, 640, gray8},
        SubtypeCase{"Bgra8AsNv12", true, L"ARGB32", std::nullopt, VEXCAP_PIXEL_FORMAT_NV12, 640, bgra_luma}),
    [](const ::testing::TestParamInfo<SubtypeCase>& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace vexcap::capture
