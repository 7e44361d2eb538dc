// The device events that live on a device's exclusive client, on the request thread:
// exclusive-control status (1043 / 1044), RGB status (1045 / 1046) and RGB stopped
// (1049 / 1050). The callbacks fire on platform and worker threads, never on this one.
#pragma once

#include <cstdint>

#include "common/hresult.h"

namespace vexcap::api {

class Device;

// `callback_args` is the registration's CallbackArgs (unused by the unregistrations).
hresult run_device_event(std::uint32_t message, Device& device, std::uintptr_t callback_args);

}  // namespace vexcap::api
