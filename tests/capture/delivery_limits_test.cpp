// What ends or holds back delivery, through the exports: a reader that does not start, a
// callback answering false while a second start replaces its subscription, a host that keeps
// every record, and the frames that count towards a control's report.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include "support/library_fixture.h"
#include "support/log_capture.h"

namespace vexcap {
namespace {

namespace vc = virtual_camera;
using namespace std::chrono_literals;

constexpr std::size_t kInfrared = 0;

class DeliveryLimits : public testing::OpenDevice {};

std::atomic<int> g_frames{0};
bool count_frame(vexcap_frame* frame, void*) {
  ++g_frames;
  vexcap_return_frame(frame);
  return true;
}

TEST_F(DeliveryLimits, AReaderThatDoesNotStartAnswersAFailureAndSaysWhy) {
  vc::Scenario scenario = vc::default_scenario();
  scenario.groups[0].sources[kInfrared].refuses_nv12 = true;  // its L8 cannot become NV12
  ASSERT_NE(open(VEXCAP_STREAM_MODE_EXCLUSIVE, scenario), nullptr);
  g_frames = 0;
  EXPECT_EQ(vexcap_start_streaming(device_, count_frame, nullptr), VEXCAP_E_INVALID_STATE);
  EXPECT_TRUE(log.contains("E: Reader did not start: OutputFormatNotSupported (3)"));
  vc::advance_time(100ms);
  EXPECT_EQ(g_frames.load(), 0);
}

// A callback blocked in the first frame while the host starts the stream again: its false
// answer, seen after the start replaced its subscription, still ends the stream.
struct Gate {
  std::mutex mutex;
  std::condition_variable changed;
  bool inside = false;
  bool open = false;
  std::atomic<int> calls{0};
};

bool refuse_after_waiting(vexcap_frame* frame, void* context) {
  auto* gate = static_cast<Gate*>(context);
  vexcap_return_frame(frame);
  if (gate->calls++ > 0) return false;
  std::unique_lock<std::mutex> lock(gate->mutex);
  gate->inside = true;
  gate->changed.notify_all();
  gate->changed.wait(lock, [&] { return gate->open; });
  return false;
}

TEST_F(DeliveryLimits, AFalseAnswerFromAReplacedSubscriptionEndsTheStream) {
  for (std::uint32_t mode : {VEXCAP_STREAM_MODE_SHARED, VEXCAP_STREAM_MODE_EXCLUSIVE}) {
    SCOPED_TRACE(mode);
    ASSERT_NE(open(mode), nullptr);
    Gate gate;
    ASSERT_EQ(vexcap_start_streaming(device_, refuse_after_waiting, &gate), 0);
    std::thread frame([] { vc::advance_time(34ms); });  // returns once the callback has
    {
      std::unique_lock<std::mutex> lock(gate.mutex);
      ASSERT_TRUE(gate.changed.wait_for(lock, 5s, [&] { return gate.inside; }));
    }
    ASSERT_EQ(vexcap_start_streaming(device_, refuse_after_waiting, &gate), 0);
    {
      std::lock_guard<std::mutex> lock(gate.mutex);
      gate.open = true;
      gate.changed.notify_all();
    }
    frame.join();
    for (int i = 0; i < 4; ++i) vc::advance_time(34ms);
    EXPECT_EQ(gate.calls.load(), 1);
    // Started once more, it delivers again.
    ASSERT_EQ(vexcap_start_streaming(device_, refuse_after_waiting, &gate), 0);
    vc::advance_time(34ms);
    EXPECT_EQ(gate.calls.load(), 2);
    ASSERT_EQ(vexcap_device_close(device_), 0);
    device_ = nullptr;
    vexcap_exit();
  }
}

struct Kept {
  std::mutex mutex;
  std::vector<vexcap_frame*> frames;
};

bool keep_every_record(vexcap_frame* frame, void* context) {
  auto* kept = static_cast<Kept*>(context);
  std::lock_guard<std::mutex> lock(kept->mutex);
  kept->frames.push_back(frame);
  return true;
}

TEST_F(DeliveryLimits, AHostThatKeepsItsRecordsHoldsAtMostTheLimit) {
  ASSERT_NE(open(VEXCAP_STREAM_MODE_SHARED), nullptr);
  Kept kept;
  ASSERT_EQ(vexcap_start_streaming(device_, keep_every_record, &kept), 0);
  for (int i = 0; i < 100; ++i) vc::advance_time(34ms);
  ASSERT_EQ(kept.frames.size(), 64u);
  EXPECT_EQ(log.count("W: Frame dropped: the host holds 64 records of this stream"), 1);

  // One back, one more delivered; then the stream is at its limit again.
  vexcap_return_frame(kept.frames.back());
  kept.frames.pop_back();
  for (int i = 0; i < 3; ++i) vc::advance_time(34ms);
  EXPECT_EQ(kept.frames.size(), 64u);
  EXPECT_EQ(log.count("W: Frame dropped: the host holds 64 records of this stream"), 2);

  // All back: delivery resumes at the camera's rate.
  for (vexcap_frame* frame : kept.frames) vexcap_return_frame(frame);
  kept.frames.clear();
  for (int i = 0; i < 10; ++i) vc::advance_time(34ms);
  EXPECT_EQ(kept.frames.size(), 10u);
  ASSERT_EQ(vexcap_stop_streaming(device_), 0);
  for (vexcap_frame* frame : kept.frames) vexcap_return_frame(frame);
}

struct Exposures {
  std::mutex mutex;
  std::vector<std::uint64_t> values;
};

bool record_exposure(vexcap_frame* frame, void* context) {
  auto* seen = static_cast<Exposures*>(context);
  std::lock_guard<std::mutex> lock(seen->mutex);
  seen->values.push_back(frame->exposure);
  vexcap_return_frame(frame);
  return true;
}

// Frames that end as an unsupported format still count towards the five after a change.
TEST_F(DeliveryLimits, EveryFrameCountsTowardsAControlsReport) {
  ASSERT_NE(open(VEXCAP_STREAM_MODE_EXCLUSIVE), nullptr);
  ASSERT_EQ(vexcap_set_exposure(device_, 20000), 0);
  Exposures seen;
  ASSERT_EQ(vexcap_start_streaming(device_, record_exposure, &seen), 0);
  vc::set_unsupported_frames(true);
  for (int i = 0; i < 3; ++i) vc::advance_time(34ms);  // frames 1 to 3: no record
  vc::set_unsupported_frames(false);
  for (int i = 0; i < 3; ++i) vc::advance_time(34ms);  // frames 4 to 6
  ASSERT_EQ(vexcap_stop_streaming(device_), 0);
  EXPECT_EQ(seen.values, (std::vector<std::uint64_t>{0, 20000, 20000}));
}

}  // namespace
}  // namespace vexcap
