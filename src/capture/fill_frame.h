// Gathers what a frame record carries besides its pixels, and the frame's bitmap.
#pragma once

#include <cstdint>
#include <memory>

#include "capture/frame_stream.h"
#include "platform/port.h"
#include "vexcap/vexcap.h"

namespace vexcap::capture {

// Statuses fill_frame answers besides the ones the frame delivers anyway.
inline constexpr std::uint32_t kFrameTooFast = 105;
inline constexpr std::uint32_t kFrameFormatUnsupported = 16;

// Fills the record's metadata, width, height and pixel format and puts the frame's bitmap in
// `bitmap` (RGB24 frames converted to NV12). Answers kFrameTooFast when the frame exceeds the
// client's frame-rate limit, kFrameFormatUnsupported when no bitmap can be made of it, and
// otherwise the last word of the illumination, RGB24 and LED reads (an HRESULT).
// Platform failures are thrown.
std::uint32_t fill_frame(FrameStream& stream, platform::Frame& frame, vexcap_frame& record,
                         std::shared_ptr<platform::Bitmap>& bitmap);

}  // namespace vexcap::capture
