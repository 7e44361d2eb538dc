// LED power on virtual cameras: the extension unit first, then the infrared torch, then the
// ordinary torch; and reading it back with the extension unit as fallback.
#include <gtest/gtest.h>

#include "controls/ks_ids.h"
#include "controls/led_torch.h"
#include "device_fixture.h"

namespace vexcap::controls {
namespace {

namespace vc = virtual_camera;
using platform::InfraredTorchMode;
using platform::SourceKind;
using vc::ControlKind;

constexpr std::uint32_t kLedPowerControl = 14;  // unit 1's LED power control

class LedTorch : public testing::DeviceControlTest {
 protected:
  // An infrared camera whose extension unit refuses the LED write.
  static vc::Scenario without_xu_led() {
    vc::Scenario scenario = vc::default_scenario();
    scenario.groups[0].ks.faults.push_back({ids::kExtensionUnit1, kLedPowerControl, HR_FAIL});
    return scenario;
  }
  static std::vector<ControlKind> kinds() {
    std::vector<ControlKind> result;
    for (const auto& control : applied()) result.push_back(control.kind);
    return result;
  }
  static double value_of(ControlKind kind) {
    for (const auto& control : applied()) {
      if (control.kind == kind) return control.value;
    }
    ADD_FAILURE() << "not applied";
    return -1;
  }
};

TEST_F(LedTorch, ExtensionUnitTakesThePowerAndNoTorchIsTouched) {
  vc::Scenario scenario = vc::default_scenario();
  source(scenario, SourceKind::Infrared).infrared_torch = vc::InfraredTorchModel{};
  api::Device& device = open(scenario, kInfrared);

  ASSERT_EQ(device.set_led_power(0x1A5), HR_OK);
  EXPECT_TRUE(applied().empty());
  EXPECT_EQ(ks_state().led_power, 0xA5);  // the unit gets the low byte
  EXPECT_EQ(settled(*device.exclusive_client()).led_power, 0x1A5u);
  EXPECT_EQ(settled(*device.shared_client()).led_power, 0x1A5u);
}

TEST_F(LedTorch, InfraredTorchAloneFailsWithoutAnOrdinaryTorch) {
  vc::Scenario scenario = without_xu_led();
  vc::SourceModel& ir = source(scenario, SourceKind::Infrared);
  ir.torch.reset();
  ir.infrared_torch = vc::InfraredTorchModel{};
  api::Device& device = open(scenario, kInfrared);

  EXPECT_EQ(device.set_led_power(30), HR_NOT_FOUND);
  EXPECT_TRUE(applied().empty());
  EXPECT_FALSE(settled(*device.shared_client()).report_led_power);
  EXPECT_FALSE(settled(*device.exclusive_client()).report_led_power);
}

TEST_F(LedTorch, PowerZeroSwitchesTheInfraredTorchOffAndSetsNoPower) {
  vc::Scenario scenario = without_xu_led();
  source(scenario, SourceKind::Infrared).infrared_torch = vc::InfraredTorchModel{};
  api::Device& device = open(scenario, kInfrared);

  ASSERT_EQ(device.set_led_power(0), HR_OK);
  EXPECT_EQ(kinds(), (std::vector<ControlKind>{ControlKind::TorchEnabled, ControlKind::InfraredTorchMode}));
  EXPECT_EQ(value_of(ControlKind::TorchEnabled), 1);
  EXPECT_EQ(value_of(ControlKind::InfraredTorchMode), static_cast<double>(InfraredTorchMode::Off));
  EXPECT_TRUE(log.contains("I: Setting ir torch control: Power= 0"));
}

TEST_F(LedTorch, PowerAboveMaxPowerIsAppliedAsMaxPowerButTrackersKeepTheRequest) {
  vc::Scenario scenario = without_xu_led();
  vc::InfraredTorchModel model;
  model.min_power = 5;
  model.max_power = 60;
  source(scenario, SourceKind::Infrared).infrared_torch = model;
  api::Device& device = open(scenario, kInfrared);

  ASSERT_EQ(device.set_led_power(150), HR_OK);
  EXPECT_EQ(kinds(), (std::vector<ControlKind>{ControlKind::TorchEnabled, ControlKind::InfraredTorchMode,
                                               ControlKind::InfraredTorchPower}));
  EXPECT_EQ(value_of(ControlKind::InfraredTorchMode), static_cast<double>(InfraredTorchMode::On));
  EXPECT_EQ(value_of(ControlKind::InfraredTorchPower), 60);
  EXPECT_EQ(settled(*device.exclusive_client()).led_power, 150u);
  EXPECT_EQ(settled(*device.shared_client()).led_power, 150u);

  vc::clear_records();
  ASSERT_EQ(device.set_led_power(2), HR_OK);
  EXPECT_EQ(value_of(ControlKind::InfraredTorchPower), 5);
}

TEST_F(LedTorch, OrdinaryTorchGetsThePowerAsPercent) {
  api::Device& device = open(without_xu_led(), kInfrared);
  ASSERT_EQ(device.set_led_power(45), HR_OK);
  EXPECT_EQ(kinds(), (std::vector<ControlKind>{ControlKind::TorchEnabled, ControlKind::TorchPowerPercent}));
  EXPECT_EQ(value_of(ControlKind::TorchPowerPercent), 45.0);
  EXPECT_TRUE(log.contains("I: Setting torch control: Power= 45"));
}

TEST_F(LedTorch, TorchWithoutPowerControlOnlyGetsEnabled) {
  vc::Scenario scenario = without_xu_led();
  source(scenario, SourceKind::Infrared).torch->power_supported = false;
  api::Device& device = open(scenario, kInfrared);

  EXPECT_EQ(device.set_led_power(45), HR_OK);
  EXPECT_EQ(kinds(), (std::vector<ControlKind>{ControlKind::TorchEnabled}));
  EXPECT_EQ(value_of(ControlKind::TorchEnabled), 1);
  EXPECT_TRUE(log.contains("I: TorchControl->Power not supported"));
  EXPECT_EQ(settled(*device.shared_client()).led_power, 45u);
}

TEST_F(LedTorch, GetLedPowerReadsTheTorchTruncated) {
  vc::Scenario scenario = vc::default_scenario();
  source(scenario, SourceKind::Infrared).torch->power_percent = 42.9f;
  api::Device& device = open(scenario, kInfrared);
  std::uint32_t power = 99;
  EXPECT_EQ(device.get_led_power(power), HR_OK);
  EXPECT_EQ(power, 42u);
}

TEST_F(LedTorch, GetLedPowerFallsBackToTheExtensionUnitWithoutTorch) {
  vc::Scenario scenario = vc::default_scenario();
  source(scenario, SourceKind::Infrared).torch.reset();
  scenario.groups[0].ks.led_flag = 2;
  scenario.groups[0].ks.led_power = 77;
  api::Device& device = open(scenario, kInfrared);

  std::uint32_t torch = 5;
  EXPECT_EQ(get_torch_power(*device.exclusive_client(), torch), HR_NOT_FOUND);
  EXPECT_EQ(torch, 5u);
  EXPECT_TRUE(log.contains("I: TorchControl not supported"));
  std::uint32_t power = 99;
  EXPECT_EQ(device.get_led_power(power), HR_OK);
  EXPECT_EQ(power, 77u);
}

TEST_F(LedTorch, GetLedPowerWithoutPowerControlAnswersZero) {
  vc::Scenario scenario = vc::default_scenario();
  vc::TorchModel& torch = *source(scenario, SourceKind::Infrared).torch;
  torch.power_supported = false;
  torch.power_percent = 40;
  scenario.groups[0].ks.led_flag = 2;
  scenario.groups[0].ks.led_power = 77;
  api::Device& device = open(scenario, kInfrared);
  std::uint32_t power = 99;
  EXPECT_EQ(device.get_led_power(power), HR_OK);
  EXPECT_EQ(power, 0u);  // preset by the request, untouched by the torch
}

TEST_F(LedTorch, TorchFailureIsLoggedAndAnswered) {
  api::Device& device = open(without_xu_led(), kInfrared);
  vc::set_call_fault(vc::PlatformCall::SetControl, {HR_ACCESSDENIED, {}});
  EXPECT_EQ(enable_led_power_control(*device.exclusive_client(), true), HR_ACCESSDENIED);
  EXPECT_EQ(set_torch_power(*device.exclusive_client(), 10), HR_ACCESSDENIED);
  int enable_lines = 0, torch_lines = 0;
  for (const std::string& line : log.lines()) {
    enable_lines += line.rfind("I: enable_led_power_control-> exception: ", 0) == 0;
    torch_lines += line.rfind("I: TorchControl-> exception: ", 0) == 0;
  }
  EXPECT_EQ(enable_lines, 1);
  EXPECT_EQ(torch_lines, 1);
}

}  // namespace
}  // namespace vexcap::controls
