// Camera arrival, removal and update reach the host through its device callbacks.
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include "support/library_fixture.h"
#include "support/log_capture.h"

namespace vexcap {
namespace {

namespace vc = virtual_camera;

// What the host's callbacks saw, on the watcher's thread.
struct Heard {
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<std::wstring> events;
  vexcap_device_subscription* subscription = nullptr;
  bool same_subscription = true;

  void add(std::wstring event, vexcap_device_subscription* from) {
    std::lock_guard<std::mutex> lock(mutex);
    events.push_back(std::move(event));
    same_subscription = same_subscription && from == subscription;
    changed.notify_all();
  }
  std::vector<std::wstring> wait_for(std::size_t count) {
    std::unique_lock<std::mutex> lock(mutex);
    changed.wait_for(lock, std::chrono::seconds(5), [&] { return events.size() >= count; });
    return events;
  }
};

int on_added(const wchar_t* id, const wchar_t* name, void* context, vexcap_device_subscription* s) {
  static_cast<Heard*>(context)->add(std::wstring(L"added ") + id + L" " + name, s);
  return 0;
}
int on_removed(const wchar_t* id, void* context, vexcap_device_subscription* s) {
  static_cast<Heard*>(context)->add(std::wstring(L"removed ") + id, s);
  return 0;
}
int on_updated(const wchar_t* id, void* context, vexcap_device_subscription* s) {
  static_cast<Heard*>(context)->add(std::wstring(L"updated ") + id, s);
  return 0;
}

vc::GroupModel camera(const std::wstring& id, bool enabled) {
  vc::GroupModel group;
  group.id = id;
  group.display_name = L"Cam " + id;
  group.enabled = enabled;
  vc::SourceModel source;
  source.kind = platform::SourceKind::Infrared;
  group.sources.push_back(source);
  return group;
}

class DeviceCallbacks : public testing::LibraryTest {};

TEST_F(DeviceCallbacks, ArrivalRemovalAndUpdateReachTheHostButDisabledCamerasDoNot) {
  vc::Scenario empty;
  vc::use_scenario(empty);
  Heard heard;
  const vexcap_device_callbacks callbacks{on_added, on_removed, on_updated};
  {
    std::lock_guard<std::mutex> lock(heard.mutex);  // the handle is known before any event
    ASSERT_EQ(vexcap_regiester_for_device_callbacks(&heard.subscription, &callbacks, &heard), 0);
  }
  ASSERT_NE(heard.subscription, nullptr);

  vc::add_group(camera(L"disabled", false));
  vc::add_group(camera(L"one", true));
  vc::rename_group(L"one", L"renamed");
  vc::set_group_enabled(L"one", false);
  vc::remove_group(L"one");
  const auto events = heard.wait_for(4);
  EXPECT_EQ(events, (std::vector<std::wstring>{L"added one Cam one", L"updated one", L"updated one", L"removed one"}));
  EXPECT_TRUE(heard.same_subscription);

  EXPECT_EQ(vexcap_unregiester_device_callbacks(heard.subscription), 0);
  vc::add_group(camera(L"late", true));
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(heard.wait_for(4).size(), 4u);  // nothing after unregistration
}

TEST_F(DeviceCallbacks, CamerasPresentAtRegistrationArriveFirst) {
  vc::Scenario scenario;
  scenario.groups = {camera(L"present", true), camera(L"off", false)};
  vc::use_scenario(scenario);
  Heard heard;
  const vexcap_device_callbacks callbacks{on_added, nullptr, nullptr};
  {
    std::lock_guard<std::mutex> lock(heard.mutex);
    ASSERT_EQ(vexcap_regiester_for_device_callbacks(&heard.subscription, &callbacks, &heard), 0);
  }
  EXPECT_EQ(heard.wait_for(1), std::vector<std::wstring>{L"added present Cam present"});
  vc::remove_group(L"present");  // no removed callback: none given
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(vexcap_unregiester_device_callbacks(heard.subscription), 0);
  EXPECT_EQ(heard.wait_for(1).size(), 1u);
}

TEST_F(DeviceCallbacks, AWatcherThatCannotStartIsAFailureNotAnException) {
  // A platform error, and a platform out of memory: neither crosses the C boundary.
  vc::CallFault out_of_memory;
  out_of_memory.out_of_memory = true;
  for (const vc::CallFault& fault : {vc::CallFault{HR_FAIL, {}}, out_of_memory}) {
    testing::LogCapture log;
    vc::set_call_fault(vc::PlatformCall::StartWatcher, fault);
    vexcap_device_subscription* subscription = nullptr;
    const vexcap_device_callbacks callbacks{on_added, on_removed, on_updated};
    EXPECT_EQ(vexcap_regiester_for_device_callbacks(&subscription, &callbacks, nullptr), VEXCAP_E_FAIL);
    EXPECT_EQ(subscription, nullptr);
    EXPECT_TRUE(log.contains(fault.out_of_memory ? "E: exception: std::bad_alloc"
                                                 : "E: exception: The virtual camera failed this call on demand."));
  }
}

}  // namespace
}  // namespace vexcap
