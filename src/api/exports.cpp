// The 33 exported functions: argument checks, one request to the request thread, and the
// mapped result code.
#include <cstdlib>
#include <functional>
#include <optional>

#include "api/context.h"
#include "api/device_callbacks.h"
#include "api/messages.h"
#include "api/request_args.h"
#include "api/result_codes.h"
#include "common/host_callback.h"
#include "frames/outstanding_records.h"
#include "log/log.h"
#include "vexcap/vexcap.h"

using namespace vexcap;
using namespace vexcap::api;

namespace {

// Requests before vexcap_init or after vexcap_exit find no request thread.
int request(std::uint32_t message, std::uintptr_t wparam, std::intptr_t lparam) {
  Context* context = current_context();
  if (context == nullptr) return VEXCAP_E_INVALID_STATE;
  return to_result_code(send_request(*context, message, wparam, lparam));
}

// The _ex streaming calls store the selector into the handle inside the request lock, right
// before the send, so the handler sees the selector of its own call.
int request_with_selector(vexcap_device* device, std::uint32_t selector, std::uint32_t message,
                          std::uintptr_t wparam) {
  Context* context = current_context();
  if (context == nullptr) return VEXCAP_E_INVALID_STATE;
  std::lock_guard<ReentrantMutex> lock(context->request_lock);
  device->stream_selector = selector;
  return to_result_code(send_request(*context, message, wparam, as_lparam(device)));
}

int device_request(vexcap_device* device, std::uint32_t message) {
  if (device == nullptr) return VEXCAP_E_INVALID_ARG;
  return request(message, 0, as_lparam(device));
}

template <typename T>
int set_value(vexcap_device* device, T value, std::uint32_t message) {
  if (device == nullptr) return VEXCAP_E_INVALID_ARG;
  ValueArg<T> arg{value};
  return request(message, as_wparam(&arg), as_lparam(device));
}

template <typename T>
int get_value(vexcap_device* device, T* out, std::uint32_t message) {
  if (device == nullptr || out == nullptr) return VEXCAP_E_INVALID_ARG;
  return request(message, as_wparam(out), as_lparam(device));
}

// Inside a host callback a stop, a close or a device-event (un)registration cannot wait: the
// request thread may be waiting for this very thread (to leave the frame handler, to release the
// event's lock, to end a notifier). Such a call is handed to the deferred requests, which run in
// order after the callback, and answers 0 at once; false when it is not inside a callback (or no
// thread could take it). The request gets its own copy of the handle's stream mode (never
// written after the open): the selector is written by other callers inside the request lock, and
// the host may free the handle as soon as the call answered.
bool defer_from_host_callback(const vexcap_device& device,
                              std::function<void(Context&, vexcap_device&)> request) {
  if (!inside_host_callback()) return false;
  Context* context = current_context();
  if (context == nullptr) return false;
  VXLOG('I', "Request from inside a callback runs after it");
  return context->deferred.post([context, handle = vexcap_device{device.stream_mode, 0, 0},
                                 request = std::move(request)]() mutable { request(*context, handle); });
}

// The device-event registrations (with their callback) and unregistrations (without).
int event_request(vexcap_device* device, std::uint32_t message, std::optional<CallbackArgs> registration) {
  if (device == nullptr) return VEXCAP_E_INVALID_ARG;
  auto send = [message, registration](Context& context, vexcap_device& handle) {
    CallbackArgs args = registration.value_or(CallbackArgs{});
    return send_request(context, message, registration ? as_wparam(&args) : 0, as_lparam(&handle));
  };
  if (defer_from_host_callback(*device, send)) return VEXCAP_OK;
  Context* context = current_context();
  if (context == nullptr) return VEXCAP_E_INVALID_STATE;
  return to_result_code(send(*context, *device));
}

int register_event(vexcap_device* device, void* callback, void* context, std::uint32_t message) {
  return event_request(device, message, CallbackArgs{callback, context});
}

int unregister_event(vexcap_device* device, std::uint32_t message) {
  return event_request(device, message, std::nullopt);
}

}  // namespace

