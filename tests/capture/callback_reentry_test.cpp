// A frame callback that stops its stream or closes its device: the request thread waits for
// the callback's thread to leave the frame handler, so such a call runs after the callback and
// answers 0 at once instead of deadlocking.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "support/library_fixture.h"
#include "support/log_capture.h"

namespace vexcap {
namespace {

namespace vc = virtual_camera;
using namespace std::chrono_literals;

class CallbackReentry : public testing::LibraryTest {};

struct Host {
  vexcap_device* device = nullptr;
  bool close = false;
  std::atomic<int> frames{0};
  std::atomic<int> answer{99};
};

bool stop_or_close_from_inside(vexcap_frame* frame, void* context) {
  auto* host = static_cast<Host*>(context);
  vexcap_return_frame(frame);
  if (host->frames.fetch_add(1) == 0)
    host->answer = host->close ? vexcap_device_close(host->device) : vexcap_stop_streaming(host->device);
  return true;
}

// Advances the clock until the stream has stayed silent for three rounds of a few frame periods
// each (one silent round can be a loaded machine rather than a stopped stream).
int frames_once_quiet(Host& host) {
  int seen = host.frames.load();
  for (int round = 0, silent = 0; round < 300 && silent < 3; ++round) {
    for (int i = 0; i < 3; ++i) vc::advance_time(34ms);
    std::this_thread::sleep_for(5ms);
    const int now = host.frames.load();
    silent = now == seen ? silent + 1 : 0;
    seen = now;
  }
  return seen;
}

TEST_F(CallbackReentry, StopFromInsideTheCallbackEndsTheStream) {
  Host host;
  host.device = open_default_camera(VEXCAP_STREAM_MODE_SHARED);
  ASSERT_NE(host.device, nullptr);
  ASSERT_EQ(vexcap_start_streaming(host.device, stop_or_close_from_inside, &host), 0);
  vc::advance_time(34ms);
  const int frames = frames_once_quiet(host);
  EXPECT_EQ(host.answer.load(), 0);
  // Ended, not merely slow: more frame time brings nothing. (How many frames slip through
  // before the deferred stop runs depends on the load, so it is not counted.)
  EXPECT_EQ(frames_once_quiet(host), frames);
  // The device still answers requests and closes normally.
  EXPECT_EQ(vexcap_start_streaming(host.device, stop_or_close_from_inside, &host), 0);
  vc::advance_time(34ms);
  EXPECT_GT(host.frames.load(), frames);
  EXPECT_EQ(vexcap_device_close(host.device), 0);
}

// The host may close the device as soon as the stop has answered: the stop still running after
// the callback must not read the handle the close freed (ASan watches).
TEST_F(CallbackReentry, DeviceClosedRightAfterAStopFromInsideTheCallback) {
  Host host;
  host.device = open_default_camera(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(host.device, nullptr);
  ASSERT_EQ(vexcap_start_streaming_ex(host.device, stop_or_close_from_inside, &host,
                                      VEXCAP_STREAM_SELECT_EXCLUSIVE),
            0);
  for (int i = 0; i < 100 && host.answer.load() == 99; ++i) vc::advance_time(34ms);
  ASSERT_EQ(host.answer.load(), 0);
  EXPECT_EQ(vexcap_device_close(host.device), 0);
  EXPECT_EQ(vexcap_exit(), 0);  // waits for the stop
}

TEST_F(CallbackReentry, CloseFromInsideTheCallbackClosesTheDevice) {
  Host host;
  host.close = true;
  host.device = open_default_camera(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(host.device, nullptr);
  const std::wstring group = *vc::default_scenario().groups.at(0).id;
  ASSERT_EQ(vexcap_start_streaming_ex(host.device, stop_or_close_from_inside, &host,
                                      VEXCAP_STREAM_SELECT_EXCLUSIVE),
            0);
  vc::advance_time(34ms);
  frames_once_quiet(host);
  EXPECT_EQ(host.answer.load(), 0);
  // Both sessions ended; exit then finds nothing left running.
  for (int i = 0; i < 200 && vc::session_count(group) != 0; ++i) std::this_thread::sleep_for(10ms);
  EXPECT_EQ(vc::session_count(group), 0);
  EXPECT_EQ(vexcap_exit(), 0);
}

bool stop_the_other_slot(vexcap_frame* frame, void* context) {
  auto* host = static_cast<Host*>(context);
  vexcap_return_frame(frame);
  if (host->frames.fetch_add(1) == 0) {
    vexcap_device nowhere{VEXCAP_STREAM_MODE_EXCLUSIVE, 0, 0};  // a slot without a device
    host->answer = vexcap_stop_streaming(&nowhere);
  }
  return true;
}

// The deferred stop answered 0 at once; its own failure reaches the log.
TEST_F(CallbackReentry, ADeferredRequestThatFailsSaysSo) {
  testing::LogCapture log;
  Host host;
  host.device = open_default_camera(VEXCAP_STREAM_MODE_SHARED);
  ASSERT_NE(host.device, nullptr);
  log.resume();
  ASSERT_EQ(vexcap_start_streaming(host.device, stop_the_other_slot, &host), 0);
  vc::advance_time(34ms);
  EXPECT_EQ(host.answer.load(), 0);
  EXPECT_EQ(vexcap_stop_streaming(host.device), 0);  // runs after the deferred stop
  EXPECT_TRUE(log.contains("E: vexcap_stop_streaming asked for from a callback failed: 8007139f"));
  EXPECT_EQ(vexcap_device_close(host.device), 0);
}

}  // namespace
}  // namespace vexcap
