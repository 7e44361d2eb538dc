#include "device/device_callbacks.h"

#include <exception>
#include <memory>
#include <mutex>
#include <string>

#include "common/reentrant_mutex.h"
#include "log/log.h"
#include "platform/port.h"

namespace vexcap::device {
namespace {

// What the watcher's handlers reach: the host's callbacks behind a gate. A handler already
// running when the host unregisters (a removed handler does not stop one in flight) holds the
// gate, so unregistration waits for it; after that the gate stays shut and the handler never
// touches the freed subscription. Recursive: a callback may unregister its own subscription.
class CallbackGate {
 public:
  CallbackGate(const vexcap_device_callbacks& callbacks, void* context,
               vexcap_device_subscription* subscription)
      : callbacks_(callbacks), context_(context), subscription_(subscription) {}

  template <typename Call>
  void pass(Call call) {
    std::lock_guard<ReentrantMutex> lock(mutex_);
    if (open_) call(callbacks_, context_, subscription_);
  }
  void shut() {
    std::lock_guard<ReentrantMutex> lock(mutex_);
    open_ = false;
  }

 private:
  ReentrantMutex mutex_;
  bool open_ = true;  // guarded by mutex_
  const vexcap_device_callbacks callbacks_;
  void* const context_;
  vexcap_device_subscription* const subscription_;
};

}  // namespace
}  // namespace vexcap::device

// The handle a host holds: the watcher, its three registrations and the host's callbacks.
struct vexcap_device_subscription {
  std::unique_ptr<vexcap::platform::DeviceWatcher> watcher;
  vexcap::platform::EventToken added_token = 0;
  vexcap::platform::EventToken removed_token = 0;
  vexcap::platform::EventToken updated_token = 0;
  std::shared_ptr<vexcap::device::CallbackGate> gate;  // shared with the handlers
};

namespace vexcap::device {

int register_device_callbacks(vexcap_device_subscription** out, const vexcap_device_callbacks* callbacks,
                              void* context) {
  if (out == nullptr) return VEXCAP_E_INVALID_ARG;
  auto subscription = std::make_unique<vexcap_device_subscription>();
  subscription->gate = std::make_shared<CallbackGate>(
      callbacks != nullptr ? *callbacks : vexcap_device_callbacks{}, context, subscription.get());
  const std::shared_ptr<CallbackGate> gate = subscription->gate;
  try {
    subscription->watcher = platform::current().create_source_group_watcher();
    platform::DeviceWatcher& watcher = *subscription->watcher;
    subscription->added_token = watcher.add_added([gate](const platform::DeviceInformation& device) {
      if (!device.is_enabled) return;
      const std::wstring id = device.id.value_or(L"");
      const std::wstring name = device.name.value_or(L"");
      gate->pass([&](const vexcap_device_callbacks& host, void* context, vexcap_device_subscription* self) {
        if (host.added != nullptr) host.added(id.c_str(), name.c_str(), context, self);
      });
    });
    subscription->removed_token = watcher.add_removed([gate](
                                                          const platform::DeviceInformationUpdate& update) {
      gate->pass([&](const vexcap_device_callbacks& host, void* context, vexcap_device_subscription* self) {
        if (host.removed != nullptr) host.removed(update.id.c_str(), context, self);
      });
    });
    subscription->updated_token = watcher.add_updated([gate](
                                                          const platform::DeviceInformationUpdate& update) {
      gate->pass([&](const vexcap_device_callbacks& host, void* context, vexcap_device_subscription* self) {
        if (host.updated != nullptr) host.updated(update.id.c_str(), context, self);
      });
    });
    watcher.start();
  } catch (const platform::PlatformError& error) {
    // Never across the C boundary: the host gets a failure code instead.
    gate->shut();
    VXLOG('E', "exception: %ws", error.message().c_str());
    return VEXCAP_E_FAIL;
  } catch (const std::exception& error) {
    gate->shut();  // a watcher already running reaches no callback of this failed registration
    VXLOG('E', "exception: %s", error.what());
    return VEXCAP_E_FAIL;
  }
  *out = subscription.release();
  return VEXCAP_OK;
}

int unregister_device_callbacks(vexcap_device_subscription* subscription) {
  if (subscription == nullptr) return VEXCAP_E_INVALID_ARG;
  std::unique_ptr<vexcap_device_subscription> owned(subscription);
  owned->gate->shut();  // waits for a callback in flight; none starts afterwards
  try {
    platform::DeviceWatcher& watcher = *owned->watcher;
    watcher.remove_added(owned->added_token);
    watcher.remove_removed(owned->removed_token);
    watcher.remove_updated(owned->updated_token);
    watcher.stop();  // no handler runs after this
  } catch (const platform::PlatformError& error) {
    VXLOG('E', "exception: %ws", error.message().c_str());
    return VEXCAP_E_FAIL;
  } catch (const std::exception& error) {
    VXLOG('E', "exception: %s", error.what());
    return VEXCAP_E_FAIL;
  }
  return VEXCAP_OK;
}

}  // namespace vexcap::device
