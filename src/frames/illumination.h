// Reads whether the IR illuminator lit a frame, from the frame's capture metadata.
#pragma once

#include <cstdint>

#include "common/hresult.h"
#include "platform/port.h"

namespace vexcap::frames {

// On success stores the metadata value. A missing metadata block or attribute sets `value` to
// 1 and answers the failure; a sample that cannot be reached leaves `value` untouched.
hresult read_frame_illumination(platform::Frame& frame, std::uint64_t& value);

}  // namespace vexcap::frames
