// The source controller: face-auth and LLC as 40-byte extended properties, and the typed
// controls with their ranges, absences and records.
#include <gtest/gtest.h>

#include "platform/virtual/known_ids.h"
#include "platform/virtual/le_bytes.h"
#include "virtual_camera/virtual_test_support.h"

namespace vexcap::virtual_camera {
namespace {

using platform::GetPropertyStatus;
using platform::InfraredTorchMode;
using platform::PlatformError;
using platform::SetPropertyStatus;
using platform::SharingMode;

constexpr std::size_t kInfrared = 0;
constexpr std::size_t kColor = 1;

std::vector<std::uint8_t> face_auth_id(std::uint32_t flags) {
  return le::ks_property(ids::kExtendedCameraControl, ids::kExtendedFaceAuthMode, flags);
}
std::vector<std::uint8_t> llc_buffer(std::uint32_t flags) {
  return le::ks_property(ids::kCameraControl, ids::kCameraControlLlc, flags, 40);
}

struct Controls {
  explicit Controls(Scenario scenario = default_scenario(), std::size_t source = kInfrared) {
    platform.world().use_scenario(std::move(scenario));
    capture = testing::open_session(platform, SharingMode::ExclusiveControl);
    controller = capture->frame_sources().at(source)->controller();
  }
  VirtualPlatform platform;
  std::shared_ptr<platform::Capture> capture;
  std::shared_ptr<platform::SourceController> controller;
};

TEST(VirtualExtendedProperties, FaceAuthAnswersHeaderAndValue) {
  Controls c;
  auto result = c.controller->get_property_by_extended_id(face_auth_id(1), 40);
  ASSERT_EQ(result.status, GetPropertyStatus::Success);
  ASSERT_TRUE(result.value && result.value->bytes);
  const auto& b = *result.value->bytes;
  ASSERT_EQ(b.size(), 40u);
  EXPECT_EQ(le::u32(&b[0]), 1u);       // Version
  EXPECT_EQ(le::u32(&b[8]), 40u);      // Size
  EXPECT_EQ(le::u64(&b[16]), 0x1u);    // Flags: disabled
  EXPECT_EQ(le::u64(&b[24]), 0x7u);    // Capability
}

TEST(VirtualExtendedProperties, FaceAuthSetTakesOneSupportedFlag) {
  Scenario scenario = default_scenario();
  scenario.groups[0].sources[kInfrared].face_auth->capability = 0x1 | 0x4;
  Controls c(scenario);
  auto value = *c.controller->get_property_by_extended_id(face_auth_id(1), 40).value->bytes;
  le::put_u64(&value[16], 0x2);
  EXPECT_EQ(c.controller->set_property_by_extended_id(face_auth_id(2), value), SetPropertyStatus::InvalidValue);
  le::put_u64(&value[16], 0x5);
  EXPECT_EQ(c.controller->set_property_by_extended_id(face_auth_id(2), value), SetPropertyStatus::InvalidValue);
  le::put_u64(&value[16], 0x4);
  le::put_u64(&value[32], 0x4);
  EXPECT_EQ(c.controller->set_property_by_extended_id(face_auth_id(2), value), SetPropertyStatus::Success);
  auto read = *c.controller->get_property_by_extended_id(face_auth_id(1), 40).value->bytes;
  EXPECT_EQ(le::u64(&read[16]), 0x4u);
  EXPECT_EQ(le::u64(&read[32]), 0x4u);
  value.pop_back();
  EXPECT_EQ(c.controller->set_property_by_extended_id(face_auth_id(2), value), SetPropertyStatus::InvalidValue);

  auto requests = c.platform.world().copy_records().property_requests;
  ASSERT_EQ(requests.size(), 6u);
  EXPECT_TRUE(requests[3].is_set);
  EXPECT_EQ(requests[3].id, face_auth_id(2));
  EXPECT_EQ(requests[3].status, static_cast<int>(SetPropertyStatus::Success));
}

TEST(VirtualExtendedProperties, LlcEchoesTheRequestHeaderAndKeepsTheValue) {
  Controls c(default_scenario(), kColor);
  auto id = llc_buffer(1);
  auto read = c.controller->get_property_by_extended_id(id, 40);
  ASSERT_EQ(read.status, GetPropertyStatus::Success);
  auto b = *read.value->bytes;
  EXPECT_EQ(std::vector<std::uint8_t>(b.begin(), b.begin() + 24), std::vector<std::uint8_t>(id.begin(), id.begin() + 24));
  EXPECT_EQ(le::u32(&b[24]), 0u);
  EXPECT_EQ(le::u32(&b[32]), 3u);

  auto set = llc_buffer(2);
  le::put_u32(&set[24], 1);
  EXPECT_EQ(c.controller->set_property_by_extended_id(set, set), SetPropertyStatus::Success);
  b = *c.controller->get_property_by_extended_id(id, 40).value->bytes;
  EXPECT_EQ(le::u32(&b[24]), 1u);
}

TEST(VirtualExtendedProperties, AnswersCanBeMadeWrongOnDemand) {
  Scenario scenario = default_scenario();
  auto& source = scenario.groups[0].sources[kInfrared];
  source.face_auth->behaviour.answer_length = 36;
  source.llc->behaviour.get_status = GetPropertyStatus::DeviceNotAvailable;
  source.llc->behaviour.set_status = SetPropertyStatus::UnknownFailure;
  Controls c(scenario);
  auto face = c.controller->get_property_by_extended_id(face_auth_id(1), std::nullopt);
  ASSERT_EQ(face.status, GetPropertyStatus::Success);
  EXPECT_EQ(face.value->bytes->size(), 36u);
  EXPECT_EQ(c.controller->get_property_by_extended_id(llc_buffer(1), 40).status, GetPropertyStatus::DeviceNotAvailable);
  EXPECT_EQ(c.controller->set_property_by_extended_id(llc_buffer(2), llc_buffer(2)), SetPropertyStatus::UnknownFailure);

  c.platform.world().edit_group(testing::default_group_id(), [](GroupModel& g) {
    g.sources[kInfrared].face_auth->behaviour = PropertyBehaviour{};
    g.sources[kInfrared].face_auth->behaviour.answer_not_bytes = true;
  });
  face = c.controller->get_property_by_extended_id(face_auth_id(1), 40);
  EXPECT_FALSE(face.value->bytes.has_value());
  EXPECT_EQ(c.controller->get_property_by_extended_id(face_auth_id(1), 39).status,
            GetPropertyStatus::MaxPropertyValueSizeTooSmall);
}

TEST(VirtualExtendedProperties, AbsentPropertiesAreNotSupported) {
  Controls c(default_scenario(), kColor);  // the colour source has no face-auth control
  EXPECT_EQ(c.controller->get_property_by_extended_id(face_auth_id(1), 40).status, GetPropertyStatus::NotSupported);
  EXPECT_EQ(c.controller->set_property_by_extended_id(face_auth_id(2), std::vector<std::uint8_t>(40)),
            SetPropertyStatus::NotSupported);
  EXPECT_EQ(c.controller->get_property_by_extended_id({1, 2, 3}, 40).status, GetPropertyStatus::NotSupported);
}

TEST(VirtualTypedControls, AbsentControlsAreNull) {
  Controls c;  // infrared: exposure and torch, no ISO, no infrared torch
  EXPECT_NE(c.controller->exposure_control(), nullptr);
  EXPECT_NE(c.controller->torch_control(), nullptr);
  EXPECT_EQ(c.controller->iso_speed_control(), nullptr);
  EXPECT_EQ(c.controller->infrared_torch_control(), nullptr);
}

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

TEST(VirtualTypedControls, ASlowOrFailingSetIsChosenPerCall) {
  Controls c;
  c.platform.world().set_call_fault(PlatformCall::SetControl, {HR_FAIL, {}});
  try {
    c.controller->exposure_control()->set_value(20000);
    ADD_FAILURE() << "set_value succeeded";
  } catch (const PlatformError& e) {
    EXPECT_EQ(e.code(), HR_FAIL);
  }
  EXPECT_EQ(c.controller->exposure_control()->value(), 10000);
}

}  // namespace
}  // namespace vexcap::virtual_camera