extern "C" {

VEXCAP_API int vexcap_init(void) { return initialize_library(); }

VEXCAP_API int vexcap_exit(void) { return exit_library(); }

// ---- Discovery -------------------------------------------------------------------------------

VEXCAP_API int vexcap_get_device_capabilities(const wchar_t* group_id,
                                              uint8_t capabilities[VEXCAP_CAPABILITY_COUNT]) {
  if (group_id == nullptr || capabilities == nullptr) return VEXCAP_E_INVALID_ARG;
  ResultPointerArg<uint8_t> result{capabilities};
  return request(kMsgDeviceCapabilities, as_wparam(group_id), as_lparam(&result));
}

VEXCAP_API int vexcap_get_device_locations(const wchar_t* id_text,
                                           uint8_t locations[VEXCAP_PANEL_COUNT]) {
  if (id_text == nullptr || locations == nullptr) return VEXCAP_E_INVALID_ARG;
  ResultPointerArg<uint8_t> result{locations};
  return request(kMsgDeviceLocations, as_wparam(id_text), as_lparam(&result));
}

VEXCAP_API int vexcap_get_source_group_type(uint32_t* type) {
  if (type == nullptr) return VEXCAP_E_INVALID_ARG;
  ResultPointerArg<uint32_t> result{type};
  return request(kMsgSourceGroupType, 0, as_lparam(&result));
}

VEXCAP_API int vexcap_get_targeted_location(uint32_t* panel) {
  if (panel == nullptr) return VEXCAP_E_INVALID_ARG;
  ResultPointerArg<uint32_t> result{panel};
  return request(kMsgTargetedLocation, 0, as_lparam(&result));
}

VEXCAP_API int vexcap_is_vidpid_used_by_device(const wchar_t* group_id, const wchar_t* vid,
                                               const wchar_t* pid) {
  if (group_id == nullptr || vid == nullptr || pid == nullptr) return 0;
  Context* context = current_context();
  if (context == nullptr) return 0;
  VidPidArgs args{vid, pid};
  std::lock_guard<ReentrantMutex> lock(context->request_lock);
  context->slots->boolean = 0;
  context->transport->send(kMsgVidPidUsed, as_wparam(group_id), as_lparam(&args));
  return context->slots->boolean.load() != 0 ? 1 : 0;
}

VEXCAP_API int vexcap_get_source_group_type_for_vid_pid(const wchar_t* vid, const wchar_t* pid,
                                                        uint32_t* type) {
  if (vid == nullptr || pid == nullptr || type == nullptr) return VEXCAP_E_INVALID_ARG;
  VidPidTextArgs texts{vid, pid};
  ResultPointerArg<uint32_t> result{type};
  return request(kMsgSourceGroupTypeForVidPid, as_wparam(&texts), as_lparam(&result));
}

// ---- Devices ---------------------------------------------------------------------------------

VEXCAP_API int vexcap_device_open(vexcap_device** device, const wchar_t* device_id,
                                  const vexcap_open_params* params) {
  // The parameters are read by the handler, so a null pointer is refused like the others.
  if (device == nullptr || device_id == nullptr || params == nullptr) return VEXCAP_E_INVALID_ARG;
  Context* context = current_context();
  if (context == nullptr) return VEXCAP_E_INVALID_STATE;
  const hresult result = send_request(*context, kMsgDeviceOpen, as_wparam(device_id),
                                      as_lparam(const_cast<vexcap_open_params*>(params)));
  if (result != HR_OK) return to_result_code(result);
  auto* handle = static_cast<vexcap_device*>(std::calloc(1, sizeof(vexcap_device)));
  if (handle == nullptr) return VEXCAP_E_FAIL;
  handle->stream_mode = params->stream_mode;
  *device = handle;
  return VEXCAP_OK;
}

VEXCAP_API int vexcap_device_close(vexcap_device* device) {
  if (device == nullptr) return VEXCAP_E_INVALID_ARG;
  // The deferred request works on a copy: the host's handle is freed now, as after any close.
  if (defer_from_host_callback(*device, [](Context& context, vexcap_device& handle) {
        send_request(context, kMsgDeviceClose, 0, as_lparam(&handle));
      })) {
    std::free(device);
    return VEXCAP_OK;
  }
  const int result = request(kMsgDeviceClose, 0, as_lparam(device));
  std::free(device);  // whatever the request answered
  return result;
}

// ---- Streaming -------------------------------------------------------------------------------

VEXCAP_API int vexcap_start_streaming(vexcap_device* device, vexcap_frame_callback callback,
                                      void* context) {
  if (device == nullptr) return VEXCAP_E_INVALID_ARG;
  CallbackArgs args{reinterpret_cast<void*>(callback), context};
  return request(kMsgStartStreaming, as_wparam(&args), as_lparam(device));
}

VEXCAP_API int vexcap_start_streaming_ex(vexcap_device* device, vexcap_frame_callback callback,
                                         void* context, uint32_t stream_selector) {
  if (device == nullptr) return VEXCAP_E_INVALID_ARG;
  CallbackArgs args{reinterpret_cast<void*>(callback), context};
  return request_with_selector(device, stream_selector, kMsgStartStreamingEx, as_wparam(&args));
}

VEXCAP_API int vexcap_stop_streaming(vexcap_device* device) {
  // A copy of the handle: the host may close the device once this call has answered.
  if (device != nullptr && defer_from_host_callback(*device, [](Context& context, vexcap_device& handle) {
        send_request(context, kMsgStopStreaming, 0, as_lparam(&handle));
      }))
    return VEXCAP_OK;
  return device_request(device, kMsgStopStreaming);
}

VEXCAP_API int vexcap_stop_streaming_ex(vexcap_device* device, uint32_t stream_selector) {
  if (device == nullptr) return VEXCAP_E_INVALID_ARG;
  if (defer_from_host_callback(*device, [stream_selector](Context&, vexcap_device& handle) {
        request_with_selector(&handle, stream_selector, kMsgStopStreamingEx, 0);
      }))
    return VEXCAP_OK;
  return request_with_selector(device, stream_selector, kMsgStopStreamingEx, 0);
}

VEXCAP_API int vexcap_return_frame(vexcap_frame* frame) {
  if (frame == nullptr) return VEXCAP_E_INVALID_ARG;
  frames::record_returned(frame);  // its stream may deliver one more
  std::free(frame->data);
  std::free(frame);
  return VEXCAP_OK;
}

// ---- Controls --------------------------------------------------------------------------------

VEXCAP_API int vexcap_set_exposure(vexcap_device* device, int64_t exposure) {
  return set_value(device, exposure, kMsgSetExposure);
}

VEXCAP_API int vexcap_set_iso_speed(vexcap_device* device, uint32_t iso_speed) {
  return set_value(device, iso_speed, kMsgSetIsoSpeed);
}

VEXCAP_API int vexcap_set_led_power(vexcap_device* device, uint32_t power) {
  return set_value(device, power, kMsgSetLedPower);
}

VEXCAP_API int vexcap_get_exposure(vexcap_device* device, uint64_t* exposure) {
  return get_value(device, exposure, kMsgGetExposure);
}

VEXCAP_API int vexcap_get_iso_speed(vexcap_device* device, uint32_t* iso_speed) {
  return get_value(device, iso_speed, kMsgGetIsoSpeed);
}

VEXCAP_API int vexcap_set_dev_property(vexcap_device* device, vexcap_property* property) {
  return get_value(device, property, kMsgSetDeviceProperty);
}

VEXCAP_API int vexcap_get_dev_property(vexcap_device* device, vexcap_property* property) {
  return get_value(device, property, kMsgGetDeviceProperty);
}

// ---- Device callbacks ------------------------------------------------------------------------

VEXCAP_API int vexcap_regiester_for_device_callbacks(vexcap_device_subscription** subscription,
                                                     const vexcap_device_callbacks* callbacks,
                                                     void* context) {
  return register_device_callbacks(subscription, callbacks, context);
}

VEXCAP_API int vexcap_unregiester_device_callbacks(vexcap_device_subscription* subscription) {
  return unregister_device_callbacks(subscription);
}

// ---- Device events ---------------------------------------------------------------------------

VEXCAP_API int vexcap_register_for_excl_ctrl_status_event(vexcap_device* device,
                                                          vexcap_excl_ctrl_status_callback callback,
                                                          void* context) {
  return register_event(device, reinterpret_cast<void*>(callback), context,
                        kMsgRegisterExclusiveControl);
}

VEXCAP_API int vexcap_unregister_for_excl_ctrl_status_event(vexcap_device* device) {
  return unregister_event(device, kMsgUnregisterExclusiveControl);
}

VEXCAP_API int vexcap_register_for_rgb_status_event(vexcap_device* device,
                                                    vexcap_rgb_status_callback callback,
                                                    void* context) {
  return register_event(device, reinterpret_cast<void*>(callback), context, kMsgRegisterRgbStatus);
}

VEXCAP_API int vexcap_unregister_for_rgb_status_event(vexcap_device* device) {
  return unregister_event(device, kMsgUnregisterRgbStatus);
}

VEXCAP_API int vexcap_register_for_unsupported_format_status_event(
    vexcap_device* device, vexcap_unsupported_format_callback callback, void* context) {
  return register_event(device, reinterpret_cast<void*>(callback), context,
                        kMsgRegisterUnsupportedFormat);
}

VEXCAP_API int vexcap_unregister_for_unsupported_format_status_event(vexcap_device* device) {
  return unregister_event(device, kMsgUnregisterUnsupportedFormat);
}

VEXCAP_API int vexcap_register_for_rgb_stopped_event(vexcap_device* device,
                                                     vexcap_rgb_stopped_callback callback,
                                                     void* context) {
  return register_event(device, reinterpret_cast<void*>(callback), context, kMsgRegisterRgbStopped);
}

VEXCAP_API int vexcap_unregister_for_rgb_stopped_event(vexcap_device* device) {
  return unregister_event(device, kMsgUnregisterRgbStopped);
}

}  // extern "C"

// Exported under its C++ name; only the device handle is checked.
VEXCAP_API int vexcap_get_led_power(vexcap_device* device, unsigned int* power) {
  if (device == nullptr) return VEXCAP_E_INVALID_ARG;
  return request(kMsgGetLedPower, reinterpret_cast<std::uintptr_t>(power), as_lparam(device));
}
