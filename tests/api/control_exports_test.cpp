// The control exports on the request thread: a device's exclusive client answers them.
#include <gtest/gtest.h>

#include "support/library_fixture.h"

namespace vexcap {
namespace {

namespace vc = virtual_camera;

class ControlExports : public testing::LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    ASSERT_EQ(vexcap_init(), 0);
  }
  std::wstring group_id() const { return *vc::default_scenario().groups.at(0).id; }
};

TEST_F(ControlExports, ASlotWithoutDeviceIsNotValid) {
  vexcap_device handle{1, 0, 0};
  std::uint64_t exposure = 0;
  std::uint32_t iso = 0;
  unsigned int led = 0;
  EXPECT_EQ(vexcap_set_exposure(&handle, 1000), VEXCAP_E_INVALID_STATE);
  EXPECT_EQ(vexcap_set_iso_speed(&handle, 100), VEXCAP_E_INVALID_STATE);
  EXPECT_EQ(vexcap_set_led_power(&handle, 10), VEXCAP_E_INVALID_STATE);
  EXPECT_EQ(vexcap_get_exposure(&handle, &exposure), VEXCAP_E_INVALID_STATE);
  EXPECT_EQ(vexcap_get_iso_speed(&handle, &iso), VEXCAP_E_INVALID_STATE);
  EXPECT_EQ(vexcap_get_led_power(&handle, &led), VEXCAP_E_INVALID_STATE);
}

TEST_F(ControlExports, ExposureIsoAndLedReachTheCamera) {
  vexcap_device* device = nullptr;
  const vexcap_open_params params{VEXCAP_STREAM_MODE_SHARED, 0, 0};  // colour reader
  ASSERT_EQ(vexcap_device_open(&device, group_id().c_str(), &params), 0);
  const std::int64_t max = vc::default_scenario().groups[0].sources[1].exposure->max;

  EXPECT_EQ(vexcap_set_exposure(device, max + 1), 0);
  std::uint64_t exposure = 0;
  EXPECT_EQ(vexcap_get_exposure(device, &exposure), 0);
  EXPECT_EQ(exposure, static_cast<std::uint64_t>(max));

  EXPECT_EQ(vexcap_set_iso_speed(device, 120), 0);
  std::uint32_t iso = 0;
  EXPECT_EQ(vexcap_get_iso_speed(device, &iso), 0);
  EXPECT_EQ(iso, 120u);

  EXPECT_EQ(vexcap_set_led_power(device, 33), 0);  // the extension unit takes it
  unsigned int led = 99;
  EXPECT_EQ(vexcap_get_led_power(device, &led), 0);  // the colour source has no torch
  EXPECT_EQ(led, 33u);

  EXPECT_EQ(vexcap_device_close(device), 0);
}

}  // namespace
}  // namespace vexcap
