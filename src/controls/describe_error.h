// Logs the system's description of an HRESULT.
#pragma once

#include "common/hresult.h"
#include "platform/port.h"

namespace vexcap::controls {

// The message number is the low 16 bits when the facility field reads 8 (not the Win32
// facility 7: kept as the camera tools expect), otherwise the HRESULT itself.
std::uint32_t error_message_number(hresult error);

void describe_error(platform::Platform& platform, hresult error);

}  // namespace vexcap::controls
