// Unregistering device callbacks while the watcher is inside one of them: the call waits for
// that callback, and none runs once it has answered (the subscription is freed by then).
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "support/library_fixture.h"

namespace vexcap {
namespace {

namespace vc = virtual_camera;
using namespace std::chrono_literals;

class DeviceCallbacksUnregister : public testing::LibraryTest {};

struct Inside {
  std::mutex mutex;
  std::condition_variable changed;
  bool entered = false;
  bool unregistering = false;
  std::atomic<bool> returned{false};
};

int linger_in_added(const wchar_t*, const wchar_t*, void* context, vexcap_device_subscription*) {
  auto* inside = static_cast<Inside*>(context);
  std::unique_lock<std::mutex> lock(inside->mutex);
  inside->entered = true;
  inside->changed.notify_all();
  inside->changed.wait(lock, [&] { return inside->unregistering; });
  lock.unlock();
  // Still busy after the host began to unregister: without the wait, the unregistration
  // answers (and frees the subscription) in this window.
  std::this_thread::sleep_for(100ms);
  inside->returned = true;
  return 0;
}

TEST_F(DeviceCallbacksUnregister, WaitsForTheCallbackInFlight) {
  Inside inside;
  const vexcap_device_callbacks callbacks{linger_in_added, nullptr, nullptr};
  vexcap_device_subscription* subscription = nullptr;
  ASSERT_EQ(vexcap_regiester_for_device_callbacks(&subscription, &callbacks, &inside), 0);

  vc::GroupModel camera = vc::default_scenario().groups.at(0);
  camera.id = L"\\\\?\\USB#VID_F00D&PID_0002#second";
  vc::add_group(camera);
  {
    std::unique_lock<std::mutex> lock(inside.mutex);
    ASSERT_TRUE(inside.changed.wait_for(lock, 5s, [&] { return inside.entered; }));
    inside.unregistering = true;
    inside.changed.notify_all();
  }
  EXPECT_EQ(vexcap_unregiester_device_callbacks(subscription), 0);
  EXPECT_TRUE(inside.returned.load());
}

}  // namespace
}  // namespace vexcap
