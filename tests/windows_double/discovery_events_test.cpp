// Discovery and device events through the product adapter on the double: the enumeration, the
// device watcher and the capture's status events, raised on the camera's own threads.
#include <atomic>
#include <future>

#include "double_test.h"

namespace vexcap::double_tests {
namespace {

using DiscoveryAndEvents = DoubleTest;

TEST_F(DiscoveryAndEvents, QueriesAnswerForTheDefaultCamera) {
  ASSERT_EQ(vexcap_init(), VEXCAP_OK);
  std::uint8_t capabilities[VEXCAP_CAPABILITY_COUNT] = {};
  ASSERT_EQ(vexcap_get_device_capabilities(camera_id().c_str(), capabilities), VEXCAP_OK);
  EXPECT_EQ(capabilities[VEXCAP_CAPABILITY_COLOR], 1);
  EXPECT_EQ(capabilities[VEXCAP_CAPABILITY_INFRARED], 1);
  EXPECT_EQ(capabilities[VEXCAP_CAPABILITY_DEPTH], 0);
  std::uint32_t type = 0;
  ASSERT_EQ(vexcap_get_source_group_type(&type), VEXCAP_OK);
  EXPECT_EQ(type, VEXCAP_GROUP_TYPE_USB);
  EXPECT_EQ(vexcap_is_vidpid_used_by_device(camera_id().c_str(), L"VID_F00D", L"PID_CAFE"), 1);
  EXPECT_EQ(vexcap_is_vidpid_used_by_device(camera_id().c_str(), L"VID_F00D", L"PID_0BAD"), 0);
  std::uint8_t locations[VEXCAP_PANEL_COUNT] = {};
  ASSERT_EQ(vexcap_get_device_locations(L"vid_f00d", locations), VEXCAP_OK);
  EXPECT_EQ(locations[VEXCAP_PANEL_FRONT], 1);
  std::uint32_t panel = 0;
  ASSERT_EQ(vexcap_get_targeted_location(&panel), VEXCAP_OK);
  EXPECT_EQ(panel, std::uint32_t(VEXCAP_PANEL_FRONT));
}

struct Heard {
  std::mutex mutex;
  std::vector<std::wstring> added, removed;
};

int on_added(const wchar_t* id, const wchar_t*, void* context, vexcap_device_subscription*) {
  auto* heard = static_cast<Heard*>(context);
  std::lock_guard lock(heard->mutex);
  heard->added.push_back(id);
  return 0;
}

int on_removed(const wchar_t* id, void* context, vexcap_device_subscription*) {
  auto* heard = static_cast<Heard*>(context);
  std::lock_guard lock(heard->mutex);
  heard->removed.push_back(id);
  return 0;
}

int on_updated(const wchar_t*, void*, vexcap_device_subscription*) { return 0; }

TEST_F(DiscoveryAndEvents, DeviceCallbacksHearArrivalAndRemoval) {
  ASSERT_EQ(vexcap_init(), VEXCAP_OK);
  Heard heard;
  vexcap_device_callbacks callbacks{on_added, on_removed, on_updated};
  vexcap_device_subscription* subscription = nullptr;
  ASSERT_EQ(vexcap_regiester_for_device_callbacks(&subscription, &callbacks, &heard), VEXCAP_OK);
  ASSERT_TRUE(wait_until([&] {
    std::lock_guard lock(heard.mutex);
    return heard.added.size() == 1;
  }));
  vc::remove_group(camera_id());
  ASSERT_TRUE(wait_until([&] {
    std::lock_guard lock(heard.mutex);
    return heard.removed.size() == 1;
  }));
  vc::add_group(vc::default_scenario().groups.at(0));
  ASSERT_TRUE(wait_until([&] {
    std::lock_guard lock(heard.mutex);
    return heard.added.size() == 2;
  }));
  EXPECT_EQ(vexcap_unregiester_device_callbacks(subscription), VEXCAP_OK);
  std::lock_guard lock(heard.mutex);
  EXPECT_EQ(heard.added, (std::vector<std::wstring>{camera_id(), camera_id()}));
  EXPECT_EQ(heard.removed, std::vector<std::wstring>{camera_id()});
}

struct Status {
  std::mutex mutex;
  std::vector<int> statuses;
};

void on_status(const wchar_t*, std::uint8_t status, bool, void* context) {
  auto* heard = static_cast<Status*>(context);
  std::lock_guard lock(heard->mutex);
  heard->statuses.push_back(status);
}

TEST_F(DiscoveryAndEvents, AnotherApplicationTakingTheCameraIsHeard) {
  vexcap_device* device = start_and_open(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(device, nullptr);
  Status heard;
  ASSERT_EQ(vexcap_register_for_excl_ctrl_status_event(device, on_status, &heard), VEXCAP_OK);
  vc::set_held_by_other_app(camera_id(), true);
  ASSERT_TRUE(wait_until([&] {
    std::lock_guard lock(heard.mutex);
    return !heard.statuses.empty();
  }));
  EXPECT_EQ(heard.statuses.front(), 1);  // shared read-only available
  EXPECT_EQ(vexcap_unregister_for_excl_ctrl_status_event(device), VEXCAP_OK);
  vc::set_held_by_other_app(camera_id(), false);
  EXPECT_EQ(vexcap_device_close(device), VEXCAP_OK);
}

struct Flags {
  std::mutex mutex;
  std::vector<bool> values;
};

void on_flag(bool value, void* context) {
  auto* heard = static_cast<Flags*>(context);
  std::lock_guard lock(heard->mutex);
  heard->values.push_back(value);
}

// The RGB status is the extension unit's control 15, read through IKsControl.
TEST_F(DiscoveryAndEvents, RgbStatusChangesReachTheHost) {
  vexcap_device* device = start_and_open(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(device, nullptr);
  Flags heard;
  ASSERT_EQ(vexcap_register_for_rgb_status_event(device, on_flag, &heard), VEXCAP_OK);
  vc::edit_ks(camera_id(), [](vc::KsDeviceModel& ks) { ks.rgb_status = 1; });
  ASSERT_TRUE(wait_until([&] {
    std::lock_guard lock(heard.mutex);
    return !heard.values.empty();
  }));
  EXPECT_EQ(heard.values.front(), true);
  vexcap_property status{VEXCAP_PROP_RGB_STATUS, 0};
  EXPECT_EQ(vexcap_get_dev_property(device, &status), VEXCAP_OK);
  EXPECT_EQ(status.value, 1u);
  EXPECT_EQ(vexcap_unregister_for_rgb_status_event(device), VEXCAP_OK);
  EXPECT_EQ(vexcap_device_close(device), VEXCAP_OK);
}

// The worker probes the camera with an exclusive session of its own; a frame its reader gets
// means the colour stream is free.
TEST_F(DiscoveryAndEvents, RgbStoppedIsHeardOnceTheWorkersReaderGetsAFrame) {
  vexcap_device* device = start_and_open(VEXCAP_STREAM_MODE_SHARED);
  ASSERT_NE(device, nullptr);
  Flags heard;
  ASSERT_EQ(vexcap_register_for_rgb_stopped_event(device, on_flag, &heard), VEXCAP_OK);
  ASSERT_TRUE(wait_until([&] {
    next_frame();
    std::lock_guard lock(heard.mutex);
    return !heard.values.empty();
  }, 15000ms));
  EXPECT_EQ(heard.values, std::vector<bool>{true});
  EXPECT_EQ(vexcap_unregister_for_rgb_stopped_event(device), VEXCAP_OK);
  EXPECT_EQ(vexcap_device_close(device), VEXCAP_OK);
}

}  // namespace
}  // namespace vexcap::double_tests
