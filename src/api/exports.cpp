// The 33 exported functions: argument checks, one request to the request thread, and the
// mapped result code.
#include <cstdlib>
#include <exception>
#include <functional>
#include <new>
#include <optional>
#include <type_traits>

#include "api/context.h"
#include "api/messages.h"
#include "api/requests.h"
#include "api/result_codes.h"
#include "capture/outstanding_records.h"
#include "common/host_callback.h"
#include "device/device.h"
#include "device/device_callbacks.h"
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
template <typename R>
int request(typename R::WRecord* wparam, typename R::LRecord* lparam) {
  const std::shared_ptr<Context> context = current_context();
  if (!context) return VEXCAP_E_INVALID_STATE;
  return to_result_code(send_direct_request<R>(*context, wparam, lparam));
}

// The _ex streaming calls store the selector into the handle inside the request lock, right
// before the send, so the handler sees the selector of its own call.
template <typename R>
int request_with_selector(vexcap_device* device, std::uint32_t selector, typename R::WRecord* wparam) {
  const std::shared_ptr<Context> context = current_context();
  if (!context) return VEXCAP_E_INVALID_STATE;
  return to_result_code(
      send_direct_request<R>(*context, wparam, device, [&] { device->stream_selector = selector; }));
}

template <typename R>
int device_request(vexcap_device* device) {
  if (device == nullptr) return VEXCAP_E_INVALID_ARG;
  return request<R>(nullptr, device);
}

template <typename R>
int set_value(vexcap_device* device, decltype(R::WRecord::value) value) {
  if (device == nullptr) return VEXCAP_E_INVALID_ARG;
  typename R::WRecord arg{value};
  return request<R>(&arg, device);
}

template <typename R>
int get_value(vexcap_device* device, typename R::WRecord* out) {
  if (device == nullptr || out == nullptr) return VEXCAP_E_INVALID_ARG;
  return request<R>(out, device);
}

// A direct request with the registration's callback, if its request carries one.
template <typename R>
int send_deferred_now(CallbackArgs* registration, vexcap_device* device) {
  if constexpr (std::is_same_v<typename R::WRecord, CallbackArgs>) {
    return request<R>(registration, device);
  } else {
    return request<R>(nullptr, device);
  }
}

// Sends a deferred request with its registration's callback, if its request carries one.
template <typename R>
hresult send_deferred(Context& context, CallbackArgs* registration, vexcap_device* handle) {
  if constexpr (std::is_same_v<typename R::WRecord, CallbackArgs>) {
    return send_request<R>(context, registration, handle);
  } else {
    return send_request<R>(context, nullptr, handle);
  }
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
  hresult (*send)(Context&, CallbackArgs*, vexcap_device*);
  vexcap_device handle;
  std::optional<CallbackArgs> registration;
  DeferredTarget target;
};

capture::CaptureClient& client_for(device::Device& device, std::uint32_t message, std::uint32_t selector) {
  return message == kMsgStopStreamingEx ? device.client_for_selector(selector) : device.shared_client();
}

