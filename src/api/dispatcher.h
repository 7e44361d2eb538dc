// Maps request messages to their handlers. Lives on the request thread for its lifetime
// (the state a window procedure keeps), so every handler runs there.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "api/request_transport.h"
#include "api/requests.h"
#include "api/runtime_startup.h"
#include "common/thread_checker.h"
#include "device/device_environment.h"
#include "device/device_slots.h"
#include "device/open_devices.h"
#include "vexcap/vexcap.h"

namespace vexcap::api {

class Dispatcher final : public RequestHandler {
 public:
  Dispatcher(std::shared_ptr<RequestSlots> slots, std::shared_ptr<device::OpenDevices> devices,
             device::DeviceEnvironment device_environment);
  ~Dispatcher() override;
  Dispatcher(const Dispatcher&) = delete;
  Dispatcher& operator=(const Dispatcher&) = delete;

  // Runs one request message (1024 to 1054). Returns true for the exit request, after which
  // the request thread ends its loop.
  bool dispatch(std::uint32_t message, std::uintptr_t wparam, std::intptr_t lparam) override;

 private:
  // The handler of one request, reached through its declaration's records.
  using Route = hresult (*)(Dispatcher&, std::uintptr_t wparam, std::intptr_t lparam);
  struct Routes;
  template <typename R, auto Handler>
  static constexpr Route route();

  hresult handle(std::uint32_t message, std::uintptr_t wparam, std::intptr_t lparam);
  void vid_pid_used(const wchar_t* group_id, VidPid* texts);

  hresult start_runtimes(Unused*, Unused*);
  hresult device_capabilities(const wchar_t* group_id, ResultPointer<std::uint8_t>* capabilities);
  hresult device_locations(const wchar_t* id_text, ResultPointer<std::uint8_t>* locations);
  hresult source_group_type(Unused*, ResultPointer<std::uint32_t>* type);
  hresult targeted_location(Unused*, ResultPointer<std::uint32_t>* panel);
  hresult source_group_type_for_vid_pid(VidPid* texts, ResultPointer<std::uint32_t>* type);
  hresult open_device(const wchar_t* device_id, const vexcap_open_params* params);
  hresult close_device(Unused*, vexcap_device* handle);
  hresult recover_capture(Unused*, std::weak_ptr<capture::CaptureClient>* client);
  // At exit, before the runtimes stop: every device still open has its readers, sessions and
  // captures ended. The host's handles stay the host's to free.
  void end_devices_left_open();
  hresult start_streaming(CallbackArgs* callback, vexcap_device* handle);
  hresult start_streaming_by_selector(CallbackArgs* callback, vexcap_device* handle);
  hresult stop_streaming(Unused*, vexcap_device* handle);
  hresult stop_streaming_by_selector(Unused*, vexcap_device* handle);
  // Both answer S_OK in every case: a second registration or an unneeded unregistration is ignored.
  hresult register_unsupported_format(CallbackArgs* callback, vexcap_device* handle);
  hresult unregister_unsupported_format(Unused*, vexcap_device* handle);
  hresult register_exclusive_control(CallbackArgs* callback, vexcap_device* handle);
  hresult unregister_exclusive_control(Unused*, vexcap_device* handle);
  hresult register_rgb_status(CallbackArgs* callback, vexcap_device* handle);
  hresult unregister_rgb_status(Unused*, vexcap_device* handle);
  hresult register_rgb_stopped(CallbackArgs* callback, vexcap_device* handle);
  hresult unregister_rgb_stopped(Unused*, vexcap_device* handle);
  hresult set_exposure(Value<std::int64_t>* exposure, vexcap_device* handle);
  hresult set_iso_speed(Value<std::uint32_t>* iso_speed, vexcap_device* handle);
  hresult set_led_power(Value<std::uint32_t>* power, vexcap_device* handle);
  hresult get_exposure(std::uint64_t* exposure, vexcap_device* handle);
  hresult get_iso_speed(std::uint32_t* iso_speed, vexcap_device* handle);
  hresult get_led_power(std::uint32_t* power, vexcap_device* handle);
  // The set runs on the device (it involves both clients), the get on its exclusive client.
  hresult set_device_property(vexcap_property* property, vexcap_device* handle);
  hresult get_device_property(vexcap_property* property, vexcap_device* handle);

  // The client a streaming request addresses; null without a device.
  capture::CaptureClient* client_for(const vexcap_device& handle, bool by_selector);

  const std::shared_ptr<device::Device>& device_slot(const vexcap_device& handle) const {
    return devices_.find(handle);
  }

  const std::shared_ptr<RequestSlots> slots_holder_;
  RequestSlots& slots_;
  const device::DeviceEnvironment device_environment_;
  RuntimeLifetime& runtime_;
  device::DeviceSlots devices_;
  const ThreadChecker request_thread_;  // built on the request thread, which runs every handler
};

}  // namespace vexcap::api
