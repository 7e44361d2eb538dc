// A device's camera sessions from its open to its close or vexcap_exit: an open that retries a
// camera it cannot initialize (each time with a new capture), the teardown that frees the
// camera the moment close answers, and exit with devices still open.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <deque>
#include <future>
#include <thread>

#include "platform/virtual/known_ids.h"
#include "support/library_fixture.h"
#include "support/log_capture.h"

namespace vexcap {
namespace {

namespace vc = virtual_camera;
using namespace std::chrono_literals;
using testing::LogCapture;

using testing::default_group_id;

bool give_back(vexcap_frame* frame, void*) {
  vexcap_return_frame(frame);
  return true;
}

int count_starting_with(const LogCapture& log, const std::string& prefix) {
  int count = 0;
  for (const std::string& line : log.lines()) count += line.rfind(prefix, 0) == 0;
  return count;
}

// Waits (at most 5 s) until the log holds at least `count` lines starting with `prefix`.
bool wait_for_line(const LogCapture& log, const std::string& prefix, int count = 1) {
  const auto deadline = std::chrono::steady_clock::now() + 5s;
  while (count_starting_with(log, prefix) < count) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(5ms);
  }
  return true;
}

class DeviceLifetime : public testing::LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    start_on_default_camera();
  }
  // Exit ends an open still retrying, whatever the test left behind.
  void TearDown() override {
    vexcap_exit();
    opens_.clear();
    LibraryTest::TearDown();
  }
  // Opens on another thread: the open may wait for the camera.
  std::future<int>& open_later(vexcap_device** device, std::uint32_t mode,
                               std::wstring id = default_group_id()) {
    opens_.push_back(std::async(std::launch::async, [device, mode, id] {
      const vexcap_open_params params{mode, 640, 480};
      return vexcap_device_open(device, id.c_str(), &params);
    }));
    return opens_.back();
  }
  // The same, with `log` hearing the open: it resumes once the open's clients exist (each
  // client's construction switches the output off), held up in their first enumeration.
  std::future<int>& open_heard(LogCapture& log, vexcap_device** device, std::uint32_t mode,
                               std::wstring id = default_group_id()) {
    vc::set_call_fault(vc::PlatformCall::FindAllSourceGroups, vc::CallFault{HR_OK, 10s});
    std::future<int>& opened = open_later(device, mode, std::move(id));
    EXPECT_TRUE(vc::wait_for_slow_call(5s));
    log.resume();
    vc::clear_faults();  // lets the enumeration go on
    return opened;
  }
  std::deque<std::future<int>> opens_;
};

TEST_F(DeviceLifetime, OpenWaitsOutThePrivacySettingAndSaysWhyOnce) {
  LogCapture log;
  vc::set_camera_access_allowed(false);
  vexcap_device* device = nullptr;
  std::future<int>& opened = open_heard(log, &device, VEXCAP_STREAM_MODE_EXCLUSIVE);
  // Several attempts, each refused, one explanation.
  ASSERT_TRUE(wait_for_line(log, "E: Failed to initialize media capture: Access is denied.", 3));
  EXPECT_EQ(log.count("E: Opening the camera failed: 80070005; trying again every 100 ms"), 1);
  EXPECT_EQ(log.count("E: Camera access is denied: allow it in the camera privacy settings"), 1);
  EXPECT_EQ(opened.wait_for(0s), std::future_status::timeout);

  vc::set_camera_access_allowed(true);  // a fresh capture takes the next attempt
  ASSERT_EQ(opened.wait_for(5s), std::future_status::ready);
  ASSERT_EQ(opened.get(), VEXCAP_OK);
  EXPECT_EQ(vc::session_count(default_group_id(), platform::SharingMode::ExclusiveControl), 1);
  EXPECT_EQ(vc::session_count(default_group_id(), platform::SharingMode::SharedReadOnly), 1);
  EXPECT_EQ(vexcap_device_close(device), VEXCAP_OK);
}