// Why the request must not run now, or null when it may.
const char* stale(Context& context, const DeferredRequest& request) {
  const std::shared_ptr<device::Device> now = context.devices->get(request.target.slot);
  if (request.target.had_device && now != request.target.device.lock()) return "its device was closed";
  if (!request.target.had_device && now) return "no device was open then";
  if (now && request.target.stream_generation &&
      client_for(*now, request.message, request.handle.stream_selector).stream_generation() !=
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
  const hresult result = request.send(context, &args, &request.handle);
  if (failed(result)) VXLOG('E', "%s asked for from a callback failed: %08x", request.name, static_cast<unsigned>(result));
}

// Inside a host callback a stop, a close or a device-event (un)registration cannot wait: the
// request thread may be waiting for this very thread (to leave the frame handler, to release the
// event's lock, to end a notifier). Such a call is handed to the deferred requests, which run in
// order after the callback. Answers nothing (the call goes on as a direct one) outside a
// callback; 0 once queued; -2 when the library is exiting and takes no more.
template <typename R>
std::optional<int> defer_from_host_callback(const char* name, const vexcap_device& device,
                                            std::optional<CallbackArgs> registration = std::nullopt,
                                            std::uint32_t selector = 0) {
  constexpr std::uint32_t message = R::id;
  if (!inside_host_callback()) return std::nullopt;
  const std::shared_ptr<Context> context = current_context();
  if (!context) return VEXCAP_E_INVALID_STATE;
  DeferredRequest request{
      name, message, &send_deferred<R>, vexcap_device{device.stream_mode, 0, selector}, registration, {}};
  request.target.slot = device::OpenDevices::slot_of(device.stream_mode);
  const std::shared_ptr<device::Device> open = context->devices->get(request.target.slot);
  request.target.had_device = open != nullptr;
  request.target.device = open;
  if (open && (message == kMsgStopStreaming || message == kMsgStopStreamingEx))
    request.target.stream_generation = client_for(*open, message, selector).stream_generation();
  VXLOG('I', "Request from inside a callback runs after it");
  Context* const target = context.get();  // its queue runs every request before it goes
  if (!context->deferred.post([target, request]() mutable { run_deferred(*target, request); })) {
    VXLOG('E', "%s asked for from a callback was refused: the library is exiting", name);
    return VEXCAP_E_INVALID_STATE;
  }
  return VEXCAP_OK;
}

// The device-event registrations (with their callback) and unregistrations (without).
template <typename R>
int event_request(const char* name, vexcap_device* device, std::optional<CallbackArgs> registration) {
  if (device == nullptr) return VEXCAP_E_INVALID_ARG;
  if (const auto deferred = defer_from_host_callback<R>(name, *device, registration)) return *deferred;
  CallbackArgs args = registration.value_or(CallbackArgs{});
  return send_deferred_now<R>(&args, device);
}

template <typename R>
int register_event(const char* name, vexcap_device* device, void* callback, void* context) {
  static_assert(std::is_same_v<typename R::WRecord, CallbackArgs>, "a registration carries its callback");
  return guarded(name, [&] { return event_request<R>(name, device, CallbackArgs{callback, context}); });
}

template <typename R>
int unregister_event(const char* name, vexcap_device* device) {
  static_assert(std::is_same_v<typename R::WRecord, Unused>, "an unregistration carries no callback");
  return guarded(name, [&] { return event_request<R>(name, device, std::nullopt); });
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
    ResultPointer<uint8_t> result{capabilities};
    return request<DeviceCapabilitiesRequest>(group_id, &result);
  });
}

VEXCAP_API int vexcap_get_device_locations(const wchar_t* id_text,
                                           uint8_t locations[VEXCAP_PANEL_COUNT]) {
  return guarded("vexcap_get_device_locations", [&] {
    if (id_text == nullptr || locations == nullptr) return VEXCAP_E_INVALID_ARG;
    ResultPointer<uint8_t> result{locations};
    return request<DeviceLocationsRequest>(id_text, &result);
  });
}

VEXCAP_API int vexcap_get_source_group_type(uint32_t* type) {
  return guarded("vexcap_get_source_group_type", [&] {
    if (type == nullptr) return VEXCAP_E_INVALID_ARG;
    ResultPointer<uint32_t> result{type};
    return request<SourceGroupTypeRequest>(nullptr, &result);
  });
}

VEXCAP_API int vexcap_get_targeted_location(uint32_t* panel) {
  return guarded("vexcap_get_targeted_location", [&] {
    if (panel == nullptr) return VEXCAP_E_INVALID_ARG;
    ResultPointer<uint32_t> result{panel};
    return request<TargetedLocationRequest>(nullptr, &result);
  });
}

