#include "api/dispatcher.h"

#include <array>
#include <exception>
#include <new>
#include <type_traits>

#include "capture/client_properties.h"
#include "device/device.h"
#include "device/device_events.h"
#include "log/log.h"
#include "platform/port.h"
#include "sources/discovery.h"

namespace vexcap::api {

Dispatcher::Dispatcher(std::shared_ptr<RequestSlots> slots, std::shared_ptr<device::OpenDevices> devices,
                       device::DeviceEnvironment device_environment)
    : slots_holder_(std::move(slots)),
      slots_(*slots_holder_),
      device_environment_(std::move(device_environment)),
      runtime_(process_runtime()),
      devices_(std::move(devices)) {}

Dispatcher::~Dispatcher() = default;

// The routes, indexed by message from 1024: every request but exit and the vid/pid query, whose
// answers go elsewhere than the result slot.
struct Dispatcher::Routes {
  std::array<Route, kMsgCaptureFailed - kMsgExit + 1> by_message{};

  Routes() {
    add<RuntimeStartupRequest, &Dispatcher::start_runtimes>();
    add<DeviceCapabilitiesRequest, &Dispatcher::device_capabilities>();
    add<DeviceLocationsRequest, &Dispatcher::device_locations>();
    add<SourceGroupTypeRequest, &Dispatcher::source_group_type>();
    add<TargetedLocationRequest, &Dispatcher::targeted_location>();
    add<SourceGroupTypeForVidPidRequest, &Dispatcher::source_group_type_for_vid_pid>();
    add<DeviceOpenRequest, &Dispatcher::open_device>();
    add<DeviceCloseRequest, &Dispatcher::close_device>();
    add<StartStreamingRequest, &Dispatcher::start_streaming>();
    add<StartStreamingExRequest, &Dispatcher::start_streaming_by_selector>();
    add<StopStreamingRequest, &Dispatcher::stop_streaming>();
    add<StopStreamingExRequest, &Dispatcher::stop_streaming_by_selector>();
    add<SetExposureRequest, &Dispatcher::set_exposure>();
    add<SetIsoSpeedRequest, &Dispatcher::set_iso_speed>();
    add<SetLedPowerRequest, &Dispatcher::set_led_power>();
    add<GetExposureRequest, &Dispatcher::get_exposure>();
    add<GetIsoSpeedRequest, &Dispatcher::get_iso_speed>();
    add<GetLedPowerRequest, &Dispatcher::get_led_power>();
    add<SetDevicePropertyRequest, &Dispatcher::set_device_property>();
    add<GetDevicePropertyRequest, &Dispatcher::get_device_property>();
    add<RegisterExclusiveControlRequest, &Dispatcher::register_exclusive_control>();
    add<UnregisterExclusiveControlRequest, &Dispatcher::unregister_exclusive_control>();
    add<RegisterRgbStatusRequest, &Dispatcher::register_rgb_status>();
    add<UnregisterRgbStatusRequest, &Dispatcher::unregister_rgb_status>();
    add<RegisterUnsupportedFormatRequest, &Dispatcher::register_unsupported_format>();
    add<UnregisterUnsupportedFormatRequest, &Dispatcher::unregister_unsupported_format>();
    add<RegisterRgbStoppedRequest, &Dispatcher::register_rgb_stopped>();
    add<UnregisterRgbStoppedRequest, &Dispatcher::unregister_rgb_stopped>();
    add<CaptureFailedRequest, &Dispatcher::recover_capture>();
  }

  template <typename R, auto Handler>
  void add() {
    by_message[R::id - kMsgExit] = route<R, Handler>();
  }

