// The device watcher hears of devices present at start and of every later change, on a
// thread of its own; sessions on a device that goes fail.
#include <gtest/gtest.h>

#include <thread>

#include "platform/virtual/known_ids.h"
#include "virtual_camera/virtual_test_support.h"

namespace vexcap::virtual_camera {
namespace {

using testing::Collected;

struct Event {
  char kind;  // 'A'dded, 'R'emoved, 'U'pdated
  std::wstring id;
  bool enabled = true;
  std::thread::id thread;
};

struct Watching {
  Watching() : watcher(platform.create_source_group_watcher()) {
    watcher->add_added([&](const platform::DeviceInformation& info) {
      events.add({'A', info.id.value_or(L""), info.is_enabled, std::this_thread::get_id()});
    });
    watcher->add_removed([&](const platform::DeviceInformationUpdate& u) { events.add({'R', u.id, true, std::this_thread::get_id()}); });
    watcher->add_updated([&](const platform::DeviceInformationUpdate& u) { events.add({'U', u.id, true, std::this_thread::get_id()}); });
  }
  VirtualPlatform platform;
  Collected<Event> events;
  std::unique_ptr<platform::DeviceWatcher> watcher;
};

GroupModel software_group() {
  GroupModel group = default_scenario().groups[0];
  group.id = L"\\\\?\\SWD#VIRTUAL#{e5323777-f976-4f5b-9b55-b94699c46e44}";
  group.ks.interfaces.clear();
  return group;
}

TEST(VirtualDeviceWatcher, ReportsPresentDevicesThenChangesInOrder) {
  Watching w;
  w.watcher->start();
  const std::wstring usb = testing::default_group_id();
  const std::wstring swd = *software_group().id;
  w.platform.world().add_group(software_group());
  w.platform.world().rename_group(usb, L"Renamed");
  w.platform.world().set_group_enabled(swd, false);
  w.platform.world().remove_group(usb);

  auto seen = w.events.wait_for(5);
  ASSERT_EQ(seen.size(), 5u);
  std::vector<std::pair<char, std::wstring>> order;
  for (auto& e : seen) order.emplace_back(e.kind, e.id);
  std::vector<std::pair<char, std::wstring>> expected = {{'A', usb}, {'A', swd}, {'U', usb}, {'U', swd}, {'R', usb}};
  EXPECT_EQ(order, expected);
  EXPECT_TRUE(seen[0].thread != std::this_thread::get_id());
}

TEST(VirtualDeviceWatcher, DisabledDevicesArriveMarkedDisabledAndAreNotEnumerated) {
  Watching w;
  GroupModel disabled = software_group();
  disabled.enabled = false;
  w.platform.world().add_group(disabled);
  w.watcher->start();
  auto seen = w.events.wait_for(2);
  ASSERT_EQ(seen.size(), 2u);
  EXPECT_FALSE(seen[1].enabled);
  EXPECT_EQ(w.platform.find_all_source_groups().size(), 1u);
}

TEST(VirtualDeviceWatcher, StoppedWatcherHearsNothingAndCannotStartTwice) {
  Watching w;
  w.watcher->start();
  EXPECT_THROW(w.watcher->start(), platform::PlatformError);
  w.events.wait_for(1);
  w.watcher->stop();
  w.platform.world().add_group(software_group());
  EXPECT_EQ(w.events.wait_for(2, std::chrono::milliseconds(50)).size(), 1u);
}

TEST(VirtualDeviceWatcher, SessionsOnARemovedDeviceFail) {
  VirtualPlatform platform;
  auto capture = testing::open_session(platform, platform::SharingMode::SharedReadOnly);
  Collected<platform::CaptureFailure> failures;
  capture->add_failed([&](const platform::CaptureFailure& f) { failures.add(f); });
  platform.world().set_group_enabled(testing::default_group_id(), false);
  auto seen = failures.wait_for(1);
  ASSERT_EQ(seen.size(), 1u);
  EXPECT_EQ(seen[0].code, ids::kDeviceInvalidated);
}

}  // namespace
}  // namespace vexcap::virtual_camera
