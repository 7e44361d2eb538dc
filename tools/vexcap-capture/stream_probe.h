// One stream of the compliance check: start, take frames for a while and check every record
// (layout, reserved fields, rising timestamps), stop.
#pragma once

#include <cstdint>
#include <string>

#include "vexcap/vexcap.h"

namespace vexcap::tool {

struct StreamProbe {
  std::uint64_t frames = 0;
  double frames_per_second = 0;
  double first_frame_ms = 0;   // from the start call's return to the first frame
  std::string first_problem;   // empty when every record was sound
  vexcap_frame first{};        // the first frame's metadata (its data pointer is no longer valid)
};

// Throws CallError when starting or stopping fails, ToolError when no frame comes within
// `first_frame_limit_s`.
StreamProbe probe_stream(vexcap_device* device, std::uint32_t selector, double seconds,
                         double first_frame_limit_s);

// "640x480 Gray8, 30.0 fps, 60 frames"
std::string probe_text(const StreamProbe& probe);

}  // namespace vexcap::tool
