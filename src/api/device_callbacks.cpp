#include "api/device_callbacks.h"

#include <memory>
#include <string>

#include "log/log.h"
#include "platform/port.h"

// The handle a host holds: the watcher, its three registrations and the host's callbacks.
struct vexcap_device_subscription {
  std::unique_ptr<vexcap::platform::DeviceWatcher> watcher;
  vexcap::platform::EventToken added_token = 0;
  vexcap::platform::EventToken removed_token = 0;
  vexcap::platform::EventToken updated_token = 0;
  vexcap_device_callbacks callbacks{};
  void* context = nullptr;
};

namespace vexcap::api {

int register_device_callbacks(vexcap_device_subscription** out,
                              const vexcap_device_callbacks* callbacks, void* context) {
  if (out == nullptr) return VEXCAP_E_INVALID_ARG;
  auto subscription = std::make_unique<vexcap_device_subscription>();
  if (callbacks != nullptr) subscription->callbacks = *callbacks;
  subscription->context = context;
  vexcap_device_subscription* self = subscription.get();
  try {
    subscription->watcher = platform::current().create_source_group_watcher();
    platform::DeviceWatcher& watcher = *subscription->watcher;
    subscription->added_token = watcher.add_added([self](const platform::DeviceInformation& device) {
      if (!device.is_enabled || self->callbacks.added == nullptr) return;
      const std::wstring id = device.id.value_or(L"");
      const std::wstring name = device.name.value_or(L"");
      self->callbacks.added(id.c_str(), name.c_str(), self->context, self);
    });
    subscription->removed_token = watcher.add_removed([self](const platform::DeviceInformationUpdate& update) {
      if (self->callbacks.removed != nullptr) self->callbacks.removed(update.id.c_str(), self->context, self);
    });
    subscription->updated_token = watcher.add_updated([self](const platform::DeviceInformationUpdate& update) {
      if (self->callbacks.updated != nullptr) self->callbacks.updated(update.id.c_str(), self->context, self);
    });
    watcher.start();
  } catch (const platform::PlatformError& error) {
    // Never across the C boundary: the host gets a failure code instead.
    VXLOG('E', "exception: %ws", error.message().c_str());
    return VEXCAP_E_FAIL;
  }
  *out = subscription.release();
  return VEXCAP_OK;
}

int unregister_device_callbacks(vexcap_device_subscription* subscription) {
  if (subscription == nullptr) return VEXCAP_E_INVALID_ARG;
  std::unique_ptr<vexcap_device_subscription> owned(subscription);
  try {
    platform::DeviceWatcher& watcher = *owned->watcher;
    watcher.remove_added(owned->added_token);
    watcher.remove_removed(owned->removed_token);
    watcher.remove_updated(owned->updated_token);
    watcher.stop();  // no handler runs after this
  } catch (const platform::PlatformError& error) {
    VXLOG('E', "exception: %ws", error.message().c_str());
    return VEXCAP_E_FAIL;
  }
  return VEXCAP_OK;
}

}  // namespace vexcap::api