// The platform throws no platform error but runs out of memory: the attempt fails like any
// other, the process goes on and the open succeeds once memory is back.
TEST_F(DeviceLifetime, AnInitializationThatRunsOutOfMemoryIsRetried) {
  LogCapture log;
  vexcap_device* device = nullptr;
  std::future<int>& opened = open_heard(log, &device, VEXCAP_STREAM_MODE_SHARED);
  vc::CallFault out_of_memory;
  out_of_memory.out_of_memory = true;
  vc::set_call_fault(vc::PlatformCall::Initialize, out_of_memory);
  ASSERT_TRUE(wait_for_line(log, "E: Unexpected exception caught.", 2));
  vc::clear_faults();
  ASSERT_EQ(opened.wait_for(5s), std::future_status::ready);
  ASSERT_EQ(opened.get(), VEXCAP_OK);
  EXPECT_EQ(log.count("E: Opening the camera failed: 80004005; trying again every 100 ms"), 1);
  EXPECT_EQ(vexcap_device_close(device), VEXCAP_OK);
}

// A camera whose initialization never returns: the attempt is abandoned at its 10 s limit and
// the next one waits until it has ended, so an open keeps one thread waiting on the platform,
// not one more every 10 s (a second attempt beside the first would time out at 20 s too).
TEST_F(DeviceLifetime, AnInitializationThatNeverReturnsIsNotRetriedBesideItself) {
  LogCapture log;
  vc::set_call_fault(vc::PlatformCall::Initialize, vc::CallFault{HR_OK, 60s});
  vexcap_device* device = nullptr;
  std::future<int>& opened = open_later(&device, VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_TRUE(vc::wait_for_slow_call(5s));
  log.resume();  // the clients exist by now
  std::this_thread::sleep_for(21s);
  EXPECT_EQ(log.count("E: Time out waiting for init thread to finish"), 1);
  EXPECT_EQ(opened.wait_for(0s), std::future_status::timeout);

  vc::clear_faults();
  vc::release_slow_calls();  // the stuck attempt returns and the open completes
  ASSERT_EQ(opened.wait_for(5s), std::future_status::ready);
  EXPECT_EQ(opened.get(), VEXCAP_OK);
  EXPECT_EQ(vexcap_device_close(device), VEXCAP_OK);
}

TEST_F(DeviceLifetime, ExitEndsAnOpenThatCanNeverSucceed) {
  struct Case {
    const char* what;
    std::wstring id;
    std::uint32_t mode;
    bool held;
  };
  const Case cases[] = {
      {"no such camera", L"\\\\?\\USB#VID_0000&PID_0000#none", VEXCAP_STREAM_MODE_SHARED, false},
      {"no depth source", default_group_id(), 2, false},
      {"held by another application", default_group_id(), VEXCAP_STREAM_MODE_EXCLUSIVE, true},
  };
  for (const Case& c : cases) {
    LogCapture log;
    ASSERT_EQ(vexcap_init(), 0);
    if (c.held) {
      ASSERT_EQ(vc::other_app_open_exclusive(default_group_id()), HR_OK);
    }
    vexcap_device* device = nullptr;
    std::future<int>& opened = open_heard(log, &device, c.mode, c.id);
    ASSERT_TRUE(wait_for_line(log, "E: Opening the camera failed: ")) << c.what;
    std::this_thread::sleep_for(250ms);  // a few attempts more
    EXPECT_EQ(opened.wait_for(0s), std::future_status::timeout) << c.what;

    const auto exit_began = std::chrono::steady_clock::now();
    EXPECT_EQ(vexcap_exit(), VEXCAP_OK) << c.what;
    EXPECT_LT(std::chrono::steady_clock::now() - exit_began, 5s) << c.what;
    ASSERT_EQ(opened.wait_for(5s), std::future_status::ready) << c.what;
    EXPECT_EQ(opened.get(), VEXCAP_E_FAIL) << c.what;
    EXPECT_EQ(device, nullptr) << c.what;
    EXPECT_TRUE(log.contains("E: Device open abandoned: the library is exiting")) << c.what;
    EXPECT_EQ(vc::session_count(default_group_id()), 0) << c.what;
    vc::set_held_by_other_app(default_group_id(), false);
  }
}

TEST_F(DeviceLifetime, CloseFreesTheCameraForAnotherApplicationAtOnce) {
  for (std::uint32_t mode : {VEXCAP_STREAM_MODE_EXCLUSIVE, VEXCAP_STREAM_MODE_SHARED}) {
    vexcap_device* device = nullptr;
    ASSERT_EQ(open_later(&device, mode).get(), VEXCAP_OK);
    ASSERT_EQ(vexcap_start_streaming_ex(device, give_back, nullptr, VEXCAP_STREAM_SELECT_EXCLUSIVE), 0);
    ASSERT_EQ(vexcap_start_streaming(device, give_back, nullptr), 0);
    vc::advance_time(34ms);
    ASSERT_EQ(vexcap_device_close(device), VEXCAP_OK);
    EXPECT_EQ(vc::session_count(default_group_id()), 0);
    EXPECT_EQ(vc::other_app_open_exclusive(default_group_id()), HR_OK) << "mode " << mode;
    vc::set_held_by_other_app(default_group_id(), false);
  }
}

// A removed camera answers nothing: every teardown step still runs, none stops the next.
TEST_F(DeviceLifetime, CloseAfterTheCameraWentReleasesEverything) {
  vexcap_device* device = nullptr;
  ASSERT_EQ(open_later(&device, VEXCAP_STREAM_MODE_SHARED).get(), VEXCAP_OK);
  ASSERT_EQ(vexcap_start_streaming(device, give_back, nullptr), 0);
  ASSERT_EQ(vexcap_register_for_excl_ctrl_status_event(device, [](const wchar_t*, std::uint8_t, bool, void*) {}, nullptr), 0);
  vc::remove_group(default_group_id());
  EXPECT_EQ(vexcap_device_close(device), VEXCAP_OK);
  EXPECT_EQ(vc::session_count(default_group_id()), 0);
  vc::add_group(vc::default_scenario().groups.at(0));
  EXPECT_EQ(vc::other_app_open_exclusive(default_group_id()), HR_OK);
}

// Exit with devices open (one of them made unreachable by a second open of its slot): their
// readers, sessions and captures end before Media Foundation and the runtime stop.
TEST_F(DeviceLifetime, ExitEndsTheCaptureOfDevicesLeftOpenBeforeTheRuntimeStops) {
  LogCapture log;
  vexcap_device* devices[3] = {};
  ASSERT_EQ(open_later(&devices[0], VEXCAP_STREAM_MODE_SHARED).get(), VEXCAP_OK);
  ASSERT_EQ(open_later(&devices[1], VEXCAP_STREAM_MODE_SHARED).get(), VEXCAP_OK);
  ASSERT_EQ(open_later(&devices[2], VEXCAP_STREAM_MODE_EXCLUSIVE).get(), VEXCAP_OK);
  log.resume();
  for (vexcap_device* device : {devices[1], devices[2]})
    ASSERT_EQ(vexcap_start_streaming(device, give_back, nullptr), 0);
  vc::advance_time(34ms);
  EXPECT_EQ(vc::session_count(default_group_id()), 6);

  EXPECT_EQ(vexcap_exit(), VEXCAP_OK);
  EXPECT_TRUE(log.contains("W: Exit with 3 device(s) still open: ending their capture"));
  EXPECT_EQ(runtime().sessions_open_at_mf_shutdown(), 0);
  EXPECT_EQ(vc::session_count(default_group_id()), 0);
  EXPECT_EQ(vc::other_app_open_exclusive(default_group_id()), HR_OK);
  // The handles are still the host's to free.
  for (vexcap_device* device : devices) EXPECT_EQ(vexcap_device_close(device), VEXCAP_E_INVALID_STATE);
}

}  // namespace
}  // namespace vexcap
