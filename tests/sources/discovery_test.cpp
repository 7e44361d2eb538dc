// The discovery queries through the exports, on virtual systems of several groups.
#include <gtest/gtest.h>

#include "support/library_fixture.h"

namespace vexcap {
namespace {

namespace vc = virtual_camera;
using platform::SourceKind;

const std::wstring kUsb = L"\\\\?\\USB#VID_0BAD&PID_F00D&MI_00#1#{x}\\GLOBAL";
const std::wstring kSoftware = L"\\\\?\\SWD#VIRTUALCAM#0001#{x}\\GLOBAL";
const std::wstring kPlain = L"\\\\?\\ROOT#IMAGE#0000#{x}\\GLOBAL";

vc::SourceModel source(SourceKind kind, std::wstring id, std::optional<platform::Panel> panel = {}) {
  vc::SourceModel model;
  model.kind = kind;
  model.id = std::move(id);
  model.device_information =
      vc::DeviceInfoModel{model.id, L"camera", false, true, platform::Pairing{}, panel};
  return model;
}

vc::GroupModel group(const std::wstring& id, std::vector<vc::SourceModel> sources) {
  vc::GroupModel model;
  model.id = id;
  model.display_name = L"group";
  model.sources = std::move(sources);
  return model;
}

class Discovery : public testing::LibraryTest {
 protected:
  void use(std::vector<vc::GroupModel> groups) {
    vc::Scenario scenario;
    scenario.groups = std::move(groups);
    vc::use_scenario(scenario);
    ASSERT_EQ(vexcap_init(), 0);
  }
  static std::pair<int, std::uint32_t> group_type() {
    std::uint32_t type = 99;
    const int code = vexcap_get_source_group_type(&type);
    return {code, type};
  }
  static std::pair<int, std::uint32_t> group_type_for(const wchar_t* vid, const wchar_t* pid) {
    std::uint32_t type = 99;
    const int code = vexcap_get_source_group_type_for_vid_pid(vid, pid, &type);
    return {code, type};
  }
};

TEST_F(Discovery, AUsbCameraIsAUsbGroupUntilASoftwareDeviceAppearsAnywhere) {
  use({group(kUsb, {source(SourceKind::Infrared, kUsb + L"#ir")})});
  EXPECT_EQ(group_type(), std::make_pair(0, 2u));
  ASSERT_EQ(vexcap_exit(), 0);

  use({group(kSoftware, {source(SourceKind::Color, L"swd")}),
       group(kUsb, {source(SourceKind::Color, L"usb")})});
  EXPECT_EQ(group_type(), std::make_pair(0, 1u));
  ASSERT_EQ(vexcap_exit(), 0);

  use({group(kUsb, {source(SourceKind::Color, L"usb")}),
       group(kSoftware, {source(SourceKind::Depth, L"swd")})});
  EXPECT_EQ(group_type(), std::make_pair(0, 1u));
}

TEST_F(Discovery, AnInfraredGroupWithoutMarkersIsTypeThreeButNeverForAVidPid) {
  use({group(kPlain, {source(SourceKind::Infrared, L"ROOT#VID_0BAD&PID_F00D#ir")})});
  EXPECT_EQ(group_type(), std::make_pair(0, 3u));
  EXPECT_EQ(group_type_for(L"VID_0BAD", L"PID_F00D"), std::make_pair(-1, 0u));
}

TEST_F(Discovery, NothingFoundAnswersZeroAndFails) {
  use({group(kPlain, {source(SourceKind::Depth, L"depth")})});
  EXPECT_EQ(group_type(), std::make_pair(-1, 0u));
}

TEST_F(Discovery, TheVidPidQueryLooksOnlyAtGroupsHoldingBothTexts) {
  use({group(kUsb, {source(SourceKind::Color, L"USB#VID_0BAD&PID_F00D#c")}),
       group(kSoftware, {source(SourceKind::Color, L"SWD#VID_0BAD#only-vid")})});
  EXPECT_EQ(group_type_for(L"VID_0BAD", L"PID_F00D"), std::make_pair(0, 2u));
  EXPECT_EQ(group_type_for(L"vid_0bad", L"PID_F00D"), std::make_pair(-1, 0u));  // case matters
}

TEST_F(Discovery, CapabilitiesMarkTheGroupsSourceKindsAndKeepLeftovers) {
  use({group(kUsb, {source(SourceKind::Infrared, L"ir"), source(SourceKind::Custom, L"meta")}),
       group(kPlain, {source(SourceKind::Color, L"c")})});
  std::uint8_t flags[VEXCAP_CAPABILITY_COUNT] = {0, 0, 7, 0};
  EXPECT_EQ(vexcap_get_device_capabilities(kUsb.c_str(), flags), 0);
  EXPECT_EQ(flags[VEXCAP_CAPABILITY_COLOR], 0);
  EXPECT_EQ(flags[VEXCAP_CAPABILITY_INFRARED], 1);
  EXPECT_EQ(flags[VEXCAP_CAPABILITY_DEPTH], 7);  // never cleared
  EXPECT_EQ(flags[VEXCAP_CAPABILITY_OTHER], 1);

  std::wstring other_case = kUsb;
  other_case.replace(other_case.find(L"USB"), 3, L"usb");
  std::uint8_t untouched[VEXCAP_CAPABILITY_COUNT] = {};
  EXPECT_EQ(vexcap_get_device_capabilities(other_case.c_str(), untouched), VEXCAP_E_FAIL);
  EXPECT_EQ(untouched[VEXCAP_CAPABILITY_INFRARED], 0);
}

TEST_F(Discovery, VidPidInUseAnswersTheBoolean) {
  use({group(kUsb, {source(SourceKind::Infrared, L"USB#VID_0BAD&PID_F00D&MI_02")})});
  EXPECT_EQ(vexcap_is_vidpid_used_by_device(kUsb.c_str(), L"VID_0BAD", L"PID_F00D"), 1);
  EXPECT_EQ(vexcap_is_vidpid_used_by_device(kUsb.c_str(), L"VID_0BAD", L"PID_0000"), 0);
  EXPECT_EQ(vexcap_is_vidpid_used_by_device(kPlain.c_str(), L"VID_0BAD", L"PID_F00D"), 0);
}

TEST_F(Discovery, LocationsMarkThePanelsOfMatchingSources) {
  use({group(kUsb, {source(SourceKind::Infrared, L"USB#VID_0BAD&PID_F00D#ir", platform::Panel::Front),
                    source(SourceKind::Color, L"USB#VID_0BAD&PID_F00D#rgb", platform::Panel::Back),
                    source(SourceKind::Color, L"USB#VID_1111#other", platform::Panel::Top)})});
  std::uint8_t panels[VEXCAP_PANEL_COUNT] = {};
  EXPECT_EQ(vexcap_get_device_locations(L"vid_0bad&pid_f00d", panels), 0);
  const std::uint8_t expected[VEXCAP_PANEL_COUNT] = {0, 1, 1, 0, 0, 0, 0};
  EXPECT_EQ(std::vector<std::uint8_t>(panels, panels + VEXCAP_PANEL_COUNT),
            std::vector<std::uint8_t>(expected, expected + VEXCAP_PANEL_COUNT));
  std::uint8_t none[VEXCAP_PANEL_COUNT] = {};
  EXPECT_EQ(vexcap_get_device_locations(L"vid_2222", none), VEXCAP_E_FAIL);

  std::uint32_t panel = 99;
  EXPECT_EQ(vexcap_get_targeted_location(&panel), 0);
  EXPECT_EQ(panel, static_cast<std::uint32_t>(platform::Panel::Front));
}

TEST_F(Discovery, APlatformFailureAborts) {
  use({group(kUsb, {source(SourceKind::Color, L"c")})});
  vc::set_call_fault(vc::PlatformCall::FindAllSourceGroups, vc::CallFault{HR_FAIL, {}});
  std::uint32_t type = 0;
  EXPECT_EQ(vexcap_get_source_group_type(&type), VEXCAP_E_FAIL);  // E_ABORT
}

}  // namespace
}  // namespace vexcap
