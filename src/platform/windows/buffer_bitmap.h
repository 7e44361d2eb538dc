// A bitmap made from a buffer-only frame (BufferMediaFrame): the frame's bytes read in the
// layout its format names.
#pragma once

#include <memory>

#include "platform/port.h"
#include "platform/windows/imaging.h"

namespace vexcap::windows {

// Null when the format is not one a bitmap can hold or the buffer is too short for it.
std::shared_ptr<platform::Bitmap> bitmap_from_frame_buffer(WinrtBuffer& buffer, const platform::FrameFormat& format);

}  // namespace vexcap::windows
