// A test that drives the library through its exports: the virtual runtime starts clean and
// the library is shut down whatever the test did.
#pragma once

#include <gtest/gtest.h>

#include <utility>

#include "platform/virtual/virtual_camera.h"
#include "support/log_capture.h"
#include "platform/virtual/virtual_platform.h"
#include "vexcap/vexcap.h"

namespace vexcap::testing {

// The id of the default scenario's camera (its first source group).
inline std::wstring default_group_id() { return *virtual_camera::default_scenario().groups.at(0).id; }

class LibraryTest : public ::testing::Test {
 protected:
  void SetUp() override { virtual_camera::reset(); }
  void TearDown() override {
    vexcap_exit();
    virtual_camera::reset();
  }
  // Starts the library on the default camera with the manual clock and opens it; null (with
  // a test failure recorded) when that does not work.
  static vexcap_device* open_default_camera(std::uint32_t stream_mode, std::uint16_t preferred_width = 640,
                                            std::uint16_t preferred_height = 480) {
    return open_camera(virtual_camera::default_scenario(), stream_mode, preferred_width, preferred_height);
  }
  // The same on a scenario of the test's own; its first group is opened.
  static vexcap_device* open_camera(virtual_camera::Scenario scenario, std::uint32_t stream_mode,
                                    std::uint16_t preferred_width = 640,
                                    std::uint16_t preferred_height = 480) {
    scenario.clock = virtual_camera::ClockMode::Manual;
    virtual_camera::use_scenario(scenario);
    vexcap_device* device = nullptr;
    const vexcap_open_params params{stream_mode, preferred_width, preferred_height};
    EXPECT_EQ(vexcap_init(), 0);
    EXPECT_EQ(vexcap_device_open(&device, scenario.groups.at(0).id->c_str(), &params), 0);
    return device;
  }
  // Starts the library on the default camera with the manual clock, nothing opened.
  static void start_on_default_camera() {
    virtual_camera::Scenario scenario = virtual_camera::default_scenario();
    scenario.clock = virtual_camera::ClockMode::Manual;
    virtual_camera::use_scenario(scenario);
    ASSERT_EQ(vexcap_init(), 0);
  }
  static virtual_camera::VirtualRuntime& runtime() {
    return virtual_camera::virtual_platform().runtime();
  }
};

// A test on one opened device, closed (and the close checked) after the test; the log is
// captured.
class OpenDevice : public LibraryTest {
 protected:
  void TearDown() override {
    if (device_ != nullptr) {
      EXPECT_EQ(vexcap_device_close(device_), VEXCAP_OK);
    }
    LibraryTest::TearDown();
  }
  // Opens the first group of `scenario`; null (with a failure recorded) when that fails.
  vexcap_device* open(std::uint32_t stream_mode,
                      virtual_camera::Scenario scenario = virtual_camera::default_scenario()) {
    device_ = open_camera(std::move(scenario), stream_mode);
    log.resume();  // opening switched the output off
    return device_;
  }
  vexcap_device* device_ = nullptr;
  LogCapture log;
};

// The same for a table-driven case.
template <typename Case>
class OpenDeviceCase : public OpenDevice, public ::testing::WithParamInterface<Case> {};

}  // namespace vexcap::testing