VEXCAP_API int vexcap_is_vidpid_used_by_device(const wchar_t* group_id, const wchar_t* vid,
                                               const wchar_t* pid) {
  return guarded("vexcap_is_vidpid_used_by_device", 0, [&] {
    if (group_id == nullptr || vid == nullptr || pid == nullptr) return 0;
    const std::shared_ptr<Context> context = current_context();
    if (!context) return 0;
    VidPid args{vid, pid};
    if (!inside_host_callback()) context->deferred.wait_for_earlier();
    // The boolean is cleared and read inside the request lock, around this call's own send.
    std::lock_guard<ReentrantMutex> lock(context->request_lock);
    if (context->stopped) return 0;
    context->slots->boolean = 0;
    send_on_transport<VidPidUsedRequest>(*context, group_id, &args);
    return context->slots->boolean.load() != 0 ? 1 : 0;
  });
}

VEXCAP_API int vexcap_get_source_group_type_for_vid_pid(const wchar_t* vid, const wchar_t* pid,
                                                        uint32_t* type) {
  return guarded("vexcap_get_source_group_type_for_vid_pid", [&] {
    if (vid == nullptr || pid == nullptr || type == nullptr) return VEXCAP_E_INVALID_ARG;
    VidPid texts{vid, pid};
    ResultPointer<uint32_t> result{type};
    return request<SourceGroupTypeForVidPidRequest>(&texts, &result);
  });
}

// ---- Devices ---------------------------------------------------------------------------------

VEXCAP_API int vexcap_device_open(vexcap_device** device, const wchar_t* device_id,
                                  const vexcap_open_params* params) {
  return guarded("vexcap_device_open", [&] {
    // The parameters are read by the handler, so a null pointer is refused like the others.
    if (device == nullptr || device_id == nullptr || params == nullptr) return VEXCAP_E_INVALID_ARG;
    const int result = request<DeviceOpenRequest>(device_id, params);
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
    if (const auto deferred = defer_from_host_callback<DeviceCloseRequest>("vexcap_device_close", *device))
      return *deferred;
    return request<DeviceCloseRequest>(nullptr, device);
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
    return request<StartStreamingRequest>(&args, device);
  });
}

VEXCAP_API int vexcap_start_streaming_ex(vexcap_device* device, vexcap_frame_callback callback,
                                         void* context, uint32_t stream_selector) {
  return guarded("vexcap_start_streaming_ex", [&] {
    if (device == nullptr) return VEXCAP_E_INVALID_ARG;
    CallbackArgs args{reinterpret_cast<void*>(callback), context};
    return request_with_selector<StartStreamingExRequest>(device, stream_selector, &args);
  });
}

VEXCAP_API int vexcap_stop_streaming(vexcap_device* device) {
  return guarded("vexcap_stop_streaming", [&] {
    if (device == nullptr) return VEXCAP_E_INVALID_ARG;
    if (const auto deferred =
            defer_from_host_callback<StopStreamingRequest>("vexcap_stop_streaming", *device))
      return *deferred;
    return device_request<StopStreamingRequest>(device);
  });
}

