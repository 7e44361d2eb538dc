// Recovery after the platform reports a capture failure, through the exports.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "api/context.h"
#include "capture/capture_client.h"
#include "support/busy_request_thread.h"
#include "support/library_fixture.h"
#include "support/log_capture.h"

namespace vexcap {
namespace {

namespace vc = virtual_camera;

using testing::default_group_id;

bool keep(vexcap_frame* frame, void*) {
  vexcap_return_frame(frame);
  return true;
}

std::atomic<int> frames_after_recovery{0};
bool count(vexcap_frame* frame, void*) {
  ++frames_after_recovery;
  vexcap_return_frame(frame);
  return true;
}

std::atomic<int> status_calls{0};
void on_status(const wchar_t*, std::uint8_t, bool, void*) { ++status_calls; }

bool wait_for_line(const testing::LogCapture& log, const std::string& line) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
  while (!log.contains(line)) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

class CaptureFailure : public testing::LibraryTest {};

TEST_F(CaptureFailure, TheExclusiveClientIsRebuiltAndCanStreamAgain) {
  testing::LogCapture log;
  ASSERT_EQ(vexcap_init(), 0);
  vexcap_device* device = nullptr;
  const vexcap_open_params params{VEXCAP_STREAM_MODE_EXCLUSIVE, 0, 0};
  ASSERT_EQ(vexcap_device_open(&device, default_group_id().c_str(), &params), 0);
  log.resume();
  ASSERT_EQ(vexcap_start_streaming_ex(device, keep, nullptr, VEXCAP_STREAM_SELECT_EXCLUSIVE), 0);

  vc::raise_capture_failed(hr(0xC00D3EA2), L"The device failed.", default_group_id());
  ASSERT_TRUE(wait_for_line(log, "I: Reader restarted."));
  EXPECT_TRUE(log.contains("E: Handling the capture failure..."));
  EXPECT_TRUE(log.contains("I: Reader deleted."));
  EXPECT_TRUE(log.contains("I: Media capture frame sources deleted."));
  // Only the exclusive client watches failures: one recovery for two failed sessions.
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(log.count("E: Handling the capture failure..."), 1);
  EXPECT_EQ(vc::session_count(default_group_id(), platform::SharingMode::ExclusiveControl), 1);

  // Still initialized, with a new stopped reader: the host starts streaming again.
  frames_after_recovery = 0;
  EXPECT_EQ(vexcap_start_streaming_ex(device, count, nullptr, VEXCAP_STREAM_SELECT_EXCLUSIVE), 0);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
  while (frames_after_recovery == 0 && std::chrono::steady_clock::now() < deadline)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  EXPECT_GT(frames_after_recovery.load(), 0);
  EXPECT_EQ(vexcap_stop_streaming_ex(device, VEXCAP_STREAM_SELECT_EXCLUSIVE), 0);
  EXPECT_EQ(vexcap_device_close(device), 0);
  EXPECT_EQ(vc::session_count(default_group_id()), 0);
}

TEST_F(CaptureFailure, RecoveryDropsTheExclusiveControlSubscription) {
  testing::LogCapture log;
  status_calls = 0;
  vexcap_device* device = open_default_camera(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(device, nullptr);
  log.resume();
  ASSERT_EQ(vexcap_register_for_excl_ctrl_status_event(device, on_status, nullptr), 0);

  vc::raise_capture_failed(hr(0xC00D3EA2), L"The device failed.", default_group_id());
  ASSERT_TRUE(wait_for_line(log, "I: Reader restarted."));
  // Another application takes the camera: the status change comes before the failure it
  // causes, so once that second recovery has run the change had its chance.
  vc::set_held_by_other_app(default_group_id(), true);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
  while (log.count("E: Handling the capture failure...") < 2 && std::chrono::steady_clock::now() < deadline)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  EXPECT_EQ(log.count("E: Handling the capture failure..."), 2);
  EXPECT_EQ(status_calls.load(), 0);
  EXPECT_EQ(vexcap_device_close(device), 0);
}

// The platform's Failed event only hands the failure over: its thread goes on at once, here
// raising the exclusive-control change that follows, while the request thread is still busy.
TEST_F(CaptureFailure, TheFailedEventReturnsAtOnceWhileTheRequestThreadIsBusy) {
  testing::LogCapture log;
  vexcap_device* device = open_default_camera(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(device, nullptr);
  log.resume();
  status_calls = 0;
  ASSERT_EQ(vexcap_register_for_excl_ctrl_status_event(device, on_status, nullptr), 0);

  testing::BusyRequestThread busy;
  vc::raise_capture_failed(hr(0xC00D3EA2), L"The device failed.", default_group_id());
  ASSERT_TRUE(wait_for_line(log, "E: Media capture failed. Notifying the main thread..."));
  vc::set_held_by_other_app(default_group_id(), true);  // raised on the same event thread, after Failed
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
  while (status_calls == 0 && std::chrono::steady_clock::now() < deadline)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  EXPECT_EQ(status_calls.load(), 1);
  EXPECT_FALSE(log.contains("E: Handling the capture failure..."));  // still waiting its turn

  busy.release();
  ASSERT_TRUE(wait_for_line(log, "E: Handling the capture failure..."));
  vc::set_held_by_other_app(default_group_id(), false);
  EXPECT_EQ(vexcap_device_close(device), 0);
}

// A recovery asked for before the device was closed finds it closed: nothing is rebuilt.
TEST_F(CaptureFailure, AClosedDeviceIsNotRecovered) {
  testing::LogCapture log;
  vexcap_device* device = open_default_camera(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(device, nullptr);
  log.resume();
  // The close waits behind a slow discovery query; the failure arrives in between.
  testing::BusyRequestThread busy;
  std::thread closing([device] { EXPECT_EQ(vexcap_device_close(device), 0); });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));  // the close is queued first
  vc::raise_capture_failed(hr(0xC00D3EA2), L"The device failed.", default_group_id());
  ASSERT_TRUE(wait_for_line(log, "E: Media capture failed. Notifying the main thread..."));
  busy.release();
  closing.join();
  // A direct request runs after the recovery asked for before it: by then the request thread
  // has found the device gone and opened nothing (the close silenced the log).
  std::uint32_t type = 0;
  EXPECT_EQ(vexcap_get_source_group_type(&type), 0);
  EXPECT_EQ(vc::session_count(default_group_id()), 0);
}

// The client of a device that outlived the library: nothing takes the failure over.
TEST_F(CaptureFailure, WithoutARequestThreadThereIsNoRecovery) {
  testing::LogCapture log;
  auto client = capture::CaptureClient::create(platform::current(), VEXCAP_STREAM_MODE_EXCLUSIVE);
  client->set_failure_notifier(api::notify_capture_failure);
  log.resume();
  ASSERT_EQ(client->initialize(default_group_id(), 1, 0, 0), HR_OK);

  vc::raise_capture_failed(hr(0xC00D3EA2), L"The device failed.", default_group_id());
  ASSERT_TRUE(wait_for_line(log, "E: No VXC thread"));
  EXPECT_TRUE(log.contains("E: Media capture failed. Notifying the main thread..."));
  EXPECT_FALSE(log.contains("E: Handling the capture failure..."));
  EXPECT_NE(client->frame_reader(), nullptr);  // the old reader stays
}

}  // namespace
}  // namespace vexcap
