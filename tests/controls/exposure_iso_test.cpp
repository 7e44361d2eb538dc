// Exposure, automatic exposure and ISO speed on virtual cameras, through the device's
// exclusive client, and what both clients' trackers remember.
#include <gtest/gtest.h>

#include "controls/exposure_iso.h"
#include "controls/ks_ids.h"
#include "device_fixture.h"

namespace vexcap::controls {
namespace {

namespace vc = virtual_camera;
using platform::SourceKind;
using vc::ControlKind;

class ExposureIso : public testing::DeviceControlTest {};

TEST_F(ExposureIso, ExposureAboveMaxIsAppliedAsMaxButTheSharedTrackerKeepsTheRequest) {
  vc::Scenario scenario = vc::default_scenario();
  vc::ExposureModel& model = *source(scenario, SourceKind::Color).exposure;
  model.min = 200;
  model.max = 50000;
  api::Device& device = open(scenario, kColour);

  ASSERT_EQ(device.set_exposure(70000), HR_OK);
  const auto controls = applied();
  ASSERT_EQ(controls.size(), 1u);
  EXPECT_EQ(controls[0].kind, ControlKind::ExposureValue);
  EXPECT_EQ(controls[0].value, 50000);
  EXPECT_EQ(settled(*device.exclusive_client()).exposure, 50000u);
  EXPECT_EQ(settled(*device.shared_client()).exposure, 70000u);

  std::uint64_t read = 0;
  EXPECT_EQ(device.get_exposure(read), HR_OK);
  EXPECT_EQ(read, 50000u);
}

TEST_F(ExposureIso, ExposureBelowMinIsAppliedAsMin) {
  vc::Scenario scenario = vc::default_scenario();
  source(scenario, SourceKind::Color).exposure->min = 200;
  api::Device& device = open(scenario, kColour);
  ASSERT_EQ(device.set_exposure(-5), HR_OK);  // signed: a negative request is below Min
  ASSERT_EQ(applied().size(), 1u);
  EXPECT_EQ(applied()[0].value, 200);
  EXPECT_EQ(settled(*device.exclusive_client()).exposure, 200u);
}

TEST_F(ExposureIso, ExposureIsRefusedWhileAutoExposureIsOn) {
  vc::Scenario scenario = vc::default_scenario();
  source(scenario, SourceKind::Color).exposure->auto_enabled = true;
  api::Device& device = open(scenario, kColour);

  EXPECT_EQ(device.set_exposure(1000), HR_INVALID_STATE);
  std::uint64_t read = 77;
  EXPECT_EQ(device.get_exposure(read), HR_INVALID_STATE);
  EXPECT_EQ(read, 77u);
  EXPECT_TRUE(applied().empty());
  EXPECT_EQ(log.count("D: auto exposure is ON"), 2);
  const frames::ControlReport shared = settled(*device.shared_client());
  EXPECT_FALSE(shared.report_exposure);
  EXPECT_EQ(shared.exposure, 0u);
}

TEST_F(ExposureIso, MissingOrUnsupportedExposureControlIsReported) {
  vc::Scenario scenario = vc::default_scenario();
  source(scenario, SourceKind::Color).exposure.reset();
  api::Device& device = open(scenario, kColour);
  EXPECT_EQ(device.set_exposure(1000), HR_NOINTERFACE);
  EXPECT_TRUE(log.contains("D: No exp_ctrl"));

  vc::edit_source(group_id(), 1, [](vc::SourceModel& s) {
    s.exposure = vc::ExposureModel{};
    s.exposure->supported = false;
  });
  std::uint64_t read = 0;
  EXPECT_EQ(device.get_exposure(read), HR_FAIL);
  EXPECT_TRUE(log.contains("D: exposure control not supported"));
  EXPECT_TRUE(applied().empty());
}

TEST_F(ExposureIso, IsoThroughTheExtensionUnitMakesNoPlatformCallAndIsNotClamped) {
  vc::Scenario scenario = vc::default_scenario();
  vc::IsoSpeedModel& iso = *source(scenario, SourceKind::Color).iso_speed;
  iso.min = 100;
  iso.max = 1600;
  api::Device& device = open(scenario, kColour);

  ASSERT_EQ(device.set_iso_speed(50), HR_OK);  // below the ISO control's Min
  EXPECT_TRUE(applied().empty());
  EXPECT_EQ(ks_state().gain, 50);
  EXPECT_EQ(settled(*device.exclusive_client()).iso_speed, 50u);
  EXPECT_EQ(settled(*device.shared_client()).iso_speed, 50u);

  std::uint32_t read = 0;
  EXPECT_EQ(device.get_iso_speed(read), HR_OK);
  EXPECT_EQ(read, 50u);
}

TEST_F(ExposureIso, FailedGainWriteWithoutSecondSourceReturnsTheKernelStreamingError) {
  const hresult driver_error = hr(0x8007001F);
  vc::Scenario scenario = vc::default_scenario();
  scenario.groups[0].ks.faults.push_back({ids::kVideoProcAmp, 9, driver_error});
  api::Device& device = open(scenario, kColour);
  ASSERT_EQ(device.exclusive_client()->second_source(), nullptr);

  EXPECT_EQ(device.set_iso_speed(400), driver_error);
  EXPECT_TRUE(applied().empty());
  EXPECT_FALSE(settled(*device.shared_client()).report_iso_speed);
  EXPECT_FALSE(settled(*device.exclusive_client()).report_iso_speed);
}

TEST_F(ExposureIso, FailedGainWriteFallsBackOnThePhotoSourceAndClamps) {
  vc::Scenario scenario = vc::default_scenario();
  scenario.groups[0].ks.faults.push_back({ids::kVideoProcAmp, 9, HR_FAIL});
  vc::SourceModel photo = source(scenario, SourceKind::Color);
  photo.id = L"Photo@colour";
  photo.stream_type = platform::StreamType::Photo;
  photo.iso_speed = vc::IsoSpeedModel{true, 100, 800, 100};
  scenario.groups[0].sources.push_back(photo);
  api::Device& device = open(scenario, kColour);
  ASSERT_NE(device.exclusive_client()->second_source(), nullptr);

  ASSERT_EQ(device.set_iso_speed(3200), HR_OK);
  const auto controls = applied();
  ASSERT_EQ(controls.size(), 1u);
  EXPECT_EQ(controls[0].kind, ControlKind::IsoSpeed);
  EXPECT_EQ(controls[0].value, 800);
  EXPECT_EQ(controls[0].source_id, L"Photo@colour");
  EXPECT_EQ(settled(*device.exclusive_client()).iso_speed, 800u);
  EXPECT_EQ(settled(*device.shared_client()).iso_speed, 3200u);
}

TEST_F(ExposureIso, OnlyMode513SwitchesAutoExposureOn) {
  api::Device& device = open(vc::default_scenario(), kColour);
  client::VexCap& client = *device.exclusive_client();
  auto auto_on = [] { return vc::group_state(group_id())->sources.at(1).exposure->auto_enabled; };

  ASSERT_EQ(set_auto_exposure_mode(client, VEXCAP_AUTO_EXPOSURE_ON), HR_OK);
  EXPECT_TRUE(auto_on());
  EXPECT_TRUE(log.contains("I: Setting auto exposure mode to 1"));
  for (std::uint32_t mode : {0u, 1u, 514u, 0x301u}) {
    ASSERT_EQ(set_auto_exposure_mode(client, VEXCAP_AUTO_EXPOSURE_ON), HR_OK);
    ASSERT_EQ(set_auto_exposure_mode(client, mode), HR_OK) << mode;
    EXPECT_FALSE(auto_on()) << mode;
  }
  EXPECT_TRUE(log.contains("I: Setting auto exposure mode to 0"));
}

TEST_F(ExposureIso, AutoExposureModeOnAnUnsupportedControlIsNotFound) {
  vc::Scenario scenario = vc::default_scenario();
  source(scenario, SourceKind::Color).exposure->supported = false;
  api::Device& device = open(scenario, kColour);
  EXPECT_EQ(set_auto_exposure_mode(*device.exclusive_client(), 513), HR_NOT_FOUND);
  EXPECT_TRUE(log.contains("I: exposure mode ctrl not supported"));
}

TEST_F(ExposureIso, AutoExposureModeFailureIsLoggedAndAnswered) {
  api::Device& device = open(vc::default_scenario(), kColour);
  vc::set_call_fault(vc::PlatformCall::SetControl, {HR_ACCESSDENIED, {}});
  EXPECT_EQ(set_auto_exposure_mode(*device.exclusive_client(), 514), HR_ACCESSDENIED);
  bool logged = false;
  for (const std::string& line : log.lines()) {
    logged |= line.rfind("I: Setting auto exposure mode exception: ", 0) == 0;
  }
  EXPECT_TRUE(logged);
}

TEST_F(ExposureIso, ExposureSetFailureEndsQuietlyAndLeavesTheTrackers) {
  api::Device& device = open(vc::default_scenario(), kColour);
  vc::set_call_fault(vc::PlatformCall::SetControl, {HR_ACCESSDENIED, {}});
  log.clear();
  EXPECT_EQ(device.set_exposure(1000), HR_ACCESSDENIED);
  EXPECT_TRUE(log.lines().empty());
  EXPECT_FALSE(settled(*device.shared_client()).report_exposure);
  EXPECT_FALSE(settled(*device.exclusive_client()).report_exposure);
}

TEST_F(ExposureIso, SettingTheStoredIsoAgainLeavesTheSharedCountRunning) {
  api::Device& device = open(vc::default_scenario(), kColour);
  frames::ControlTracker& shared = device.shared_client()->control_tracker();
  ASSERT_EQ(device.set_iso_speed(90), HR_OK);
  for (int frame = 0; frame < 3; ++frame) shared.next_frame();
  ASSERT_EQ(device.set_iso_speed(90), HR_OK);
  EXPECT_FALSE(shared.next_frame().report_iso_speed);  // fourth frame since the change
  EXPECT_TRUE(shared.next_frame().report_iso_speed);   // fifth
}

}  // namespace
}  // namespace vexcap::controls