  Route find(std::uint32_t message) const {
    return is_request_message(message) ? by_message[message - kMsgExit] : nullptr;
  }
};

// The one place a request's two words become its records: the types come from the request's
// declaration, and the handler must take exactly those.
template <typename R, auto Handler>
constexpr Dispatcher::Route Dispatcher::route() {
  static_assert(
      std::is_same_v<decltype(Handler), hresult (Dispatcher::*)(typename R::WRecord*, typename R::LRecord*)>,
      "a handler takes its request's records");
  return [](Dispatcher& dispatcher, std::uintptr_t wparam, std::intptr_t lparam) {
    return (dispatcher.*Handler)(wparam_record<R>(wparam), lparam_record<R>(lparam));
  };
}

bool Dispatcher::dispatch(std::uint32_t message, std::uintptr_t wparam, std::intptr_t lparam) {
  VEXCAP_DCHECK_ON_THREAD(request_thread_);
  switch (message) {
    case ExitRequest::id:
      end_devices_left_open();  // their captures go before Media Foundation and the runtime
      runtime_.shutdown();
      slots_.result = HR_OK;
      return true;
    case VidPidUsedRequest::id:  // answers in the boolean slot only
      vid_pid_used(wparam_record<VidPidUsedRequest>(wparam), lparam_record<VidPidUsedRequest>(lparam));
      return false;
    case CaptureFailedRequest::id:
      handle(message, wparam, lparam);  // recovery leaves the result slot alone
      return false;
    default:
      slots_.result = handle(message, wparam, lparam);
      return false;
  }
}

hresult Dispatcher::handle(std::uint32_t message, std::uintptr_t wparam, std::intptr_t lparam) {
  static const Routes routes;  // built once, on the first request
  const Route route = routes.find(message);
  if (route == nullptr) return HR_NOTIMPL;
  // A platform failure that a handler leaves uncaught ends the request, never the thread.
  try {
    return route(*this, wparam, lparam);
  } catch (const platform::PlatformError& error) {
    VXLOG('E', "exception: %ws", error.message().c_str());
    return error.code();
  } catch (const std::bad_alloc&) {
    VXLOG('E', "exception: out of memory");
    return HR_OUTOFMEMORY;
  } catch (const std::exception& error) {
    // Never out of the request thread: a window procedure's exception is swallowed by the
    // system halfway through its unwinding, a POSIX thread's ends the process.
    VXLOG('E', "exception: %s", error.what());
    return HR_FAIL;
  }
}

void Dispatcher::vid_pid_used(const wchar_t* group_id, VidPid* texts) {
  bool used = false;
  try {
    sources::query_vid_pid_used(*device_environment_.platform, group_id, texts->vid, texts->pid, &used);
  } catch (const platform::PlatformError& error) {
    VXLOG('E', "exception: %ws", error.message().c_str());
  }
  if (used) slots_.boolean = 1;
}

// ---- Runtimes and discovery ------------------------------------------------------------------

hresult Dispatcher::start_runtimes(Unused*, Unused*) { return runtime_.start(); }

hresult Dispatcher::device_capabilities(const wchar_t* group_id, ResultPointer<std::uint8_t>* capabilities) {
  return sources::query_device_capabilities(*device_environment_.platform, group_id, capabilities->result);
}

hresult Dispatcher::device_locations(const wchar_t* id_text, ResultPointer<std::uint8_t>* locations) {
  return sources::query_device_locations(*device_environment_.platform, id_text, locations->result);
}

hresult Dispatcher::source_group_type(Unused*, ResultPointer<std::uint32_t>* type) {
  return sources::query_source_group_type(*device_environment_.platform, type->result);
}

hresult Dispatcher::targeted_location(Unused*, ResultPointer<std::uint32_t>* panel) {
  return sources::query_targeted_location(*device_environment_.platform, panel->result);
}

hresult Dispatcher::source_group_type_for_vid_pid(VidPid* texts, ResultPointer<std::uint32_t>* type) {
  return sources::query_source_group_type_for_vid_pid(*device_environment_.platform, texts->vid, texts->pid,
                                                      type->result);
}

// ---- Devices ---------------------------------------------------------------------------------

hresult Dispatcher::open_device(const wchar_t* device_id, const vexcap_open_params* params) {
  std::shared_ptr<device::Device> device = device::Device::create(device_environment_);
  if (!device) return HR_FAIL;
  // Returns once both clients are initialized, or when vexcap_exit ends the retries.
  const hresult opened = device->open(device_id, *params);
  if (failed(opened)) {
    VXLOG('E', "Device open abandoned: the library is exiting");
    device->close();  // a client initialized meanwhile lets its camera go
    return opened;
  }
  devices_.put(params->stream_mode, std::move(device));
  return HR_OK;
}

hresult Dispatcher::close_device(Unused*, vexcap_device* handle) {
  const std::shared_ptr<device::Device> device = devices_.take(*handle);
  if (!device) return HR_FAIL;
  device->close();
  return HR_OK;
}

hresult Dispatcher::recover_capture(Unused*, std::weak_ptr<capture::CaptureClient>* client) {
  // Resolved here, so the client's last release (a device closed meanwhile) is on this thread.
  const std::shared_ptr<capture::CaptureClient> failed_client = client->lock();
  if (failed_client) {
    failed_client->handle_capture_failure();
  } else {
    VXLOG('I', "The failed capture's device was closed: nothing to recover");
  }
  return HR_OK;
}

void Dispatcher::end_devices_left_open() {
  const std::vector<std::shared_ptr<device::Device>> open = devices_.take_all();
  if (!open.empty()) VXLOG('W', "Exit with %u device(s) still open: ending their capture", static_cast<unsigned>(open.size()));
  for (const std::shared_ptr<device::Device>& device : open) device->close();
}

// ---- Streaming -------------------------------------------------------------------------------

capture::CaptureClient* Dispatcher::client_for(const vexcap_device& handle, bool by_selector) {
  const std::shared_ptr<device::Device>& device = device_slot(handle);
  if (!device) return nullptr;
  return &(by_selector ? device->client_for_selector(handle.stream_selector) : device->shared_client());
}

hresult Dispatcher::start_streaming(CallbackArgs* callback, vexcap_device* handle) {
  capture::CaptureClient* const client = client_for(*handle, false);
  if (!client) return HR_INVALID_STATE;
  return client->start_streaming(reinterpret_cast<vexcap_frame_callback>(callback->callback),
                                 callback->context);
}

hresult Dispatcher::start_streaming_by_selector(CallbackArgs* callback, vexcap_device* handle) {
  capture::CaptureClient* const client = client_for(*handle, true);
  if (!client) return HR_INVALID_STATE;
  return client->start_streaming(reinterpret_cast<vexcap_frame_callback>(callback->callback),
                                 callback->context);
}

hresult Dispatcher::stop_streaming(Unused*, vexcap_device* handle) {
  capture::CaptureClient* const client = client_for(*handle, false);
  return client ? client->stop_streaming() : HR_INVALID_STATE;
}

hresult Dispatcher::stop_streaming_by_selector(Unused*, vexcap_device* handle) {
  capture::CaptureClient* const client = client_for(*handle, true);
  return client ? client->stop_streaming() : HR_INVALID_STATE;
}

// ---- Device events ---------------------------------------------------------------------------

hresult Dispatcher::register_unsupported_format(CallbackArgs* callback, vexcap_device* handle) {
  const std::shared_ptr<device::Device>& device = device_slot(*handle);
  if (!device) return HR_INVALID_STATE;
  device->shared_client().register_unsupported_format(
      reinterpret_cast<vexcap_unsupported_format_callback>(callback->callback), callback->context);
  return HR_OK;
}

hresult Dispatcher::unregister_unsupported_format(Unused*, vexcap_device* handle) {
  const std::shared_ptr<device::Device>& device = device_slot(*handle);
  if (!device) return HR_INVALID_STATE;
  device->shared_client().unregister_unsupported_format();
  return HR_OK;
}

hresult Dispatcher::register_exclusive_control(CallbackArgs* callback, vexcap_device* handle) {
  const std::shared_ptr<device::Device>& device = device_slot(*handle);
  if (!device) return HR_INVALID_STATE;
  return device::register_exclusive_control_status(
      *device, reinterpret_cast<vexcap_excl_ctrl_status_callback>(callback->callback), callback->context);
}

hresult Dispatcher::unregister_exclusive_control(Unused*, vexcap_device* handle) {
  const std::shared_ptr<device::Device>& device = device_slot(*handle);
  return device ? device::unregister_exclusive_control_status(*device) : HR_INVALID_STATE;
}

hresult Dispatcher::register_rgb_status(CallbackArgs* callback, vexcap_device* handle) {
  const std::shared_ptr<device::Device>& device = device_slot(*handle);
  if (!device) return HR_INVALID_STATE;
  return device::register_rgb_status(
      *device, reinterpret_cast<vexcap_rgb_status_callback>(callback->callback), callback->context);
}

hresult Dispatcher::unregister_rgb_status(Unused*, vexcap_device* handle) {
  const std::shared_ptr<device::Device>& device = device_slot(*handle);
  return device ? device::unregister_rgb_status(*device) : HR_INVALID_STATE;
}

hresult Dispatcher::register_rgb_stopped(CallbackArgs* callback, vexcap_device* handle) {
  const std::shared_ptr<device::Device>& device = device_slot(*handle);
  if (!device) return HR_INVALID_STATE;
  return device::register_rgb_stopped(
      *device, reinterpret_cast<vexcap_rgb_stopped_callback>(callback->callback), callback->context);
}

hresult Dispatcher::unregister_rgb_stopped(Unused*, vexcap_device* handle) {
  const std::shared_ptr<device::Device>& device = device_slot(*handle);
  return device ? device::unregister_rgb_stopped(*device) : HR_INVALID_STATE;
}

// ---- Controls and properties -----------------------------------------------------------------

hresult Dispatcher::set_exposure(Value<std::int64_t>* exposure, vexcap_device* handle) {
  const std::shared_ptr<device::Device>& device = device_slot(*handle);
  return device ? device->set_exposure(exposure->value) : HR_INVALID_STATE;
}

hresult Dispatcher::set_iso_speed(Value<std::uint32_t>* iso_speed, vexcap_device* handle) {
  const std::shared_ptr<device::Device>& device = device_slot(*handle);
  return device ? device->set_iso_speed(iso_speed->value) : HR_INVALID_STATE;
}

hresult Dispatcher::set_led_power(Value<std::uint32_t>* power, vexcap_device* handle) {
  const std::shared_ptr<device::Device>& device = device_slot(*handle);
  return device ? device->set_led_power(power->value) : HR_INVALID_STATE;
}

hresult Dispatcher::get_exposure(std::uint64_t* exposure, vexcap_device* handle) {
  const std::shared_ptr<device::Device>& device = device_slot(*handle);
  return device ? device->get_exposure(*exposure) : HR_INVALID_STATE;
}

hresult Dispatcher::get_iso_speed(std::uint32_t* iso_speed, vexcap_device* handle) {
  const std::shared_ptr<device::Device>& device = device_slot(*handle);
  return device ? device->get_iso_speed(*iso_speed) : HR_INVALID_STATE;
}

hresult Dispatcher::get_led_power(std::uint32_t* power, vexcap_device* handle) {
  const std::shared_ptr<device::Device>& device = device_slot(*handle);
  return device ? device->get_led_power(*power) : HR_INVALID_STATE;
}

hresult Dispatcher::set_device_property(vexcap_property* property, vexcap_device* handle) {
  const std::shared_ptr<device::Device>& device = device_slot(*handle);
  return device ? device->set_property(*property) : HR_INVALID_STATE;
}

hresult Dispatcher::get_device_property(vexcap_property* property, vexcap_device* handle) {
  const std::shared_ptr<device::Device>& device = device_slot(*handle);
  return device ? capture::get_device_property(device->exclusive_client(), *property) : HR_INVALID_STATE;
}

}  // namespace vexcap::api
