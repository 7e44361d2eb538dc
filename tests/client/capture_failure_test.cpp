// Recovery after the platform reports a capture failure, through the exports.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "support/library_fixture.h"
#include "support/log_capture.h"

namespace vexcap {
namespace {

namespace vc = virtual_camera;

std::wstring group_id() { return *vc::default_scenario().groups.at(0).id; }

bool keep(vexcap_frame* frame, void*) {
  vexcap_return_frame(frame);
  return true;
}

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
  ASSERT_EQ(vexcap_device_open(&device, group_id().c_str(), &params), 0);
  log.resume();
  ASSERT_EQ(vexcap_start_streaming_ex(device, keep, nullptr, VEXCAP_STREAM_SELECT_EXCLUSIVE), 0);

  vc::raise_capture_failed(hr(0xC00D3EA2), L"The device failed.", group_id());
  ASSERT_TRUE(wait_for_line(log, "I: Reader restarted."));
  EXPECT_TRUE(log.contains("E: Handling the capture failure..."));
  EXPECT_TRUE(log.contains("I: Reader deleted."));
  EXPECT_TRUE(log.contains("I: Media capture frame sources deleted."));
  // Only the exclusive client watches failures: one recovery for two failed sessions.
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(log.count("E: Handling the capture failure..."), 1);
  EXPECT_EQ(vc::session_count(group_id(), platform::SharingMode::ExclusiveControl), 1);

  // Still initialized, with a new stopped reader: the host starts streaming again.
  EXPECT_EQ(vexcap_start_streaming_ex(device, keep, nullptr, VEXCAP_STREAM_SELECT_EXCLUSIVE), 0);
  EXPECT_EQ(vexcap_stop_streaming_ex(device, VEXCAP_STREAM_SELECT_EXCLUSIVE), 0);
  EXPECT_EQ(vexcap_device_close(device), 0);
  EXPECT_EQ(vc::session_count(group_id()), 0);
}

}  // namespace
}  // namespace vexcap
