// Sessions on one camera: shared sessions only read, and every session hears when another
// application takes or returns exclusive control.
#include <gtest/gtest.h>

#include "platform/virtual/known_ids.h"
#include "platform/virtual/le_bytes.h"
#include "virtual_camera/virtual_test_support.h"

namespace vexcap::virtual_camera {
namespace {

using platform::ExclusiveControlStatus;
using platform::PlatformError;
using platform::SharingMode;
using testing::Collected;
using testing::open_session;

constexpr std::size_t kInfrared = 0;

hresult initialize_error(VirtualPlatform& platform, SharingMode mode) {
  try {
    open_session(platform, mode);
  } catch (const PlatformError& e) {
    return e.code();
  }
  return HR_OK;
}

TEST(VirtualSharingRules, SharedSessionReadsButCannotChangeAnything) {
  VirtualPlatform platform;
  platform.world().set_recording(true);
  auto shared = open_session(platform, SharingMode::SharedReadOnly);
  auto source = shared->frame_sources().at(kInfrared);

  EXPECT_EQ(source->supported_formats().size(), 5u);
  try {
    source->set_format(source->supported_formats().at(1));
    ADD_FAILURE() << "set_format succeeded in shared mode";
  } catch (const PlatformError& e) {
    EXPECT_EQ(e.code(), HR_ACCESSDENIED);
  }
  auto exposure = source->controller()->exposure_control();
  ASSERT_NE(exposure, nullptr);
  EXPECT_EQ(exposure->value(), 10000);
  EXPECT_THROW(exposure->set_value(20000), PlatformError);

  std::vector<std::uint8_t> id = le::ks_property(ids::kExtendedCameraControl, ids::kExtendedFaceAuthMode, ids::kPropSet);
  std::vector<std::uint8_t> value(40, 0);
  value[16] = 0x2;
  EXPECT_EQ(source->controller()->set_property_by_extended_id(id, value), platform::SetPropertyStatus::NotInControl);
  EXPECT_TRUE(platform.world().copy_records().applied_controls.empty());
}

TEST(VirtualSharingRules, AnotherApplicationTakingControlPreemptsAndRefusesExclusiveSessions) {
  VirtualPlatform platform;
  auto shared = open_session(platform, SharingMode::SharedReadOnly);
  auto exclusive = open_session(platform, SharingMode::ExclusiveControl);
  Collected<platform::ExclusiveControlChange> changes;
  Collected<platform::CaptureFailure> shared_failures, exclusive_failures;
  shared->add_exclusive_control_status_changed([&](const auto& change) { changes.add(change); });
  shared->add_failed([&](const auto& failure) { shared_failures.add(failure); });
  exclusive->add_failed([&](const auto& failure) { exclusive_failures.add(failure); });
  auto source = shared->frame_sources().at(kInfrared);

  platform.world().set_held_by_other_app(testing::default_group_id(), true);
  EXPECT_EQ(source->exclusive_control_status(), ExclusiveControlStatus::SharedReadOnlyAvailable);
  EXPECT_EQ(initialize_error(platform, SharingMode::ExclusiveControl), ids::kHardwareInUse);
  EXPECT_EQ(initialize_error(platform, SharingMode::SharedReadOnly), HR_OK);
  auto failed = exclusive_failures.wait_for(1);
  ASSERT_EQ(failed.size(), 1u);
  EXPECT_EQ(failed[0].code, ids::kPreempted);

  platform.world().set_held_by_other_app(testing::default_group_id(), false);
  auto seen = changes.wait_for(2);
  ASSERT_EQ(seen.size(), 2u);
  EXPECT_EQ(seen[0].status, ExclusiveControlStatus::SharedReadOnlyAvailable);
  EXPECT_EQ(seen[1].status, ExclusiveControlStatus::ExclusiveControlAvailable);
  EXPECT_EQ(seen[0].device_id, testing::default_group_id());
  EXPECT_EQ(source->exclusive_control_status(), ExclusiveControlStatus::ExclusiveControlAvailable);
  EXPECT_EQ(initialize_error(platform, SharingMode::ExclusiveControl), HR_OK);
  EXPECT_TRUE(shared_failures.now().empty());
}

}  // namespace
}  // namespace vexcap::virtual_camera
