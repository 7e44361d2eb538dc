#include "api/device_events.h"

#include "api/device.h"
#include "api/messages.h"
#include "api/request_args.h"
#include "controls/extended_properties.h"
#include "controls/rgb_status_registration.h"

namespace vexcap::api {

namespace {

template <typename Callback>
Callback callback_of(std::uintptr_t callback_args) {
  return reinterpret_cast<Callback>(from_param<CallbackArgs>(callback_args)->callback);
}

void* context_of(std::uintptr_t callback_args) {
  return from_param<CallbackArgs>(callback_args)->context;
}

// Blocks until the camera reports a zero RGB status (and, for an infrared reader, a settled
// face-auth mode), then starts the extension unit's notifier.
hresult register_rgb_status(client::VexCap& client, std::uintptr_t callback_args) {
  const auto source = client.frame_source();
  const bool infrared = source && source->info().kind == platform::SourceKind::Infrared;
  return controls::register_rgb_status_notifier(
      client.extension_unit(), client.initialized(), infrared,
      [&client](std::uint8_t* buffer) { return controls::get_face_auth_mode(client.property_target(), buffer); },
      callback_of<vexcap_rgb_status_callback>(callback_args), context_of(callback_args));
}

}  // namespace

hresult run_device_event(std::uint32_t message, Device& device, std::uintptr_t callback_args) {
  const std::shared_ptr<client::VexCap>& exclusive = device.exclusive_client();
  if (!exclusive) return HR_POINTER;
  switch (message) {
    case kMsgRegisterExclusiveControl:
      return exclusive->register_exclusive_control_status(
          callback_of<vexcap_excl_ctrl_status_callback>(callback_args), context_of(callback_args));
    case kMsgUnregisterExclusiveControl:
      return exclusive->unregister_exclusive_control_status();
    case kMsgRegisterRgbStatus:
      return register_rgb_status(*exclusive, callback_args);
    case kMsgUnregisterRgbStatus:
      controls::unregister_rgb_status_notifier(exclusive->extension_unit());  // waits for its thread
      return HR_OK;
    case kMsgRegisterRgbStopped:
      return exclusive->register_rgb_stopped(callback_of<vexcap_rgb_stopped_callback>(callback_args),
                                             context_of(callback_args));
    case kMsgUnregisterRgbStopped:
      return exclusive->unregister_rgb_stopped();
    default:
      return HR_NOTIMPL;
  }
}

}  // namespace vexcap::api
