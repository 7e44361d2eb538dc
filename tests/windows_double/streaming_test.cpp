// Frames through the product adapter on the double: pixels, sizes and metadata as the virtual
// camera makes them, the expected bytes computed here from the pattern's description.
#include "double_test.h"

namespace vexcap::double_tests {
namespace {

using Streaming = DoubleTest;

std::uint8_t luma(unsigned x, unsigned y, unsigned n) { return std::uint8_t(x + 2 * y + 3 * n); }

// Frame n of a stream, pixel by pixel: Gray8 L, or NV12 with its chroma pairs.
void expect_pattern(const vexcap_frame& frame, unsigned n) {
  ASSERT_EQ(frame.width, 640u);
  ASSERT_EQ(frame.height, 480u);
  ASSERT_EQ(frame.stride, 640);
  for (unsigned y = 0; y < frame.height; ++y)
    for (unsigned x = 0; x < frame.width; ++x)
      ASSERT_EQ(frame.data[y * 640 + x], luma(x, y, n)) << "frame " << n << " at " << x << "," << y;
  if (frame.pixel_format != VEXCAP_PIXEL_FORMAT_NV12) return;
  const std::uint8_t* chroma = frame.data + 640 * 480;
  for (unsigned j = 0; j < 240; ++j)
    for (unsigned i = 0; i < 320; ++i) {
      ASSERT_EQ(chroma[j * 640 + 2 * i], std::uint8_t(64 + i + j + n));
      ASSERT_EQ(chroma[j * 640 + 2 * i + 1], std::uint8_t(192 + i + 2 * j + n));
    }
}

TEST_F(Streaming, InfraredFramesCarryThePatternTheTimeAndAlternatingIllumination) {
  vexcap_device* device = start_and_open(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(device, nullptr);
  Frames frames;
  const std::int64_t start = vc::now();
  ASSERT_EQ(vexcap_start_streaming(device, Frames::keep, &frames), VEXCAP_OK);
  for (int i = 0; i < 4; ++i) next_frame();
  ASSERT_EQ(vexcap_stop_streaming(device), VEXCAP_OK);
  ASSERT_EQ(vexcap_device_close(device), VEXCAP_OK);

  const auto taken = frames.taken();
  ASSERT_EQ(taken.size(), 4u);
  for (unsigned n = 0; n < 4; ++n) {
    const vexcap_frame& frame = *taken[n];
    EXPECT_EQ(frame.pixel_format, VEXCAP_PIXEL_FORMAT_GRAY8);
    expect_pattern(frame, n);
    EXPECT_EQ(frame.illumination, n % 2 == 0 ? 1 : 0) << "frame " << n;
    // Frame k (from 1) is due k / 30 s after the start; 100 ns units, reported in µs.
    EXPECT_EQ(frame.timestamp, (start + std::int64_t(n + 1) * 10'000'000 / 30) / 10);
    EXPECT_EQ(frame.led_power, 255);  // nothing set: not reported
  }
}

// The colour device (stream mode 0) holds an exclusive and a shared client; the selector of
// the _ex calls streams either.
TEST_F(Streaming, ColourFramesAreNv12OnTheSharedAndTheExclusiveClient) {
  vexcap_device* device = start_and_open(VEXCAP_STREAM_MODE_SHARED);
  ASSERT_NE(device, nullptr);
  for (std::uint32_t selector : {0u, VEXCAP_STREAM_SELECT_EXCLUSIVE}) {
    SCOPED_TRACE(selector);
    Frames frames;
    ASSERT_EQ(vexcap_start_streaming_ex(device, Frames::keep, &frames, selector), VEXCAP_OK);
    for (int i = 0; i < 2; ++i) next_frame();
    ASSERT_EQ(vexcap_stop_streaming_ex(device, selector), VEXCAP_OK);
    const auto taken = frames.taken();
    ASSERT_EQ(taken.size(), 2u);
    for (unsigned n = 0; n < 2; ++n) {
      EXPECT_EQ(taken[n]->pixel_format, VEXCAP_PIXEL_FORMAT_NV12);
      expect_pattern(*taken[n], n);
    }
  }
  ASSERT_EQ(vexcap_device_close(device), VEXCAP_OK);
}

// RGB24 frames are converted by the library itself through a buffer and a bitmap made per
// frame: the platform's factories are fetched once for the runtime, not once per frame.
TEST_F(Streaming, Rgb24FramesConvertWithoutFetchingFactoriesPerFrame) {
  vc::Scenario scenario = vc::default_scenario();
  scenario.clock = vc::ClockMode::Manual;
  vc::SourceModel& colour = scenario.groups.at(0).sources.at(1);
  colour.current_format = colour.formats.size() - 1;  // RGB24 640x480
  colour.rgb24.fill = std::array<std::uint8_t, 3>{255, 255, 255};
  vc::use_scenario(scenario);
  ASSERT_EQ(scenario.groups[0].sources[1].formats.back().subtype, L"RGB24");

  vexcap_device* device = start_and_open(VEXCAP_STREAM_MODE_SHARED);
  ASSERT_NE(device, nullptr);
  Frames frames;
  ASSERT_EQ(vexcap_start_streaming(device, Frames::keep, &frames), VEXCAP_OK);
  for (int i = 0; i < 6; ++i) next_frame();
  ASSERT_EQ(vexcap_stop_streaming(device), VEXCAP_OK);
  ASSERT_EQ(vexcap_device_close(device), VEXCAP_OK);

  const auto taken = frames.taken();
  ASSERT_EQ(taken.size(), 6u);
  for (vexcap_frame* frame : taken) {
    ASSERT_EQ(frame->pixel_format, VEXCAP_PIXEL_FORMAT_NV12);
    EXPECT_EQ(frame->data[0], 235);             // white: Y 235
    EXPECT_EQ(frame->data[640 * 480], 128);     // U
    EXPECT_EQ(frame->data[640 * 480 + 1], 128); // V
  }
  EXPECT_EQ(wd::factory_requests("Windows.Storage.Streams.Buffer"), 1);
  EXPECT_EQ(wd::factory_requests("Windows.Graphics.Imaging.SoftwareBitmap"), 1);
}

TEST_F(Streaming, ACallbackAnsweringFalseEndsDeliveryAndItsRecordStaysValid) {
  vexcap_device* device = start_and_open(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(device, nullptr);
  struct First {
    std::mutex mutex;
    std::vector<vexcap_frame*> frames;
  } first;
  auto refuse = [](vexcap_frame* frame, void* context) {
    auto* self = static_cast<First*>(context);
    std::lock_guard lock(self->mutex);
    self->frames.push_back(frame);
    return false;
  };
  ASSERT_EQ(vexcap_start_streaming(device, refuse, &first), VEXCAP_OK);
  for (int i = 0; i < 3; ++i) next_frame();
  ASSERT_EQ(vexcap_device_close(device), VEXCAP_OK);
  ASSERT_EQ(first.frames.size(), 1u);
  expect_pattern(*first.frames[0], 0);
  EXPECT_EQ(vexcap_return_frame(first.frames[0]), VEXCAP_OK);
}

}  // namespace
}  // namespace vexcap::double_tests
