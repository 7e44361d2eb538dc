// A frame travels through the exports: a record streamed from an opened device outlives it.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <vector>

#include "support/library_fixture.h"

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
  EXPECT_EQ(frame->illumination, 1);                // even frames are lit
  EXPECT_EQ(vexcap_return_frame(frame), 0);
  EXPECT_EQ(vexcap_return_frame(nullptr), VEXCAP_E_INVALID_ARG);
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

}  // namespace
}  // namespace vexcap
