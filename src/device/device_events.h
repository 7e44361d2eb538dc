// The device events that live on a device's exclusive client, on the request thread:
// exclusive-control status (1043 / 1044), RGB status (1045 / 1046) and RGB stopped
// (1049 / 1050). The callbacks fire on platform and worker threads, never on this one.
#pragma once

#include "common/hresult.h"
#include "vexcap/vexcap.h"

namespace vexcap::device {

class Device;

hresult register_exclusive_control_status(Device& device, vexcap_excl_ctrl_status_callback callback,
                                          void* context);
hresult unregister_exclusive_control_status(Device& device);
// Blocks until the camera reports a zero RGB status (and, for an infrared reader, a settled
// face-auth mode), then starts the extension unit's notifier.
hresult register_rgb_status(Device& device, vexcap_rgb_status_callback callback, void* context);
// Waits for the notifier's thread to end.
hresult unregister_rgb_status(Device& device);
hresult register_rgb_stopped(Device& device, vexcap_rgb_stopped_callback callback, void* context);
hresult unregister_rgb_stopped(Device& device);

}  // namespace vexcap::device
