// Opens a device (exclusive + shared client) on a virtual camera for the control tests, and
// reads what the camera applied and what each client's tracker remembers.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "api/device.h"
#include "platform/virtual/virtual_camera.h"
#include "support/log_capture.h"

namespace vexcap::testing {

class DeviceControlTest : public ::testing::Test {
 protected:
  static constexpr std::uint32_t kColour = 0;
  static constexpr std::uint32_t kInfrared = 1;

  void SetUp() override { virtual_camera::reset(); }
  void TearDown() override {
    if (device_) device_->close();
    device_.reset();
    virtual_camera::reset();
  }

  static std::wstring group_id() { return *virtual_camera::default_scenario().groups.at(0).id; }

  // Opens the scenario's first group, reading `reader_kind` (0 colour, 1 infrared).
  api::Device& open(virtual_camera::Scenario scenario, std::uint32_t reader_kind) {
    virtual_camera::use_scenario(std::move(scenario));
    device_ = api::Device::create();
    log.resume();
    EXPECT_NE(device_, nullptr);
    const vexcap_open_params params{reader_kind, 0, 0};
    EXPECT_EQ(device_->open(group_id(), params), HR_OK);
    virtual_camera::clear_records();
    return *device_;
  }

  // The source of the default group that reads `kind`.
  static virtual_camera::SourceModel& source(virtual_camera::Scenario& scenario,
                                            platform::SourceKind kind) {
    for (auto& s : scenario.groups.at(0).sources) {
      if (s.kind == kind) return s;
    }
    throw std::runtime_error("no such source");
  }

  static std::vector<virtual_camera::AppliedControl> applied() {
    return virtual_camera::records().applied_controls;
  }

  static virtual_camera::KsDeviceModel ks_state() { return virtual_camera::group_state(group_id())->ks; }

  // The values a tracker remembers, once five frames have passed since the last change.
  static frames::ControlReport settled(client::VexCap& client) {
    frames::ControlReport report;
    for (int frame = 0; frame < 5; ++frame) report = client.control_tracker().next_frame();
    return report;
  }

  LogCapture log;
  std::shared_ptr<api::Device> device_;
};

}  // namespace vexcap::testing
