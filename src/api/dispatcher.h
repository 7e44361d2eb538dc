// Maps request messages to their handlers. Lives on the request thread for its lifetime
// (the state a window procedure keeps), so every handler runs there.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "api/request_transport.h"
#include "api/runtime_startup.h"
#include "device/device_environment.h"
#include "device/open_devices.h"
#include "vexcap/vexcap.h"

namespace vexcap::device {
class Device;
}

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
  hresult handle(std::uint32_t message, std::uintptr_t wparam, std::intptr_t lparam);
  hresult run_handler(std::uint32_t message, std::uintptr_t wparam, std::intptr_t lparam);
  void handle_vid_pid_used(std::uintptr_t wparam, std::intptr_t lparam);
  hresult open_device(const wchar_t* device_id, const vexcap_open_params& params);
  hresult close_device(const vexcap_device& handle);
  // At exit, before the runtimes stop: every device still open has its readers, sessions and
  // captures ended. The host's handles stay the host's to free.
  void end_devices_left_open();
  hresult start_streaming(const vexcap_device& handle, std::uintptr_t callback_args, bool by_selector);
  hresult stop_streaming(const vexcap_device& handle, bool by_selector);
  hresult unsupported_format_event(std::uint32_t message, const vexcap_device& handle,
                                   std::uintptr_t callback_args);
  // Messages 1035 to 1040: the device controls.
  hresult run_control(std::uint32_t message, std::uintptr_t wparam, const vexcap_device& handle);
  // Messages 1041 and 1042: the device properties.
  hresult run_device_property(std::uint32_t message, vexcap_property& property,
                              const vexcap_device& handle);

  // One device object per stream-mode class: mode 0, and any non-zero mode.
  std::shared_ptr<device::Device>& device_slot(const vexcap_device& handle);

  const std::shared_ptr<RequestSlots> slots_holder_;
  RequestSlots& slots_;
  const std::shared_ptr<device::OpenDevices> devices_;
  const device::DeviceEnvironment device_environment_;
  RuntimeLifetime& runtime_;
  std::shared_ptr<device::Device> mode_zero_device_;
  std::shared_ptr<device::Device> non_zero_mode_device_;
  // Devices replaced by a second open of their slot: unreachable, but kept running.
  std::vector<std::shared_ptr<device::Device>> unreachable_devices_;
};

}  // namespace vexcap::api
