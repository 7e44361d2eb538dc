// Exposure, ISO speed and LED power through the exports on virtual cameras: one row per case
// (the camera, the value set, the answer, what the camera applied and what the host reads back).
// The exclusive client answers them: exposure on its own source, ISO speed through the
// extension unit's gain (the photo source stands in), LED power through the extension unit,
// then the infrared torch, then the ordinary torch.
#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/virtual/known_ids.h"
#include "support/library_fixture.h"
#include "support/log_capture.h"

namespace vexcap {
namespace {

namespace vc = virtual_camera;
using platform::InfraredTorchMode;
using vc::ControlKind;

constexpr std::size_t kInfrared = 0;
constexpr std::size_t kColour = 1;
constexpr std::uint32_t kReadsColour = VEXCAP_STREAM_MODE_SHARED;
constexpr std::uint32_t kReadsInfrared = VEXCAP_STREAM_MODE_EXCLUSIVE;
const std::string kOnDemand = "The virtual camera failed this call on demand.";

using testing::default_group_id;
vc::SourceModel& infrared(vc::Scenario& s) { return s.groups.at(0).sources.at(kInfrared); }
vc::SourceModel& colour(vc::Scenario& s) { return s.groups.at(0).sources.at(kColour); }
vc::KsDeviceModel ks_state() { return vc::group_state(default_group_id())->ks; }

enum class Control { Exposure, IsoSpeed, LedPower };

struct Applied {
  ControlKind kind;
  double value;
  friend bool operator==(const Applied&, const Applied&) = default;
  friend std::ostream& operator<<(std::ostream& out, const Applied& a) {
    return out << static_cast<int>(a.kind) << "=" << a.value;
  }
};

struct ControlCase {
  const char* name;
  std::uint32_t stream_mode;
  std::function<void(vc::Scenario&)> camera;  // changes to the default camera before opening
  std::function<void()> live;                 // faults after opening
  Control control;
  std::optional<std::int64_t> set;            // the value set, if any, and its answer
  int set_code;
  std::vector<Applied> applied;               // the typed controls the camera applied, in order
  std::optional<int> get_code;                // then the getter's answer and the value read
  std::optional<std::uint64_t> got;
  std::vector<std::string> log;               // lines that must be among those logged
  std::function<void()> then;                 // what the camera holds afterwards
};

void PrintTo(const ControlCase& c, std::ostream* out) { *out << c.name; }
void no_change(vc::Scenario&) {}
void nothing() {}
void refuse_control_sets() { vc::set_call_fault(vc::PlatformCall::SetControl, {HR_ACCESSDENIED, {}}); }
void gain_fails_with(vc::Scenario& s, hresult error) {
  s.groups.at(0).ks.faults.push_back({vc::ids::kVideoProcAmp, 9, error});
}
// An infrared camera whose extension unit refuses the LED write.
void unit_refuses_led(vc::Scenario& s) {
  s.groups.at(0).ks.faults.push_back({vc::ids::kPrimaryUnit, vc::ids::kPrimaryLedPower, HR_FAIL});
}
void infrared_torch_5_to_60(vc::Scenario& s) {
  unit_refuses_led(s);
  vc::InfraredTorchModel model;
  model.min_power = 5;
  model.max_power = 60;
  infrared(s).infrared_torch = model;
}

const ControlCase kCases[] = {
    // Exposure: clamped to the control's range, refused while automatic.
    {"ExposureAboveMaxIsAppliedAsMax", kReadsColour,
     [](vc::Scenario& s) {
       colour(s).exposure->min = 200;
       colour(s).exposure->max = 50000;
     },
     nothing, Control::Exposure, 70000, VEXCAP_OK, {{ControlKind::ExposureValue, 50000}}, VEXCAP_OK, 50000u, {},
     nothing},
    {"NegativeExposureIsAppliedAsMin", kReadsColour, [](vc::Scenario& s) { colour(s).exposure->min = 200; }, nothing,
     Control::Exposure, -5, VEXCAP_OK, {{ControlKind::ExposureValue, 200}}, VEXCAP_OK, 200u, {}, nothing},
    {"ExposureIsRefusedWhileAutoExposureIsOn", kReadsColour,
     [](vc::Scenario& s) { colour(s).exposure->auto_enabled = true; }, nothing, Control::Exposure, 1000,
     VEXCAP_E_INVALID_STATE, {}, VEXCAP_E_INVALID_STATE, std::nullopt, {"D: auto exposure is ON"}, nothing},
    {"MissingExposureControl", kReadsColour, [](vc::Scenario& s) { colour(s).exposure.reset(); }, nothing,
     Control::Exposure, 1000, VEXCAP_E_NO_INTERFACE, {}, VEXCAP_E_NO_INTERFACE, std::nullopt, {"D: No exp_ctrl"},
     nothing},
    {"UnsupportedExposureControl", kReadsColour, [](vc::Scenario& s) { colour(s).exposure->supported = false; },
     nothing, Control::Exposure, 1000, VEXCAP_E_FAIL, {}, VEXCAP_E_FAIL, std::nullopt,
     {"D: exposure control not supported"}, nothing},
    {"RefusedExposureIsAnswered", kReadsColour, no_change, refuse_control_sets, Control::Exposure, 1000,
     VEXCAP_E_ACCESS_DENIED, {}, std::nullopt, std::nullopt, {}, nothing},

    // ISO speed: the gain takes any value; the photo source clamps.
    {"IsoGoesToTheGainUnclamped", kReadsColour, no_change, nothing, Control::IsoSpeed, 50, VEXCAP_OK, {}, VEXCAP_OK,
     50u, {}, [] { EXPECT_EQ(ks_state().gain, 50); }},
    {"FailedGainWriteWithoutPhotoSourceIsAnsweredAndDescribed", kReadsColour,
     [](vc::Scenario& s) { gain_fails_with(s, hr(0x80080005)); }, nothing, Control::IsoSpeed, 400, VEXCAP_E_FAIL, {},
     VEXCAP_E_FAIL, std::nullopt,
     {"E: KsPropertySET 0x80080005. bytes returned= 0 \n", "E: Could not find a description for error # 0x5.\n",
      "E: KsPropertyGET 0x80080005. bytes returned= 0 \n"},
     nothing},
    {"DriverErrorIsDescribedByTheSystemMessage", kReadsColour,
     [](vc::Scenario& s) { gain_fails_with(s, hr(0x80070490)); }, nothing, Control::IsoSpeed, 400, VEXCAP_E_FAIL, {},
     std::nullopt, std::nullopt, {"E: Element not found.\n"}, nothing},
    {"FailedGainWriteFallsBackOnThePhotoSourceAndClamps", kReadsColour,
     [](vc::Scenario& s) {
       gain_fails_with(s, HR_FAIL);
       vc::SourceModel photo = colour(s);
       photo.id = L"Photo@colour";
       photo.stream_type = platform::StreamType::Photo;
       photo.iso_speed = vc::IsoSpeedModel{true, 100, 800, 100};
       s.groups[0].sources.push_back(photo);
     },
     nothing, Control::IsoSpeed, 3200, VEXCAP_OK, {{ControlKind::IsoSpeed, 800}}, std::nullopt, std::nullopt, {},
     [] { EXPECT_EQ(vc::records().applied_controls.at(0).source_id, L"Photo@colour"); }},
    {"IsoNeedsTheProcessingNode", kReadsColour,
     [](vc::Scenario& s) { s.groups[0].ks.nodes.erase(s.groups[0].ks.nodes.begin() + 1); }, nothing,
     Control::IsoSpeed, 100, VEXCAP_E_NO_INTERFACE, {}, std::nullopt, std::nullopt, {}, nothing},

    // LED power.
    {"ExtensionUnitTakesTheLowByteAndNoTorchIsTouched", kReadsInfrared,
     [](vc::Scenario& s) { infrared(s).infrared_torch = vc::InfraredTorchModel{}; }, nothing, Control::LedPower, 0x1A5,
     VEXCAP_OK, {}, std::nullopt, std::nullopt, {}, [] {
       EXPECT_EQ(ks_state().led_flag, 2);
       EXPECT_EQ(ks_state().led_power, 0xA5);
     }},
    {"InfraredTorchAloneFailsWithoutAnOrdinaryTorch", kReadsInfrared,
     [](vc::Scenario& s) {
       unit_refuses_led(s);
       infrared(s).torch.reset();
       infrared(s).infrared_torch = vc::InfraredTorchModel{};
     },
     nothing, Control::LedPower, 30, VEXCAP_E_FAIL, {}, std::nullopt, std::nullopt, {}, nothing},
    {"PowerZeroSwitchesTheInfraredTorchOff", kReadsInfrared, infrared_torch_5_to_60, nothing, Control::LedPower, 0,
     VEXCAP_OK, {{ControlKind::TorchEnabled, 1}, {ControlKind::InfraredTorchMode, double(InfraredTorchMode::Off)}},
     std::nullopt, std::nullopt, {"I: Setting ir torch control: Power= 0"}, nothing},
    {"PowerAboveMaxPowerIsAppliedAsMaxPower", kReadsInfrared, infrared_torch_5_to_60, nothing, Control::LedPower, 150,
     VEXCAP_OK,
     {{ControlKind::TorchEnabled, 1},
      {ControlKind::InfraredTorchMode, double(InfraredTorchMode::On)},
      {ControlKind::InfraredTorchPower, 60}},
     std::nullopt, std::nullopt, {}, nothing},
    {"PowerBelowMinPowerIsAppliedAsMinPower", kReadsInfrared, infrared_torch_5_to_60, nothing, Control::LedPower, 2,
     VEXCAP_OK,
     {{ControlKind::TorchEnabled, 1},
      {ControlKind::InfraredTorchMode, double(InfraredTorchMode::On)},
      {ControlKind::InfraredTorchPower, 5}},
     std::nullopt, std::nullopt, {}, nothing},
    {"OrdinaryTorchGetsThePowerAsPercent", kReadsInfrared, unit_refuses_led, nothing, Control::LedPower, 45, VEXCAP_OK,
     {{ControlKind::TorchEnabled, 1}, {ControlKind::TorchPowerPercent, 45}}, VEXCAP_OK, 45u,
     {"I: Setting torch control: Power= 45"}, nothing},
    {"TorchWithoutPowerControlIsOnlyEnabledAndReadsZero", kReadsInfrared,
     [](vc::Scenario& s) {
       unit_refuses_led(s);
       infrared(s).torch->power_supported = false;
       infrared(s).torch->power_percent = 40;
       s.groups[0].ks.led_flag = 2;
       s.groups[0].ks.led_power = 77;
     },
     nothing, Control::LedPower, 45, VEXCAP_OK, {{ControlKind::TorchEnabled, 1}}, VEXCAP_OK, 0u,
     {"I: TorchControl->Power not supported"}, nothing},
    {"RefusedTorchIsAnswered", kReadsInfrared, unit_refuses_led, refuse_control_sets, Control::LedPower, 10,
     VEXCAP_E_ACCESS_DENIED, {}, std::nullopt, std::nullopt, {"I: enable_led_power_control-> exception: " + kOnDemand},
     nothing},
    {"LedPowerIsTheTorchPowerTruncated", kReadsInfrared,
     [](vc::Scenario& s) { infrared(s).torch->power_percent = 42.9f; }, nothing, Control::LedPower, std::nullopt, 0,
     {}, VEXCAP_OK, 42u, {}, nothing},
    {"LedPowerIsReadFromTheExtensionUnitWithoutTorch", kReadsInfrared,
     [](vc::Scenario& s) {
       infrared(s).torch.reset();
       s.groups[0].ks.led_flag = 2;
       s.groups[0].ks.led_power = 77;
     },
     nothing, Control::LedPower, std::nullopt, 0, {}, VEXCAP_OK, 77u, {"I: TorchControl not supported"}, nothing},
    {"FailedExtensionUnitLedReadIsAnswered", kReadsInfrared,
     [](vc::Scenario& s) {
       infrared(s).torch.reset();
       unit_refuses_led(s);
     },
     nothing, Control::LedPower, std::nullopt, 0, {}, VEXCAP_E_FAIL, std::nullopt,
     {"E: KsPropertyGET 0x80004005. bytes returned= 0 \n"}, nothing},
};

int set(vexcap_device* device, Control control, std::int64_t value) {
  switch (control) {
    case Control::Exposure: return vexcap_set_exposure(device, value);
    case Control::IsoSpeed: return vexcap_set_iso_speed(device, static_cast<std::uint32_t>(value));
    case Control::LedPower: return vexcap_set_led_power(device, static_cast<unsigned int>(value));
  }
  return 1;
}

std::pair<int, std::uint64_t> get(vexcap_device* device, Control control) {
  std::uint64_t exposure = 0;
  std::uint32_t iso = 0;
  unsigned int led = 0;
  switch (control) {
    case Control::Exposure: return {vexcap_get_exposure(device, &exposure), exposure};
    case Control::IsoSpeed: return {vexcap_get_iso_speed(device, &iso), iso};
    case Control::LedPower: return {vexcap_get_led_power(device, &led), led};
  }
  return {1, 0};
}

std::vector<Applied> applied() {
  std::vector<Applied> result;
  for (const auto& control : vc::records().applied_controls) result.push_back({control.kind, control.value});
  return result;
}

class ControlExport : public testing::OpenDeviceCase<ControlCase> {
 protected:
  void SetUp() override {
    OpenDeviceCase::SetUp();
    vc::set_recording(true);  // the rows check the controls the camera applied
  }
};

TEST_P(ControlExport, AnswersAppliesAndReadsBack) {
  const ControlCase& c = GetParam();
  vc::Scenario scenario = vc::default_scenario();
  c.camera(scenario);
  ASSERT_NE(open(c.stream_mode, scenario), nullptr);
  vc::clear_records();
  c.live();

  if (c.set) {
    EXPECT_EQ(set(device_, c.control, *c.set), c.set_code);
  }
  EXPECT_EQ(applied(), c.applied);
  if (c.get_code) {
    const auto [code, value] = get(device_, c.control);
    EXPECT_EQ(code, *c.get_code);
    if (c.got) {
      EXPECT_EQ(value, *c.got);
    }
  }
  vc::clear_faults();
  for (const std::string& line : c.log) EXPECT_TRUE(log.contains(line)) << line;
  c.then();
}

INSTANTIATE_TEST_SUITE_P(Rows, ControlExport, ::testing::ValuesIn(kCases),
                         [](const ::testing::TestParamInfo<ControlCase>& info) { return info.param.name; });

class ControlExports : public testing::LibraryTest {};

}  // namespace
}  // namespace vexcap
