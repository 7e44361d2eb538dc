// How a capture session begins and ends on the camera system: the privacy setting, a capture
// spent by a failed initialization, Close against a plain release, the objects of a removed
// camera, and requests recorded only on demand.
#include <gtest/gtest.h>

#include <thread>

#include "platform/virtual/known_ids.h"
#include "platform/virtual/le_bytes.h"
#include "virtual_camera/virtual_test_support.h"

namespace vexcap::virtual_camera {
namespace {

using platform::PlatformError;
using platform::SharingMode;
using testing::default_group_id;

constexpr std::size_t kInfrared = 0;

hresult error_of(const std::function<void()>& call) {
  try {
    call();
  } catch (const PlatformError& error) {
    return error.code();
  }
  return HR_OK;
}

platform::CaptureSettings settings_for(VirtualPlatform& platform, SharingMode mode) {
  platform::CaptureSettings settings;
  settings.source_group = platform.find_all_source_groups().at(0);
  settings.sharing_mode = mode;
  return settings;
}

TEST(VirtualSessions, PrivacyOffDeniesAccessAndTheFailedCaptureIsSpent) {
  VirtualPlatform platform;
  platform.world().set_camera_access_allowed(false);
  auto capture = platform.create_capture();
  const auto settings = settings_for(platform, SharingMode::SharedReadOnly);
  EXPECT_EQ(error_of([&] { capture->initialize(settings); }), HR_ACCESSDENIED);

  platform.world().set_camera_access_allowed(true);
  // The same MediaCapture cannot try again; a new one can.
  EXPECT_EQ(error_of([&] { capture->initialize(settings); }), ids::kIllegalMethodCall);
  auto fresh = platform.create_capture();
  EXPECT_EQ(error_of([&] { fresh->initialize(settings); }), HR_OK);
  EXPECT_EQ(platform.world().session_count(default_group_id(), std::nullopt), 1);
}

TEST(VirtualSessions, ACameraHeldByAnotherApplicationSpendsAnExclusiveCapture) {
  VirtualPlatform platform;
  ASSERT_EQ(platform.world().other_app_open_exclusive(default_group_id()), HR_OK);
  auto capture = platform.create_capture();
  const auto settings = settings_for(platform, SharingMode::ExclusiveControl);
  EXPECT_EQ(error_of([&] { capture->initialize(settings); }), ids::kHardwareInUse);
  platform.world().set_held_by_other_app(default_group_id(), false);
  EXPECT_EQ(error_of([&] { capture->initialize(settings); }), ids::kIllegalMethodCall);
}

TEST(VirtualSessions, CloseFreesExclusiveControlAtOnceAReleaseAMomentLater) {
  VirtualPlatform platform;
  World& world = platform.world();
  auto closed = testing::open_session(platform, SharingMode::ExclusiveControl);
  auto source = closed->frame_sources().at(kInfrared);
  closed->close();
  EXPECT_EQ(world.session_count(default_group_id(), std::nullopt), 0);
  EXPECT_EQ(error_of([&] { closed->frame_sources(); }), ids::kClosed);
  EXPECT_EQ(error_of([&] { source->info(); }), ids::kClosed);
  ASSERT_EQ(world.other_app_open_exclusive(default_group_id()), HR_OK);
  world.set_held_by_other_app(default_group_id(), false);

  // Released without Close: the platform tears the session down on its own, a little later.
  auto released = testing::open_session(platform, SharingMode::ExclusiveControl);
  released.reset();
  const auto released_at = std::chrono::steady_clock::now();
  EXPECT_EQ(world.other_app_open_exclusive(default_group_id()), ids::kHardwareInUse);
  // A little past the linger: sleeps end on the platform's timer ticks.
  std::this_thread::sleep_until(released_at + World::kReleaseLinger + std::chrono::milliseconds(50));
  EXPECT_EQ(world.other_app_open_exclusive(default_group_id()), HR_OK);

  // A shared session does not stand in the other application's way.
  world.set_held_by_other_app(default_group_id(), false);
  auto shared = testing::open_session(platform, SharingMode::SharedReadOnly);
  EXPECT_EQ(world.other_app_open_exclusive(default_group_id()), HR_OK);
}

TEST(VirtualSessions, EveryObjectOfARemovedCameraAnswersDisconnected) {
  VirtualPlatform platform;
  auto capture = testing::open_session(platform, SharingMode::ExclusiveControl);
  auto source = capture->frame_sources().at(kInfrared);
  auto controller = source->controller();
  auto exposure = controller->exposure_control();
  ASSERT_NE(exposure, nullptr);
  platform.world().remove_group(default_group_id());

  const std::vector<std::uint8_t> face_auth = le::ks_property(ids::kExtendedCameraControl, ids::kExtendedFaceAuthMode, ids::kPropGet);
  const std::vector<std::function<void()>> calls = {
      [&] { capture->frame_sources(); },
      [&] { capture->create_frame_reader(source, std::nullopt); },
      [&] { capture->add_failed([](const platform::CaptureFailure&) {}); },
      [&] { source->info(); },
      [&] { source->supported_formats(); },
      [&] { source->current_format(); },
      [&] { source->controller(); },
      [&] { source->exclusive_control_status(); },
      [&] { controller->get_property_by_extended_id(face_auth, std::nullopt); },
      [&] { controller->exposure_control(); },
      [&] { exposure->value(); },
      [&] { exposure->set_value(20000); },
  };
  for (std::size_t i = 0; i < calls.size(); ++i) EXPECT_EQ(error_of(calls[i]), HR_DISCONNECTED) << "call " << i;
  EXPECT_EQ(error_of([&] { capture->close(); }), HR_OK);
  EXPECT_EQ(platform.world().session_count(default_group_id(), std::nullopt), 0);
}

TEST(VirtualSessions, RequestsAreRecordedOnlyWhileATestAsksForThem) {
  VirtualPlatform platform;
  auto capture = testing::open_session(platform, SharingMode::ExclusiveControl);
  auto exposure = capture->frame_sources().at(kInfrared)->controller()->exposure_control();
  exposure->set_value(20000);
  EXPECT_TRUE(platform.world().copy_records().applied_controls.empty());
  platform.world().set_recording(true);
  exposure->set_value(30000);
  ASSERT_EQ(platform.world().copy_records().applied_controls.size(), 1u);
  EXPECT_EQ(platform.world().copy_records().applied_controls[0].value, 30000);
}

}  // namespace
}  // namespace vexcap::virtual_camera
