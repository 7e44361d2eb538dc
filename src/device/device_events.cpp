#include "device/device_events.h"

#include "controls/extended_properties.h"
#include "controls/rgb_status_registration.h"
#include "device/device.h"

namespace vexcap::device {

hresult register_exclusive_control_status(Device& device, vexcap_excl_ctrl_status_callback callback,
                                          void* context) {
  return device.exclusive_client().register_exclusive_control_status(callback, context);
}

hresult unregister_exclusive_control_status(Device& device) {
  return device.exclusive_client().unregister_exclusive_control_status();
}

hresult register_rgb_status(Device& device, vexcap_rgb_status_callback callback, void* context) {
  capture::CaptureClient& client = device.exclusive_client();
  const auto source = client.frame_source();
  const bool infrared = source && source->info().kind == platform::SourceKind::Infrared;
  return controls::register_rgb_status_notifier(
      client.extension_unit(), client.initialized(), infrared,
      [&client](std::uint8_t* buffer) {
        return controls::get_face_auth_mode(client.property_target(), buffer);
      },
      callback, context);
}

hresult unregister_rgb_status(Device& device) {
  controls::unregister_rgb_status_notifier(device.exclusive_client().extension_unit());
  return HR_OK;
}

hresult register_rgb_stopped(Device& device, vexcap_rgb_stopped_callback callback, void* context) {
  return device.exclusive_client().register_rgb_stopped(callback, context);
}

hresult unregister_rgb_stopped(Device& device) { return device.exclusive_client().unregister_rgb_stopped(); }

}  // namespace vexcap::device