VEXCAP_API int vexcap_stop_streaming_ex(vexcap_device* device, uint32_t stream_selector) {
  return guarded("vexcap_stop_streaming_ex", [&] {
    if (device == nullptr) return VEXCAP_E_INVALID_ARG;
    if (const auto deferred = defer_from_host_callback<StopStreamingExRequest>(
            "vexcap_stop_streaming_ex", *device, std::nullopt, stream_selector))
      return *deferred;
    return request_with_selector<StopStreamingExRequest>(device, stream_selector, nullptr);
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
  return guarded("vexcap_set_exposure", [&] { return set_value<SetExposureRequest>(device, exposure); });
}

VEXCAP_API int vexcap_set_iso_speed(vexcap_device* device, uint32_t iso_speed) {
  return guarded("vexcap_set_iso_speed", [&] { return set_value<SetIsoSpeedRequest>(device, iso_speed); });
}

VEXCAP_API int vexcap_set_led_power(vexcap_device* device, uint32_t power) {
  return guarded("vexcap_set_led_power", [&] { return set_value<SetLedPowerRequest>(device, power); });
}

VEXCAP_API int vexcap_get_exposure(vexcap_device* device, uint64_t* exposure) {
  return guarded("vexcap_get_exposure", [&] { return get_value<GetExposureRequest>(device, exposure); });
}

VEXCAP_API int vexcap_get_iso_speed(vexcap_device* device, uint32_t* iso_speed) {
  return guarded("vexcap_get_iso_speed", [&] { return get_value<GetIsoSpeedRequest>(device, iso_speed); });
}

VEXCAP_API int vexcap_set_dev_property(vexcap_device* device, vexcap_property* property) {
  return guarded("vexcap_set_dev_property",
                 [&] { return get_value<SetDevicePropertyRequest>(device, property); });
}

VEXCAP_API int vexcap_get_dev_property(vexcap_device* device, vexcap_property* property) {
  return guarded("vexcap_get_dev_property",
                 [&] { return get_value<GetDevicePropertyRequest>(device, property); });
}

// ---- Device callbacks ------------------------------------------------------------------------

VEXCAP_API int vexcap_regiester_for_device_callbacks(vexcap_device_subscription** subscription,
                                                     const vexcap_device_callbacks* callbacks,
                                                     void* context) {
  return guarded("vexcap_regiester_for_device_callbacks",
                 [&] { return device::register_device_callbacks(subscription, callbacks, context); });
}

VEXCAP_API int vexcap_unregiester_device_callbacks(vexcap_device_subscription* subscription) {
  return guarded("vexcap_unregiester_device_callbacks",
                 [&] { return device::unregister_device_callbacks(subscription); });
}

// ---- Device events ---------------------------------------------------------------------------

VEXCAP_API int vexcap_register_for_excl_ctrl_status_event(vexcap_device* device,
                                                          vexcap_excl_ctrl_status_callback callback,
                                                          void* context) {
  return register_event<RegisterExclusiveControlRequest>("vexcap_register_for_excl_ctrl_status_event", device,
                                                         reinterpret_cast<void*>(callback), context);
}

VEXCAP_API int vexcap_unregister_for_excl_ctrl_status_event(vexcap_device* device) {
  return unregister_event<UnregisterExclusiveControlRequest>("vexcap_unregister_for_excl_ctrl_status_event",
                                                             device);
}

VEXCAP_API int vexcap_register_for_rgb_status_event(vexcap_device* device,
                                                    vexcap_rgb_status_callback callback,
                                                    void* context) {
  return register_event<RegisterRgbStatusRequest>("vexcap_register_for_rgb_status_event", device,
                                                  reinterpret_cast<void*>(callback), context);
}

VEXCAP_API int vexcap_unregister_for_rgb_status_event(vexcap_device* device) {
  return unregister_event<UnregisterRgbStatusRequest>("vexcap_unregister_for_rgb_status_event", device);
}

VEXCAP_API int vexcap_register_for_unsupported_format_status_event(
    vexcap_device* device, vexcap_unsupported_format_callback callback, void* context) {
  return register_event<RegisterUnsupportedFormatRequest>(
      "vexcap_register_for_unsupported_format_status_event", device, reinterpret_cast<void*>(callback),
      context);
}

VEXCAP_API int vexcap_unregister_for_unsupported_format_status_event(vexcap_device* device) {
  return unregister_event<UnregisterUnsupportedFormatRequest>(
      "vexcap_unregister_for_unsupported_format_status_event", device);
}

VEXCAP_API int vexcap_register_for_rgb_stopped_event(vexcap_device* device,
                                                     vexcap_rgb_stopped_callback callback,
                                                     void* context) {
  return register_event<RegisterRgbStoppedRequest>("vexcap_register_for_rgb_stopped_event", device,
                                                   reinterpret_cast<void*>(callback), context);
}

VEXCAP_API int vexcap_unregister_for_rgb_stopped_event(vexcap_device* device) {
  return unregister_event<UnregisterRgbStoppedRequest>("vexcap_unregister_for_rgb_stopped_event", device);
}

}  // extern "C"

// Exported under its C++ name; only the device handle is checked.
VEXCAP_API int vexcap_get_led_power(vexcap_device* device, unsigned int* power) {
  return guarded("vexcap_get_led_power", [&] {
    if (device == nullptr) return VEXCAP_E_INVALID_ARG;
    return request<GetLedPowerRequest>(power, device);
  });
}
