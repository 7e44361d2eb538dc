// The camera controls a frame record reports: exposure, ISO speed and LED power in force.
#pragma once

#include <optional>

#include "capture/control_tracker.h"
#include "capture/frame_stream.h"
#include "common/hresult.h"
#include "vexcap/vexcap.h"

namespace vexcap::capture {

// Fills `exposure`, `iso_speed` and `led_power` with what `report` allows for this frame (0, 0
// and 255 when nothing is reported). Answers the result of the LED power read when the LED
// power is reported, nullopt otherwise. The report is the tracker's step for this frame
// (ControlTracker::next_frame): a control is reported from the fifth frame after the host set it.
std::optional<hresult> report_controls(FrameCamera& camera, const ControlReport& report,
                                       vexcap_frame& record);

}  // namespace vexcap::capture
