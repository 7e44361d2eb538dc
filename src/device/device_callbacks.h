// Device callbacks: camera arrival, removal and update, reported by a platform device watcher
// on its own thread. Registered directly on the caller's thread, without the request thread.
#pragma once

#include "vexcap/vexcap.h"

namespace vexcap::device {

int register_device_callbacks(vexcap_device_subscription** subscription,
                              const vexcap_device_callbacks* callbacks, void* context);
int unregister_device_callbacks(vexcap_device_subscription* subscription);

}  // namespace vexcap::device
