// Controls and device properties through the product adapter on the double: typed controls,
// extended properties and the extension unit reach the camera's live state, and frames report
// what is in force.
#include <windows.h>

#include "double_test.h"

namespace vexcap::double_tests {
namespace {

using Controls = DoubleTest;

vc::GroupModel live() { return *vc::group_state(camera_id()); }

// The LED power is read from the platform's torch first: this camera has none, so the read
// comes from the extension unit, where the set went.
TEST_F(Controls, ExposureIsoAndLedPowerReachTheCameraAndTheFrames) {
  vc::edit_source(camera_id(), 0, [](vc::SourceModel& infrared) { infrared.torch.reset(); });
  vexcap_device* device = start_and_open(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(device, nullptr);
  ASSERT_EQ(vexcap_set_exposure(device, 20000), VEXCAP_OK);
  EXPECT_EQ(live().sources.at(0).exposure->value, 20000);
  std::uint64_t exposure = 0;
  ASSERT_EQ(vexcap_get_exposure(device, &exposure), VEXCAP_OK);
  EXPECT_EQ(exposure, 20000u);

  ASSERT_EQ(vexcap_set_iso_speed(device, 50), VEXCAP_OK);  // the extension unit's gain
  EXPECT_EQ(live().ks.gain, 50);
  std::uint32_t iso = 0;
  ASSERT_EQ(vexcap_get_iso_speed(device, &iso), VEXCAP_OK);
  EXPECT_EQ(iso, 50u);

  ASSERT_EQ(vexcap_set_led_power(device, 0x40), VEXCAP_OK);
  EXPECT_EQ(live().ks.led_flag, 2);
  EXPECT_EQ(live().ks.led_power, 0x40);
  // Exported under its decorated name only, as MSVC spells it: looked up as C hosts do.
  auto get_led_power = reinterpret_cast<vexcap_get_led_power_fn>(
      reinterpret_cast<void (*)()>(GetProcAddress(GetModuleHandleW(L"VexcapLib.dll"), VEXCAP_GET_LED_POWER_SYMBOL)));
  ASSERT_NE(get_led_power, nullptr);
  unsigned power = 0;
  ASSERT_EQ(get_led_power(device, &power), VEXCAP_OK);
  EXPECT_EQ(power, 0x40u);

  Frames frames;
  ASSERT_EQ(vexcap_start_streaming(device, Frames::keep, &frames), VEXCAP_OK);
  for (int i = 0; i < 6; ++i) next_frame();
  ASSERT_EQ(vexcap_stop_streaming(device), VEXCAP_OK);
  const auto taken = frames.taken();
  ASSERT_EQ(taken.size(), 6u);
  // From the fifth frame after the change the values in force are reported.
  EXPECT_EQ(taken[5]->exposure, 20000u);
  EXPECT_EQ(taken[5]->iso_speed, 50u);
  EXPECT_EQ(taken[5]->led_power, 0x40);
  frames.clear();
  EXPECT_EQ(vexcap_device_close(device), VEXCAP_OK);
}

TEST_F(Controls, FaceAuthLlcAndTheExtensionUnitPropertiesApply) {
  vexcap_device* device = start_and_open(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(device, nullptr);
  // Opening the exclusive client switched LLC on.
  EXPECT_EQ(live().sources.at(0).llc->value, 1u);
  vexcap_property llc{VEXCAP_PROP_LLC, VEXCAP_LLC_OFF};
  ASSERT_EQ(vexcap_set_dev_property(device, &llc), VEXCAP_OK);
  EXPECT_EQ(live().sources.at(0).llc->value, 0u);

  vexcap_property face_auth{VEXCAP_PROP_FACE_AUTH_MODE, VEXCAP_FACE_AUTH_ALTERNATIVE_ILLUMINATION};
  ASSERT_EQ(vexcap_set_dev_property(device, &face_auth), VEXCAP_OK);
  EXPECT_EQ(live().sources.at(0).face_auth->flags, 0x2u);

  vexcap_property control18{VEXCAP_PROP_XU_CONTROL_18, VEXCAP_XU_CONTROL_18_TWO};
  ASSERT_EQ(vexcap_set_dev_property(device, &control18), VEXCAP_OK);
  EXPECT_EQ(live().ks.control18, 2);

  vc::edit_ks(camera_id(), [](vc::KsDeviceModel& ks) { ks.video_control_mode = 3; });
  vexcap_property mode{VEXCAP_PROP_VIDEO_CONTROL_MODE, 0};
  ASSERT_EQ(vexcap_get_dev_property(device, &mode), VEXCAP_OK);
  EXPECT_EQ(mode.value, 2u);  // mode AND 2
  EXPECT_EQ(vexcap_device_close(device), VEXCAP_OK);
}

// Without RGB24 among the colour formats (whose pass would win) the table keeps the NV12 sizes.
TEST_F(Controls, StreamTypesSelectTheSourcesFormats) {
  vc::edit_source(camera_id(), 1, [](vc::SourceModel& colour) {
    std::erase_if(colour.formats, [](const vc::FormatModel& format) { return format.subtype != L"NV12"; });
  });
  vexcap_device* device = start_and_open(VEXCAP_STREAM_MODE_SHARED);
  ASSERT_NE(device, nullptr);
  vexcap_property hires{VEXCAP_PROP_HIRES_SENSOR_TYPE, 0};
  ASSERT_EQ(vexcap_get_dev_property(device, &hires), VEXCAP_OK);
  EXPECT_EQ(hires.value, VEXCAP_FORMAT_HIRES_1080P);
  EXPECT_EQ(vexcap_device_close(device), VEXCAP_OK);

  device = open(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(device, nullptr);
  vexcap_property stream_type{VEXCAP_PROP_STREAM_TYPE, 1};  // 320x240 at 60
  ASSERT_EQ(vexcap_set_dev_property(device, &stream_type), VEXCAP_OK);
  const auto& infrared = live().sources.at(0);
  EXPECT_EQ(infrared.formats.at(*infrared.current_format).width, 320u);
  EXPECT_EQ(vexcap_device_close(device), VEXCAP_OK);
}

}  // namespace
}  // namespace vexcap::double_tests

namespace vexcap::double_tests {
namespace {

TEST_F(Controls, AutoExposureSwitchesBothWays) {
  vexcap_device* device = start_and_open(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(device, nullptr);
  vexcap_property on{VEXCAP_PROP_AUTO_EXPOSURE, VEXCAP_AUTO_EXPOSURE_ON};
  ASSERT_EQ(vexcap_set_dev_property(device, &on), VEXCAP_OK);
  EXPECT_TRUE(live().sources.at(0).exposure->auto_enabled);
  // Off is set through a temporary device of the same camera, opened beside this one.
  vexcap_property off{VEXCAP_PROP_AUTO_EXPOSURE, VEXCAP_AUTO_EXPOSURE_OFF};
  ASSERT_EQ(vexcap_set_dev_property(device, &off), VEXCAP_OK);
  EXPECT_FALSE(live().sources.at(0).exposure->auto_enabled);
  EXPECT_EQ(vexcap_device_close(device), VEXCAP_OK);
}

TEST_F(Controls, ApplyingA1080pStreamTypeRunsTheColourReaderWithIt) {
  vc::edit_source(camera_id(), 1, [](vc::SourceModel& colour) {
    std::erase_if(colour.formats, [](const vc::FormatModel& format) { return format.subtype != L"NV12"; });
  });
  vexcap_device* device = start_and_open(VEXCAP_STREAM_MODE_SHARED);
  ASSERT_NE(device, nullptr);
  vexcap_property apply{VEXCAP_PROP_STREAM_TYPE_APPLY, VEXCAP_FORMAT_HIRES_1080P};
  ASSERT_EQ(vexcap_set_dev_property(device, &apply), VEXCAP_OK);
  const auto& colour = live().sources.at(1);
  EXPECT_EQ(colour.formats.at(*colour.current_format).width, 1920u);
  EXPECT_EQ(vexcap_device_close(device), VEXCAP_OK);
}

TEST_F(Controls, TheColourStreamSwitchedOffCannotStreamAgain) {
  vexcap_device* device = start_and_open(VEXCAP_STREAM_MODE_SHARED);
  ASSERT_NE(device, nullptr);
  vexcap_property off{VEXCAP_PROP_RGB_OFF, 1};
  ASSERT_EQ(vexcap_set_dev_property(device, &off), VEXCAP_OK);
  Frames frames;
  EXPECT_EQ(vexcap_start_streaming(device, Frames::keep, &frames), VEXCAP_E_INVALID_STATE);
  EXPECT_EQ(vexcap_device_close(device), VEXCAP_OK);
}

}  // namespace
}  // namespace vexcap::double_tests
