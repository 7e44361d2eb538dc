// The camera controls of a VideoDeviceController behind the port: exposure, ISO speed, torch
// and infrared torch. Each wrapper holds the platform's control object it was made from.
#pragma once

#include <memory>

#include "platform/port.h"
#include "platform/windows/com_ptr.h"
#include "platform/windows/winrt/devices_abi.h"

namespace vexcap::windows {

// Null when the controller offers no such control.
std::shared_ptr<platform::ExposureControl> exposure_control_of(const ComPtr<abi::IVideoDeviceController>& controller);
std::shared_ptr<platform::IsoSpeedControl> iso_speed_control_of(const ComPtr<abi::IVideoDeviceController>& controller);
std::shared_ptr<platform::TorchControl> torch_control_of(const ComPtr<abi::IVideoDeviceController>& controller);
std::shared_ptr<platform::InfraredTorchControl> infrared_torch_control_of(
    const ComPtr<abi::IVideoDeviceController>& controller);

}  // namespace vexcap::windows
