// The camera's illuminator: LED power through the extension unit, the infrared torch or the
// ordinary torch, in that order. Request thread; get_torch_power also on frame threads.
#pragma once

#include <cstdint>

#include "common/hresult.h"

namespace vexcap::capture {
class CaptureClient;
}

namespace vexcap::capture {

// Remembers the power in the client's tracker once one mechanism took it.
hresult set_led_power(capture::CaptureClient& client, std::uint32_t power);
// Switches the ordinary torch on or off; HR_NOT_FOUND when the camera has none.
hresult enable_led_power_control(capture::CaptureClient& client, bool enable);
// The infrared torch when supported (0 switches it off), else the ordinary torch.
hresult set_torch_power(capture::CaptureClient& client, std::int32_t power);
// The ordinary torch's power percent; the output stays as it was when it has no power control.
hresult get_torch_power(capture::CaptureClient& client, std::uint32_t& power);

}  // namespace vexcap::capture
