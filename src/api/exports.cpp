// The 33 exported functions: argument checks, one request to the request thread, and the
// mapped result code.
#include <cstdlib>
#include <exception>
#include <functional>
#include <new>
#include <optional>

#include "api/context.h"
#include "device/device.h"
#include "device/device_callbacks.h"
#include "api/messages.h"
#include "api/request_args.h"
#include "api/result_codes.h"
#include "common/host_callback.h"
#include "capture/outstanding_records.h"
#include "log/log.h"
#include "platform/port.h"
#include "vexcap/vexcap.h"

using namespace vexcap;
using namespace vexcap::api;

namespace {

// No exception ever crosses the C boundary: whatever a call meets ends here as a result code
// and an 'E' line.
template <typename Body>
int guarded(const char* name, int failure, Body body) noexcept {
  try {
    return body();
  } catch (const platform::PlatformError& error) {
    VXLOG('E', "%s: exception: %ws", name, error.message().c_str());
    return to_result_code(error.code());
  } catch (const std::bad_alloc&) {
    VXLOG('E', "%s: out of memory", name);
  } catch (const std::exception& error) {
    VXLOG('E', "%s: exception: %s", name, error.what());
  } catch (...) {
    VXLOG('E', "%s: unknown exception", name);
  }
  return failure;
}

template <typename Body>
int guarded(const char* name, Body body) noexcept {
  return guarded(name, VEXCAP_E_FAIL, body);
}

// Requests before vexcap_init or after vexcap_exit find no request thread.
int request(std::uint32_t message, std::uintptr_t wparam, std::intptr_t lparam) {
  const std::shared_ptr<Context> context = current_context();
  if (!context) return VEXCAP_E_INVALID_STATE;
  return to_result_code(send_direct_request(*context, message, wparam, lparam));
}

// The _ex streaming calls store the selector into the handle inside the request lock, right
// before the send, so the handler sees the selector of its own call.
int request_with_selector(vexcap_device* device, std::uint32_t selector, std::uint32_t message,
                          std::uintptr_t wparam) {
  const std::shared_ptr<Context> context = current_context();
  if (!context) return VEXCAP_E_INVALID_STATE;
  return to_result_code(send_direct_request(*context, message, wparam, as_lparam(device),
                                            [&] { device->stream_selector = selector; }));
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

// What a request deferred from a callback was asked for: the device its slot held then and,
// for a stop, the stream that was running. It runs only while both still stand, so a late
// close never reaches a device opened afterwards in the same slot, nor a late stop a stream
// started afterwards.
struct DeferredTarget {
  std::size_t slot = 0;
  bool had_device = false;
  std::weak_ptr<device::Device> device;
  std::optional<std::uint64_t> stream_generation;  // stops only
};

// A copy of the handle: the host may free its own as soon as the call answered. The stream
// mode is never written after the open; the selector is the call's own.
struct DeferredRequest {
  const char* name;
  std::uint32_t message;
  vexcap_device handle;
  std::optional<CallbackArgs> registration;
  DeferredTarget target;
};

std::shared_ptr<capture::CaptureClient> client_for(device::Device& device, std::uint32_t message, std::uint32_t selector) {
  return message == kMsgStopStreamingEx ? device.client_for_selector(selector) : device.shared_client();
}

// Why the request must not run now, or null when it may.
const char* stale(Context& context, const DeferredRequest& request) {
  const std::shared_ptr<device::Device> now = context.devices->get(request.target.slot);
  if (request.target.had_device && now != request.target.device.lock()) return "its device was closed";
  if (!request.target.had_device && now) return "no device was open then";
  if (now && request.target.stream_generation &&
      client_for(*now, request.message, request.handle.stream_selector)->stream_generation() !=
          *request.target.stream_generation)
    return "streaming was started again since";
  return nullptr;  // the references go here: a device's last release belongs to the request thread
}

void run_deferred(Context& context, DeferredRequest& request) {
  std::lock_guard<ReentrantMutex> lock(context.request_lock);  // the slots stand still meanwhile
  if (const char* why = stale(context, request)) {
    VXLOG('E', "%s asked for from a callback did not run: %s", request.name, why);
    return;
  }
  CallbackArgs args = request.registration.value_or(CallbackArgs{});
  const hresult result = send_request(context, request.message, request.registration ? as_wparam(&args) : 0,
                                      as_lparam(&request.handle));
  if (failed(result)) VXLOG('E', "%s asked for from a callback failed: %08x", request.name, static_cast<unsigned>(result));
}

// Inside a host callback a stop, a close or a device-event (un)registration cannot wait: the
// request thread may be waiting for this very thread (to leave the frame handler, to release the
// event's lock, to end a notifier). Such a call is handed to the deferred requests, which run in
// order after the callback. Answers nothing (the call goes on as a direct one) outside a
// callback; 0 once queued; -2 when the library is exiting and takes no more.
std::optional<int> defer_from_host_callback(const char* name, std::uint32_t message, const vexcap_device& device,
                                            std::optional<CallbackArgs> registration = std::nullopt,
                                            std::uint32_t selector = 0) {
  if (!inside_host_callback()) return std::nullopt;
  const std::shared_ptr<Context> context = current_context();
  if (!context) return VEXCAP_E_INVALID_STATE;
  DeferredRequest request{name, message, vexcap_device{device.stream_mode, 0, selector}, registration, {}};
  request.target.slot = device::OpenDevices::slot_of(device.stream_mode);
  const std::shared_ptr<device::Device> open = context->devices->get(request.target.slot);
  request.target.had_device = open != nullptr;
  request.target.device = open;
  if (open && (message == kMsgStopStreaming || message == kMsgStopStreamingEx))
    request.target.stream_generation = client_for(*open, message, selector)->stream_generation();
  VXLOG('I', "Request from inside a callback runs after it");
  Context* const target = context.get();  // its queue runs every request before it goes
  if (!context->deferred.post([target, request]() mutable { run_deferred(*target, request); })) {
    VXLOG('E', "%s asked for from a callback was refused: the library is exiting", name);
    return VEXCAP_E_INVALID_STATE;
  }
  return VEXCAP_OK;
}

// The device-event registrations (with their callback) and unregistrations (without).
int event_request(const char* name, vexcap_device* device, std::uint32_t message,
                  std::optional<CallbackArgs> registration) {
  if (device == nullptr) return VEXCAP_E_INVALID_ARG;
  if (const auto deferred = defer_from_host_callback(name, message, *device, registration)) return *deferred;
  CallbackArgs args = registration.value_or(CallbackArgs{});
  return request(message, registration ? as_wparam(&args) : 0, as_lparam(device));
}

int register_event(const char* name, vexcap_device* device, void* callback, void* context, std::uint32_t message) {
  return guarded(name, [&] { return event_request(name, device, message, CallbackArgs{callback, context}); });
}

int unregister_event(const char* name, vexcap_device* device, std::uint32_t message) {
  return guarded(name, [&] { return event_request(name, device, message, std::nullopt); });
}

}  // namespace

extern "C" {

VEXCAP_API int vexcap_init(void) {
  return guarded("vexcap_init", static_cast<int>(HR_FAIL), [] { return initialize_library(); });
}

VEXCAP_API int vexcap_exit(void) {
  return guarded("vexcap_exit", [] { return exit_library(); });
}

// ---- Discovery -------------------------------------------------------------------------------

VEXCAP_API int vexcap_get_device_capabilities(const wchar_t* group_id,
                                              uint8_t capabilities[VEXCAP_CAPABILITY_COUNT]) {
  return guarded("vexcap_get_device_capabilities", [&] {
    if (group_id == nullptr || capabilities == nullptr) return VEXCAP_E_INVALID_ARG;
    ResultPointerArg<uint8_t> result{capabilities};
    return request(kMsgDeviceCapabilities, as_wparam(group_id), as_lparam(&result));
  });
}

VEXCAP_API int vexcap_get_device_locations(const wchar_t* id_text,
                                           uint8_t locations[VEXCAP_PANEL_COUNT]) {
  return guarded("vexcap_get_device_locations", [&] {
    if (id_text == nullptr || locations == nullptr) return VEXCAP_E_INVALID_ARG;
    ResultPointerArg<uint8_t> result{locations};
    return request(kMsgDeviceLocations, as_wparam(id_text), as_lparam(&result));
  });
}

VEXCAP_API int vexcap_get_source_group_type(uint32_t* type) {
  return guarded("vexcap_get_source_group_type", [&] {
    if (type == nullptr) return VEXCAP_E_INVALID_ARG;
    ResultPointerArg<uint32_t> result{type};
    return request(kMsgSourceGroupType, 0, as_lparam(&result));
  });
}

VEXCAP_API int vexcap_get_targeted_location(uint32_t* panel) {
  return guarded("vexcap_get_targeted_location", [&] {
    if (panel == nullptr) return VEXCAP_E_INVALID_ARG;
    ResultPointerArg<uint32_t> result{panel};
    return request(kMsgTargetedLocation, 0, as_lparam(&result));
  });
}

VEXCAP_API int vexcap_is_vidpid_used_by_device(const wchar_t* group_id, const wchar_t* vid,
                                               const wchar_t* pid) {
  return guarded("vexcap_is_vidpid_used_by_device", 0, [&] {
    if (group_id == nullptr || vid == nullptr || pid == nullptr) return 0;
    const std::shared_ptr<Context> context = current_context();
    if (!context) return 0;
    VidPidArgs args{vid, pid};
    if (!inside_host_callback()) context->deferred.wait_for_earlier();
    // The boolean is cleared and read inside the request lock, around this call's own send.
    std::lock_guard<ReentrantMutex> lock(context->request_lock);
    if (context->stopped) return 0;
    context->slots->boolean = 0;
    context->transport->send(kMsgVidPidUsed, as_wparam(group_id), as_lparam(&args));
    return context->slots->boolean.load() != 0 ? 1 : 0;
  });
}

VEXCAP_API int vexcap_get_source_group_type_for_vid_pid(const wchar_t* vid, const wchar_t* pid,
                                                        uint32_t* type) {
  return guarded("vexcap_get_source_group_type_for_vid_pid", [&] {
    if (vid == nullptr || pid == nullptr || type == nullptr) return VEXCAP_E_INVALID_ARG;
    VidPidTextArgs texts{vid, pid};
    ResultPointerArg<uint32_t> result{type};
    return request(kMsgSourceGroupTypeForVidPid, as_wparam(&texts), as_lparam(&result));
  });
}

// ---- Devices ---------------------------------------------------------------------------------

VEXCAP_API int vexcap_device_open(vexcap_device** device, const wchar_t* device_id,
                                  const vexcap_open_params* params) {
  return guarded("vexcap_device_open", [&] {
    // The parameters are read by the handler, so a null pointer is refused like the others.
    if (device == nullptr || device_id == nullptr || params == nullptr) return VEXCAP_E_INVALID_ARG;
    const int result = request(kMsgDeviceOpen, as_wparam(device_id),
                               as_lparam(const_cast<vexcap_open_params*>(params)));
    if (result != VEXCAP_OK) return result;
    auto* handle = static_cast<vexcap_device*>(std::calloc(1, sizeof(vexcap_device)));
    if (handle == nullptr) return VEXCAP_E_FAIL;
    handle->stream_mode = params->stream_mode;
    *device = handle;
    return VEXCAP_OK;
  });
}

VEXCAP_API int vexcap_device_close(vexcap_device* device) {
  if (device == nullptr) return VEXCAP_E_INVALID_ARG;
  // The handle is freed whatever the request answered (a deferred close works on a copy).
  const int result = guarded("vexcap_device_close", [&] {
    if (const auto deferred = defer_from_host_callback("vexcap_device_close", kMsgDeviceClose, *device))
      return *deferred;
    return request(kMsgDeviceClose, 0, as_lparam(device));
  });
  std::free(device);
  return result;
}

// ---- Streaming -------------------------------------------------------------------------------

VEXCAP_API int vexcap_start_streaming(vexcap_device* device, vexcap_frame_callback callback,
                                      void* context) {
  return guarded("vexcap_start_streaming", [&] {
    if (device == nullptr) return VEXCAP_E_INVALID_ARG;
    CallbackArgs args{reinterpret_cast<void*>(callback), context};
    return request(kMsgStartStreaming, as_wparam(&args), as_lparam(device));
  });
}

VEXCAP_API int vexcap_start_streaming_ex(vexcap_device* device, vexcap_frame_callback callback,
                                         void* context, uint32_t stream_selector) {
  return guarded("vexcap_start_streaming_ex", [&] {
    if (device == nullptr) return VEXCAP_E_INVALID_ARG;
    CallbackArgs args{reinterpret_cast<void*>(callback), context};
    return request_with_selector(device, stream_selector, kMsgStartStreamingEx, as_wparam(&args));
  });
}

VEXCAP_API int vexcap_stop_streaming(vexcap_device* device) {
  return guarded("vexcap_stop_streaming", [&] {
    if (device == nullptr) return VEXCAP_E_INVALID_ARG;
    if (const auto deferred = defer_from_host_callback("vexcap_stop_streaming", kMsgStopStreaming, *device))
      return *deferred;
    return device_request(device, kMsgStopStreaming);
  });
}

VEXCAP_API int vexcap_stop_streaming_ex(vexcap_device* device, uint32_t stream_selector) {
  return guarded("vexcap_stop_streaming_ex", [&] {
    if (device == nullptr) return VEXCAP_E_INVALID_ARG;
    if (const auto deferred = defer_from_host_callback("vexcap_stop_streaming_ex", kMsgStopStreamingEx, *device,
                                                       std::nullopt, stream_selector))
      return *deferred;
    return request_with_selector(device, stream_selector, kMsgStopStreamingEx, 0);
  });
}

VEXCAP_API int vexcap_return_frame(vexcap_frame* frame) {
  return guarded("vexcap_return_frame", [&] {
    if (frame == nullptr) return VEXCAP_E_INVALID_ARG;
    capture::record_returned(frame);  // its stream may deliver one more
    std::free(frame->data);
    std::free(frame);
    return VEXCAP_OK;
  });
}

// ---- Controls --------------------------------------------------------------------------------

VEXCAP_API int vexcap_set_exposure(vexcap_device* device, int64_t exposure) {
  return guarded("vexcap_set_exposure", [&] { return set_value(device, exposure, kMsgSetExposure); });
}

VEXCAP_API int vexcap_set_iso_speed(vexcap_device* device, uint32_t iso_speed) {
  return guarded("vexcap_set_iso_speed", [&] { return set_value(device, iso_speed, kMsgSetIsoSpeed); });
}

VEXCAP_API int vexcap_set_led_power(vexcap_device* device, uint32_t power) {
  return guarded("vexcap_set_led_power", [&] { return set_value(device, power, kMsgSetLedPower); });
}

VEXCAP_API int vexcap_get_exposure(vexcap_device* device, uint64_t* exposure) {
  return guarded("vexcap_get_exposure", [&] { return get_value(device, exposure, kMsgGetExposure); });
}

VEXCAP_API int vexcap_get_iso_speed(vexcap_device* device, uint32_t* iso_speed) {
  return guarded("vexcap_get_iso_speed", [&] { return get_value(device, iso_speed, kMsgGetIsoSpeed); });
}

VEXCAP_API int vexcap_set_dev_property(vexcap_device* device, vexcap_property* property) {
  return guarded("vexcap_set_dev_property", [&] { return get_value(device, property, kMsgSetDeviceProperty); });
}

VEXCAP_API int vexcap_get_dev_property(vexcap_device* device, vexcap_property* property) {
  return guarded("vexcap_get_dev_property", [&] { return get_value(device, property, kMsgGetDeviceProperty); });
}

// ---- Device callbacks ------------------------------------------------------------------------

VEXCAP_API int vexcap_regiester_for_device_callbacks(vexcap_device_subscription** subscription,
                                                     const vexcap_device_callbacks* callbacks,
                                                     void* context) {
  return guarded("vexcap_regiester_for_device_callbacks",
                 [&] { return device::register_device_callbacks(subscription, callbacks, context); });
}

VEXCAP_API int vexcap_unregiester_device_callbacks(vexcap_device_subscription* subscription) {
  return guarded("vexcap_unregiester_device_callbacks", [&] { return device::unregister_device_callbacks(subscription); });
}

// ---- Device events ---------------------------------------------------------------------------

VEXCAP_API int vexcap_register_for_excl_ctrl_status_event(vexcap_device* device,
                                                          vexcap_excl_ctrl_status_callback callback,
                                                          void* context) {
  return register_event("vexcap_register_for_excl_ctrl_status_event", device,
                        reinterpret_cast<void*>(callback), context, kMsgRegisterExclusiveControl);
}

VEXCAP_API int vexcap_unregister_for_excl_ctrl_status_event(vexcap_device* device) {
  return unregister_event("vexcap_unregister_for_excl_ctrl_status_event", device, kMsgUnregisterExclusiveControl);
}

VEXCAP_API int vexcap_register_for_rgb_status_event(vexcap_device* device,
                                                    vexcap_rgb_status_callback callback,
                                                    void* context) {
  return register_event("vexcap_register_for_rgb_status_event", device, reinterpret_cast<void*>(callback),
                        context, kMsgRegisterRgbStatus);
}

VEXCAP_API int vexcap_unregister_for_rgb_status_event(vexcap_device* device) {
  return unregister_event("vexcap_unregister_for_rgb_status_event", device, kMsgUnregisterRgbStatus);
}

VEXCAP_API int vexcap_register_for_unsupported_format_status_event(
    vexcap_device* device, vexcap_unsupported_format_callback callback, void* context) {
  return register_event("vexcap_register_for_unsupported_format_status_event", device,
                        reinterpret_cast<void*>(callback), context, kMsgRegisterUnsupportedFormat);
}

VEXCAP_API int vexcap_unregister_for_unsupported_format_status_event(vexcap_device* device) {
  return unregister_event("vexcap_unregister_for_unsupported_format_status_event", device,
                          kMsgUnregisterUnsupportedFormat);
}

VEXCAP_API int vexcap_register_for_rgb_stopped_event(vexcap_device* device,
                                                     vexcap_rgb_stopped_callback callback,
                                                     void* context) {
  return register_event("vexcap_register_for_rgb_stopped_event", device, reinterpret_cast<void*>(callback),
                        context, kMsgRegisterRgbStopped);
}

VEXCAP_API int vexcap_unregister_for_rgb_stopped_event(vexcap_device* device) {
  return unregister_event("vexcap_unregister_for_rgb_stopped_event", device, kMsgUnregisterRgbStopped);
}

}  // extern "C"

// Exported under its C++ name; only the device handle is checked.
VEXCAP_API int vexcap_get_led_power(vexcap_device* device, unsigned int* power) {
  return guarded("vexcap_get_led_power", [&] {
    if (device == nullptr) return VEXCAP_E_INVALID_ARG;
    return request(kMsgGetLedPower, reinterpret_cast<std::uintptr_t>(power), as_lparam(device));
  });
}
