// Exposure time, automatic exposure and ISO speed of the camera a capture client has open.
// Request thread only; get_exposure is also called by the frame pipeline.
#pragma once

#include <cstdint>

#include "common/hresult.h"

namespace vexcap::capture {
class CaptureClient;
}

namespace vexcap::capture {

// Clamps to the camera's range, applies it and remembers the applied value in the client's
// tracker. Refused (HR_INVALID_STATE) while automatic exposure is on.
hresult set_exposure(capture::CaptureClient& client, std::int64_t exposure);
// Answers only in manual mode. Platform failures are thrown to the caller.
hresult get_exposure(capture::CaptureClient& client, std::uint64_t& exposure);
// The extension unit's gain first; the second source's ISO control only when that fails.
// Platform failures on the fallback are thrown to the caller.
hresult set_iso_speed(capture::CaptureClient& client, std::uint32_t iso_speed);
// VEXCAP_AUTO_EXPOSURE_ON (513) switches automatic exposure on, every other code off.
hresult set_auto_exposure_mode(capture::CaptureClient& client, std::uint32_t mode);

}  // namespace vexcap::capture
