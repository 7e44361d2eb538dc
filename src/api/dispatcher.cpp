#include "api/dispatcher.h"

#include <exception>
#include <new>

#include "device/device.h"
#include "device/device_events.h"
#include "api/messages.h"
#include "sources/discovery.h"
#include "capture/client_properties.h"
#include "api/request_args.h"
#include "log/log.h"
#include "platform/port.h"

namespace vexcap::api {

namespace {

template <typename Callback>
Callback callback_of(std::uintptr_t callback_args) {
  return reinterpret_cast<Callback>(from_param<CallbackArgs>(callback_args)->callback);
}

void* context_of(std::uintptr_t callback_args) { return from_param<CallbackArgs>(callback_args)->context; }

hresult run_device_event(std::uint32_t message, device::Device& device, std::uintptr_t callback_args) {
  switch (message) {
    case kMsgRegisterExclusiveControl:
      return register_exclusive_control_status(
          device, callback_of<vexcap_excl_ctrl_status_callback>(callback_args), context_of(callback_args));
    case kMsgUnregisterExclusiveControl:
      return unregister_exclusive_control_status(device);
    case kMsgRegisterRgbStatus:
      return register_rgb_status(device, callback_of<vexcap_rgb_status_callback>(callback_args),
                                 context_of(callback_args));
    case kMsgUnregisterRgbStatus:
      return unregister_rgb_status(device);
    case kMsgRegisterRgbStopped:
      return register_rgb_stopped(device, callback_of<vexcap_rgb_stopped_callback>(callback_args),
                                  context_of(callback_args));
    default:  // kMsgUnregisterRgbStopped
      return unregister_rgb_stopped(device);
  }
}

}  // namespace

Dispatcher::Dispatcher(std::shared_ptr<RequestSlots> slots, std::shared_ptr<device::OpenDevices> devices,
                       device::DeviceEnvironment device_environment)
    : slots_holder_(std::move(slots)),
      slots_(*slots_holder_),
      devices_(std::move(devices)),
      device_environment_(std::move(device_environment)),
      runtime_(process_runtime()) {}

Dispatcher::~Dispatcher() = default;

bool Dispatcher::dispatch(std::uint32_t message, std::uintptr_t wparam, std::intptr_t lparam) {
  switch (message) {
    case kMsgExit:
      end_devices_left_open();  // their captures go before Media Foundation and the runtime
      runtime_.shutdown();
      slots_.result = HR_OK;
      return true;
    case kMsgVidPidUsed:
      handle_vid_pid_used(wparam, lparam);  // answers in the boolean slot only
      return false;
    case kMsgCaptureFailed:
      handle(message, wparam, lparam);  // recovery leaves the result slot alone
      return false;
    default:
      slots_.result = handle(message, wparam, lparam);
      return false;
  }
}

hresult Dispatcher::handle(std::uint32_t message, std::uintptr_t wparam, std::intptr_t lparam) {
  // A platform failure that a handler leaves uncaught ends the request, never the thread.
  try {
    return run_handler(message, wparam, lparam);
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

hresult Dispatcher::run_handler(std::uint32_t message, std::uintptr_t wparam, std::intptr_t lparam) {
  switch (message) {
    case kMsgRuntimeStartup:
      return runtime_.start();
    case kMsgDeviceCapabilities:
      return sources::query_device_capabilities(*device_environment_.platform, from_param<const wchar_t>(wparam),
                                               from_param<ResultPointerArg<std::uint8_t>>(lparam)->result);
    case kMsgDeviceLocations:
      return sources::query_device_locations(*device_environment_.platform, from_param<const wchar_t>(wparam),
                                            from_param<ResultPointerArg<std::uint8_t>>(lparam)->result);
    case kMsgSourceGroupType:
      return sources::query_source_group_type(*device_environment_.platform, from_param<ResultPointerArg<std::uint32_t>>(lparam)->result);
    case kMsgTargetedLocation:
      return sources::query_targeted_location(*device_environment_.platform, from_param<ResultPointerArg<std::uint32_t>>(lparam)->result);
    case kMsgSourceGroupTypeForVidPid: {
      const auto* texts = from_param<VidPidTextArgs>(wparam);
      return sources::query_source_group_type_for_vid_pid(*device_environment_.platform, 
          texts->vid, texts->pid, from_param<ResultPointerArg<std::uint32_t>>(lparam)->result);
    }
    case kMsgDeviceOpen:
      return open_device(from_param<const wchar_t>(wparam), *from_param<vexcap_open_params>(lparam));
    case kMsgDeviceClose:
      return close_device(*from_param<vexcap_device>(lparam));
    case kMsgRegisterUnsupportedFormat:
    case kMsgUnregisterUnsupportedFormat:
      return unsupported_format_event(message, *from_param<vexcap_device>(lparam), wparam);
    case kMsgRegisterExclusiveControl:
    case kMsgUnregisterExclusiveControl:
    case kMsgRegisterRgbStatus:
    case kMsgUnregisterRgbStatus:
    case kMsgRegisterRgbStopped:
    case kMsgUnregisterRgbStopped: {
      const std::shared_ptr<device::Device>& device = device_slot(*from_param<vexcap_device>(lparam));
      return device ? run_device_event(message, *device, wparam) : HR_INVALID_STATE;
    }
    case kMsgCaptureFailed: {
      // Resolved here, so the client's last release (a device closed meanwhile) is on this thread.
      const std::shared_ptr<capture::CaptureClient> failed_client = from_param<std::weak_ptr<capture::CaptureClient>>(lparam)->lock();
      if (failed_client) {
        failed_client->handle_capture_failure();
      } else {
        VXLOG('I', "The failed capture's device was closed: nothing to recover");
      }
      return HR_OK;
    }
    case kMsgStartStreaming:
      return start_streaming(*from_param<vexcap_device>(lparam), wparam, false);
    case kMsgStartStreamingEx:
      return start_streaming(*from_param<vexcap_device>(lparam), wparam, true);
    case kMsgStopStreaming:
      return stop_streaming(*from_param<vexcap_device>(lparam), false);
    case kMsgStopStreamingEx:
      return stop_streaming(*from_param<vexcap_device>(lparam), true);
    case kMsgSetExposure:
    case kMsgSetIsoSpeed:
    case kMsgSetLedPower:
    case kMsgGetExposure:
    case kMsgGetIsoSpeed:
    case kMsgGetLedPower:
      return run_control(message, wparam, *from_param<vexcap_device>(lparam));

    case kMsgSetDeviceProperty:
    case kMsgGetDeviceProperty:
      return run_device_property(message, *from_param<vexcap_property>(wparam),
                                 *from_param<vexcap_device>(lparam));
    default:
      return HR_NOTIMPL;
  }
}

void Dispatcher::handle_vid_pid_used(std::uintptr_t wparam, std::intptr_t lparam) {
  const auto* texts = from_param<VidPidArgs>(lparam);
  bool used = false;
  try {
    sources::query_vid_pid_used(*device_environment_.platform, from_param<const wchar_t>(wparam), texts->vid, texts->pid, &used);
  } catch (const platform::PlatformError& error) {
    VXLOG('E', "exception: %ws", error.message().c_str());
  }
  if (used) slots_.boolean = 1;
}

hresult Dispatcher::open_device(const wchar_t* device_id, const vexcap_open_params& params) {
  std::shared_ptr<device::Device> device = device::Device::create(device_environment_);
  if (!device) return HR_FAIL;
  // Returns once both clients are initialized, or when vexcap_exit ends the retries.
  const hresult opened = device->open(device_id, params);
  if (failed(opened)) {
    VXLOG('E', "Device open abandoned: the library is exiting");
    device->close();  // a client initialized meanwhile lets its camera go
    return opened;
  }
  vexcap_device handle{params.stream_mode, 0, 0};
  std::shared_ptr<device::Device>& slot = device_slot(handle);
  if (slot) unreachable_devices_.push_back(std::move(slot));
  slot = std::move(device);
  devices_->set(device::OpenDevices::slot_of(params.stream_mode), slot);
  return HR_OK;
}

hresult Dispatcher::close_device(const vexcap_device& handle) {
  std::shared_ptr<device::Device>& slot = device_slot(handle);
  if (!slot) return HR_FAIL;
  std::shared_ptr<device::Device> device = std::move(slot);  // a second close finds the slot empty
  devices_->set(device::OpenDevices::slot_of(handle.stream_mode), nullptr);
  device->close();
  return HR_OK;
}

void Dispatcher::end_devices_left_open() {
  std::vector<std::shared_ptr<device::Device>> open = std::move(unreachable_devices_);
  for (std::shared_ptr<device::Device>* slot : {&mode_zero_device_, &non_zero_mode_device_})
    if (*slot) open.push_back(std::move(*slot));
  devices_->set(0, nullptr);
  devices_->set(1, nullptr);
  if (!open.empty()) VXLOG('W', "Exit with %u device(s) still open: ending their capture", static_cast<unsigned>(open.size()));
  for (const std::shared_ptr<device::Device>& device : open) device->close();
}

hresult Dispatcher::start_streaming(const vexcap_device& handle, std::uintptr_t callback_args,
                                    bool by_selector) {
  const std::shared_ptr<device::Device>& device = device_slot(handle);
  if (!device) return HR_INVALID_STATE;
  const auto* args = from_param<CallbackArgs>(callback_args);
  std::shared_ptr<capture::CaptureClient> client =
      by_selector ? device->client_for_selector(handle.stream_selector) : device->shared_client();
  return client->start_streaming(reinterpret_cast<vexcap_frame_callback>(args->callback), args->context);
}

// Both answer S_OK in every case: a second registration or an unneeded unregistration is ignored.
hresult Dispatcher::unsupported_format_event(std::uint32_t message, const vexcap_device& handle,
                                             std::uintptr_t callback_args) {
  const std::shared_ptr<device::Device>& device = device_slot(handle);
  if (!device) return HR_INVALID_STATE;
  const std::shared_ptr<capture::CaptureClient> shared = device->shared_client();
  if (message == kMsgRegisterUnsupportedFormat) {
    const auto* args = from_param<CallbackArgs>(callback_args);
    shared->register_unsupported_format(
        reinterpret_cast<vexcap_unsupported_format_callback>(args->callback), args->context);
  } else {
    shared->unregister_unsupported_format();
  }
  return HR_OK;
}

hresult Dispatcher::stop_streaming(const vexcap_device& handle, bool by_selector) {
  const std::shared_ptr<device::Device>& device = device_slot(handle);
  if (!device) return HR_INVALID_STATE;
  std::shared_ptr<capture::CaptureClient> client =
      by_selector ? device->client_for_selector(handle.stream_selector) : device->shared_client();
  return client->stop_streaming();
}

hresult Dispatcher::run_control(std::uint32_t message, std::uintptr_t wparam,
                                const vexcap_device& handle) {
  const std::shared_ptr<device::Device>& device = device_slot(handle);
  if (!device) return HR_INVALID_STATE;
  switch (message) {
    case kMsgSetExposure:
      return device->set_exposure(from_param<ValueArg<std::int64_t>>(wparam)->value);
    case kMsgSetIsoSpeed:
      return device->set_iso_speed(from_param<ValueArg<std::uint32_t>>(wparam)->value);
    case kMsgSetLedPower:
      return device->set_led_power(from_param<ValueArg<std::uint32_t>>(wparam)->value);
    case kMsgGetExposure:
      return device->get_exposure(*from_param<std::uint64_t>(wparam));
    case kMsgGetIsoSpeed:
      return device->get_iso_speed(*from_param<std::uint32_t>(wparam));
    default:  // kMsgGetLedPower
      return device->get_led_power(*from_param<std::uint32_t>(wparam));
  }
}

// The set runs on the device (it involves both clients), the get on its exclusive client.
hresult Dispatcher::run_device_property(std::uint32_t message, vexcap_property& property,
                                        const vexcap_device& handle) {
  const std::shared_ptr<device::Device>& device = device_slot(handle);
  if (!device) return HR_INVALID_STATE;
  if (message == kMsgSetDeviceProperty) return device->set_property(property);
  return capture::get_device_property(*device->exclusive_client(), property);
}

std::shared_ptr<device::Device>& Dispatcher::device_slot(const vexcap_device& handle) {
  return handle.stream_mode != 0 ? non_zero_mode_device_ : mode_zero_device_;
}

}  // namespace vexcap::api
