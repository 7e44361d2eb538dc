#include "capture/led_torch.h"

#include <memory>

#include "capture/capture_client.h"
#include "controls/platform_failure.h"
#include "log/log.h"
#include "platform/port.h"

namespace vexcap::capture {

namespace {

// Fetched afresh at every step: nothing is cached between calls.
std::shared_ptr<platform::TorchControl> torch_control(capture::CaptureClient& client) {
  const std::shared_ptr<platform::FrameSource> source = client.frame_source();
  return source ? source->controller()->torch_control() : nullptr;
}

std::shared_ptr<platform::InfraredTorchControl> infrared_torch_control(capture::CaptureClient& client) {
  const std::shared_ptr<platform::FrameSource> source = client.frame_source();
  return source ? source->controller()->infrared_torch_control() : nullptr;
}

bool torch_supported(capture::CaptureClient& client) {
  const std::shared_ptr<platform::TorchControl> torch = torch_control(client);
  return torch && torch->supported();
}

hresult set_infrared_torch_power(capture::CaptureClient& client, std::int32_t power) {
  VXLOG('I', "Setting ir torch control: Power= %u", static_cast<std::uint32_t>(power));
  infrared_torch_control(client)->set_current_mode(power != 0 ? platform::InfraredTorchMode::On
                                                              : platform::InfraredTorchMode::Off);
  if (power == 0) return HR_OK;
  if (power > infrared_torch_control(client)->max_power()) {
    power = infrared_torch_control(client)->max_power();
  } else if (power < infrared_torch_control(client)->min_power()) {
    power = infrared_torch_control(client)->min_power();
  }
  infrared_torch_control(client)->set_power(power);
  return HR_OK;
}

}  // namespace

hresult set_led_power(capture::CaptureClient& client, std::uint32_t power) {
  controls::ExtensionUnit* unit = client.extension_unit();
  if (unit == nullptr || unit->write_led_power(power) != HR_OK) {
    // Without an ordinary torch this fails, even on a camera with an infrared torch.
    const hresult enabled = enable_led_power_control(client, true);
    if (enabled != HR_OK) return enabled;
    const hresult set = set_torch_power(client, static_cast<std::int32_t>(power));
    if (set != HR_OK) return set;
  }
  client.control_tracker().store_led_power(power);
  return HR_OK;
}

hresult enable_led_power_control(capture::CaptureClient& client, bool enable) {
  if (!client.initialized()) return HR_INVALID_STATE;
  try {
    if (!torch_supported(client)) return HR_NOT_FOUND;
    torch_control(client)->set_enabled(enable);
    return HR_OK;
  } catch (const platform::PlatformError& error) {
    VXLOG('I', "enable_led_power_control-> exception: %ws", error.message().c_str());
    return controls::failure_code(error);
  }
}

hresult set_torch_power(capture::CaptureClient& client, std::int32_t power) {
  if (!client.initialized()) return HR_INVALID_STATE;
  try {
    const std::shared_ptr<platform::InfraredTorchControl> infrared = infrared_torch_control(client);
    if (infrared && infrared->is_supported()) return set_infrared_torch_power(client, power);
    if (!torch_supported(client)) {
      VXLOG('I', "TorchControl not supported");
      return HR_NOT_FOUND;
    }
    VXLOG('I', "Setting torch control: Power= %u", static_cast<std::uint32_t>(power));
    if (!torch_control(client)->power_supported()) {
      VXLOG('I', "TorchControl->Power not supported");
      return HR_OK;  // a torch without power control counts as success
    }
    torch_control(client)->set_power_percent(static_cast<float>(power));
    return HR_OK;
  } catch (const platform::PlatformError& error) {
    VXLOG('I', "TorchControl-> exception: %ws", error.message().c_str());
    return controls::failure_code(error);
  }
}

hresult get_torch_power(capture::CaptureClient& client, std::uint32_t& power) {
  if (!client.initialized()) return HR_INVALID_STATE;
  try {
    if (!torch_supported(client)) {
      VXLOG('I', "TorchControl not supported");
      return HR_NOT_FOUND;
    }
    // The setter's text on purpose; hosts' log readers know it. It prints the slot's address.
    VXLOG('I', "Setting torch control: Power= %u",
          static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(&power)));
    if (!torch_control(client)->power_supported()) {
      VXLOG('I', "TorchControl->Power not supported");
      return HR_OK;
    }
    power = static_cast<std::uint32_t>(static_cast<std::int32_t>(torch_control(client)->power_percent()));
    return HR_OK;
  } catch (const platform::PlatformError& error) {
    VXLOG('I', "TorchControl-> exception: %ws", error.message().c_str());
    return controls::failure_code(error);
  }
}

}  // namespace vexcap::capture
