// DeviceInformation records as the port reports them.
#pragma once

#include <memory>

#include "platform/port.h"
#include "platform/windows/com_ptr.h"
#include "platform/windows/winrt/enumeration_abi.h"

namespace vexcap::windows {

// Null when the platform gave no record.
std::shared_ptr<const platform::DeviceInformation> device_information_of(
    const ComPtr<abi::IDeviceInformation>& information);

}  // namespace vexcap::windows
