// A frame travels through the exports: a record streamed from an opened device outlives it.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <vector>

#include "support/library_fixture.h"
#include "support/log_capture.h"

namespace vexcap {
namespace {

namespace vc = virtual_camera;
using namespace std::chrono_literals;

class ExportDelivery : public testing::LibraryTest {};

struct Kept {
  std::atomic<vexcap_frame*> first{nullptr};
  std::atomic<int> calls{0};
};

bool keep_first(vexcap_frame* frame, void* context) {
  auto* kept = static_cast<Kept*>(context);
  vexcap_frame* none = nullptr;
  if (!kept->first.compare_exchange_strong(none, frame)) vexcap_return_frame(frame);
  ++kept->calls;
  return true;
}

TEST_F(ExportDelivery, StreamedRecordIsTheHostsUntilReturned) {
  vexcap_device* device = open_default_camera(VEXCAP_STREAM_MODE_EXCLUSIVE, 640, 480);
  ASSERT_NE(device, nullptr);
  Kept kept;
  ASSERT_EQ(vexcap_start_streaming_ex(device, keep_first, &kept, VEXCAP_STREAM_SELECT_EXCLUSIVE), 0);
  vc::advance_time(34ms);
  vc::advance_time(34ms);
  ASSERT_EQ(vexcap_stop_streaming_ex(device, VEXCAP_STREAM_SELECT_EXCLUSIVE), 0);
  ASSERT_EQ(vexcap_device_close(device), 0);

  EXPECT_EQ(kept.calls.load(), 2);
  vexcap_frame* frame = kept.first.load();
  ASSERT_NE(frame, nullptr);
  EXPECT_EQ(frame->pixel_format, VEXCAP_PIXEL_FORMAT_GRAY8);
  EXPECT_EQ(frame->width, 640u);
  EXPECT_EQ(frame->stride, 640);
  EXPECT_EQ(frame->data[2 * 640 + 3], 3 + 2 * 2);  // L = x + 2y of the first frame
  EXPECT_EQ(frame->illumination, 1);               // even frames are lit
  EXPECT_EQ(vexcap_return_frame(frame), 0);
  EXPECT_EQ(vexcap_return_frame(nullptr), VEXCAP_E_INVALID_ARG);
}

bool refuse_more(vexcap_frame* frame, void* context) {
  ++static_cast<Kept*>(context)->calls;
  vexcap_return_frame(frame);
  return false;
}

// A start while streaming must not leave a second frame handler behind, which would go on
// delivering after the callback answered false.
TEST_F(ExportDelivery, AFalseAnswerEndsTheStreamAlsoAfterASecondStart) {
  vexcap_device* device = open_default_camera(VEXCAP_STREAM_MODE_SHARED);
  ASSERT_NE(device, nullptr);
  Kept kept;
  ASSERT_EQ(vexcap_start_streaming(device, refuse_more, &kept), 0);
  ASSERT_EQ(vexcap_start_streaming(device, refuse_more, &kept), 0);
  for (int i = 0; i < 4; ++i) vc::advance_time(34ms);
  EXPECT_EQ(kept.calls.load(), 1);
  // Started again, the stream delivers again.
  ASSERT_EQ(vexcap_start_streaming(device, refuse_more, &kept), 0);
  for (int i = 0; i < 4; ++i) vc::advance_time(34ms);
  EXPECT_EQ(kept.calls.load(), 2);
  EXPECT_EQ(vexcap_device_close(device), 0);
}

struct Exposures {
  std::mutex mutex;
  std::vector<std::uint64_t> values;
  std::vector<unsigned> led_powers;
};

bool record_exposure(vexcap_frame* frame, void* context) {
  auto* seen = static_cast<Exposures*>(context);
  {
    std::lock_guard<std::mutex> lock(seen->mutex);
    seen->values.push_back(frame->exposure);
    seen->led_powers.push_back(frame->led_power);
  }
  vexcap_return_frame(frame);
  return true;
}

TEST_F(ExportDelivery, ANewExposureIsReportedFromTheFifthFrameOn) {
  vexcap_device* device = open_default_camera(VEXCAP_STREAM_MODE_EXCLUSIVE, 640, 480);
  ASSERT_NE(device, nullptr);
  ASSERT_EQ(vexcap_set_exposure(device, 20000), 0);  // the shared client's tracker holds it

  Exposures seen;
  ASSERT_EQ(vexcap_start_streaming(device, record_exposure, &seen), 0);
  for (int i = 0; i < 6; ++i) vc::advance_time(34ms);
  ASSERT_EQ(vexcap_stop_streaming(device), 0);
  ASSERT_EQ(vexcap_device_close(device), 0);

  EXPECT_EQ(seen.values, (std::vector<std::uint64_t>{0, 0, 0, 0, 20000, 20000}));
  EXPECT_EQ(seen.led_powers, (std::vector<unsigned>(6, 255u)));  // no LED power was set
}

// A 2x2 colour camera whose RGB24 frames are white, the library's to convert (the open
// parameters name its size); `missing_bytes` cuts each frame's buffer short.
class WhiteRgb24Frames : public testing::LibraryTest {
 protected:
  vexcap_frame* first_frame(std::uint32_t missing_bytes) {
    vc::Scenario scenario = vc::default_scenario();
    scenario.clock = vc::ClockMode::Manual;
    vc::SourceModel& colour = scenario.groups.at(0).sources.at(1);
    vc::FormatModel rgb24;
    rgb24.subtype = L"RGB24";
    rgb24.width = rgb24.height = 2;
    colour.formats = {rgb24};
    colour.rgb24.fill = {{255, 255, 255}};
    colour.rgb24.missing_bytes = missing_bytes;
    vc::use_scenario(scenario);
    EXPECT_EQ(vexcap_init(), 0);
    vexcap_device* device = nullptr;
    const vexcap_open_params params{VEXCAP_STREAM_MODE_SHARED, 2, 2};
    EXPECT_EQ(vexcap_device_open(&device, scenario.groups.at(0).id->c_str(), &params), 0);
    log.resume();
    Kept kept;
    EXPECT_EQ(vexcap_start_streaming(device, keep_first, &kept), 0);
    vc::advance_time(34ms);
    EXPECT_EQ(vexcap_device_close(device), 0);
    return kept.first.load();
  }
  testing::LogCapture log;
};

// BT.601 limited range: white is Y 235, grey chroma 128; black is Y 16.
TEST_F(WhiteRgb24Frames, BecomeLimitedRangeNv12) {
  vexcap_frame* frame = first_frame(0);
  ASSERT_NE(frame, nullptr);
  // Already NV12 when gathered: the buffer path would have reported the camera's Bgra8.
  EXPECT_TRUE(log.contains("D: Frame Format: 103 (Nv12)"));
  EXPECT_EQ(frame->pixel_format, VEXCAP_PIXEL_FORMAT_NV12);
  EXPECT_EQ(frame->width, 2u);
  EXPECT_EQ(frame->height, 2u);
  EXPECT_EQ(std::vector<int>(frame->data, frame->data + 6), (std::vector<int>{235, 235, 235, 235, 128, 128}));
  EXPECT_EQ(vexcap_return_frame(frame), 0);
}

TEST_F(WhiteRgb24Frames, AShortBufferIsRefusedAndTheFrameComesFromTheBuffer) {
  vexcap_frame* frame = first_frame(3);  // the last pixel is missing: the platform shows it black
  ASSERT_NE(frame, nullptr);
  EXPECT_TRUE(log.contains("E: Unexpected buffer length 9 < 2 x 2 x 3"));
  EXPECT_TRUE(log.contains("D: Frame Format: 87 (Bgra8)"));  // the buffer path's bitmap
  EXPECT_EQ(frame->pixel_format, VEXCAP_PIXEL_FORMAT_NV12);
  EXPECT_EQ(std::vector<int>(frame->data, frame->data + 6), (std::vector<int>{235, 235, 235, 16, 128, 128}));
  EXPECT_EQ(vexcap_return_frame(frame), 0);
}

}  // namespace
}  // namespace vexcap
