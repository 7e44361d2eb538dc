// The source controller's typed controls with their ranges, absences and records: a camera
// that refuses what a real one refuses, so the library's clamping is tested against it. (The
// extended properties are driven through the library's device-property rows.)
#include <gtest/gtest.h>

#include "virtual_camera/virtual_test_support.h"

namespace vexcap::virtual_camera {
namespace {

using platform::InfraredTorchMode;
using platform::PlatformError;
using platform::SharingMode;

constexpr std::size_t kInfrared = 0;
constexpr std::size_t kColor = 1;

struct Controls {
  explicit Controls(Scenario scenario = default_scenario(), std::size_t source = kInfrared) {
    platform.world().use_scenario(std::move(scenario));
    platform.world().set_recording(true);
    capture = testing::open_session(platform, SharingMode::ExclusiveControl);
    controller = capture->frame_sources().at(source)->controller();
  }
  VirtualPlatform platform;
  std::shared_ptr<platform::Capture> capture;
  std::shared_ptr<platform::SourceController> controller;
};

TEST(VirtualTypedControls, ExposureKeepsItsRangeAndRecordsWhatWasApplied) {
  Controls c;
  auto exposure = c.controller->exposure_control();
  EXPECT_THROW(exposure->set_value(exposure->max() + 1), PlatformError);
  exposure->set_value(exposure->max());
  exposure->set_auto(true);
  EXPECT_EQ(exposure->value(), 330000);
  EXPECT_TRUE(exposure->auto_enabled());
  auto applied = c.platform.world().copy_records().applied_controls;
  ASSERT_EQ(applied.size(), 2u);
  EXPECT_EQ(applied[0].kind, ControlKind::ExposureValue);
  EXPECT_EQ(applied[0].value, 330000);
  EXPECT_EQ(applied[1].kind, ControlKind::ExposureAuto);
}

TEST(VirtualTypedControls, UnsupportedControlsRefuseToBeSet) {
  Scenario scenario = default_scenario();
  scenario.groups[0].sources[kInfrared].torch->supported = false;
  scenario.groups[0].sources[kInfrared].infrared_torch = InfraredTorchModel{};
  scenario.groups[0].sources[kInfrared].infrared_torch->supported = false;
  Controls c(scenario);
  auto torch = c.controller->torch_control();
  EXPECT_FALSE(torch->supported());
  EXPECT_THROW(torch->set_enabled(true), PlatformError);
  EXPECT_FALSE(c.controller->infrared_torch_control()->is_supported());
  EXPECT_TRUE(c.platform.world().copy_records().applied_controls.empty());
}

TEST(VirtualTypedControls, InfraredTorchModesAndPowerRange) {
  Scenario scenario = default_scenario();
  scenario.groups[0].sources[kInfrared].infrared_torch = InfraredTorchModel{};
  Controls c(scenario);
  auto torch = c.controller->infrared_torch_control();
  EXPECT_THROW(torch->set_current_mode(InfraredTorchMode::AlternatingFrameIllumination), PlatformError);
  torch->set_current_mode(InfraredTorchMode::On);
  EXPECT_THROW(torch->set_power(101), PlatformError);
  torch->set_power(100);
  EXPECT_EQ(torch->current_mode(), InfraredTorchMode::On);
  EXPECT_EQ(torch->power(), 100);
}

TEST(VirtualTypedControls, TorchPowerNeedsPowerSupport) {
  Scenario scenario = default_scenario();
  scenario.groups[0].sources[kInfrared].torch->power_supported = false;
  Controls c(scenario);
  auto torch = c.controller->torch_control();
  torch->set_enabled(true);
  EXPECT_THROW(torch->set_power_percent(50), PlatformError);
  EXPECT_TRUE(torch->enabled());
}

TEST(VirtualTypedControls, IsoSpeedRangeOnTheColourSource) {
  Controls c(default_scenario(), kColor);
  auto iso = c.controller->iso_speed_control();
  ASSERT_NE(iso, nullptr);
  EXPECT_THROW(iso->set_value(99), PlatformError);
  iso->set_value(800);
  EXPECT_EQ(iso->value(), 800u);
}

}  // namespace
}  // namespace vexcap::virtual_camera
