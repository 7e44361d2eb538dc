// A device's camera sessions from its open to its close: the teardown that frees the camera the
// moment close answers.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <deque>
#include <future>
#include <thread>

#include "support/library_fixture.h"

namespace vexcap {
namespace {

namespace vc = virtual_camera;
using namespace std::chrono_literals;

std::wstring group_id() { return *vc::default_scenario().groups.at(0).id; }

bool give_back(vexcap_frame* frame, void*) {
  vexcap_return_frame(frame);
  return true;
}

class DeviceLifetime : public testing::LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    vc::Scenario scenario = vc::default_scenario();
    scenario.clock = vc::ClockMode::Manual;
    vc::use_scenario(scenario);
    ASSERT_EQ(vexcap_init(), 0);
  }
  void TearDown() override {
    vexcap_exit();
    opens_.clear();
    LibraryTest::TearDown();
  }
  // Opens on another thread: the open may wait for the camera.
  std::future<int>& open_later(vexcap_device** device, std::uint32_t mode, std::wstring id = group_id()) {
    opens_.push_back(std::async(std::launch::async, [device, mode, id] {
      const vexcap_open_params params{mode, 640, 480};
      return vexcap_device_open(device, id.c_str(), &params);
    }));
    return opens_.back();
  }
  std::deque<std::future<int>> opens_;
};

TEST_F(DeviceLifetime, CloseFreesTheCameraForAnotherApplicationAtOnce) {
  for (std::uint32_t mode : {VEXCAP_STREAM_MODE_EXCLUSIVE, VEXCAP_STREAM_MODE_SHARED}) {
    vexcap_device* device = nullptr;
    ASSERT_EQ(open_later(&device, mode).get(), VEXCAP_OK);
    ASSERT_EQ(vexcap_start_streaming_ex(device, give_back, nullptr, VEXCAP_STREAM_SELECT_EXCLUSIVE), 0);
    ASSERT_EQ(vexcap_start_streaming(device, give_back, nullptr), 0);
    vc::advance_time(34ms);
    ASSERT_EQ(vexcap_device_close(device), VEXCAP_OK);
    EXPECT_EQ(vc::session_count(group_id()), 0);
    EXPECT_EQ(vc::other_app_open_exclusive(group_id()), HR_OK) << "mode " << mode;
    vc::set_held_by_other_app(group_id(), false);
  }
}

// A removed camera answers nothing: every teardown step still runs, none stops the next.
TEST_F(DeviceLifetime, CloseAfterTheCameraWentReleasesEverything) {
  vexcap_device* device = nullptr;
  ASSERT_EQ(open_later(&device, VEXCAP_STREAM_MODE_SHARED).get(), VEXCAP_OK);
  ASSERT_EQ(vexcap_start_streaming(device, give_back, nullptr), 0);
  ASSERT_EQ(vexcap_register_for_excl_ctrl_status_event(device, [](const wchar_t*, std::uint8_t, bool, void*) {}, nullptr), 0);
  vc::remove_group(group_id());
  EXPECT_EQ(vexcap_device_close(device), VEXCAP_OK);
  EXPECT_EQ(vc::session_count(group_id()), 0);
  vc::add_group(vc::default_scenario().groups.at(0));
  EXPECT_EQ(vc::other_app_open_exclusive(group_id()), HR_OK);
}

}  // namespace
}  // namespace vexcap
