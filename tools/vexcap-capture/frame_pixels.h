// Reading a delivered frame's pixels: format names, buffer sizes, NV12 to RGB for viewing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "vexcap/vexcap.h"

namespace vexcap::tool {

const char* pixel_format_name(std::uint32_t pixel_format);  // "Gray8", "Gray16", "NV12", ...
// Bytes of one row of pixels (no padding); 0 for a format the tool cannot read.
std::size_t pixel_row_bytes(std::uint32_t pixel_format, std::uint32_t width);
// Bytes the frame's buffer holds: stride x height, and half again for NV12's chroma plane.
std::size_t frame_buffer_bytes(const vexcap_frame& frame);

// BT.601 limited range, as cameras deliver NV12: packed RGB rows of width x 3 bytes.
std::vector<std::uint8_t> nv12_to_rgb(const vexcap_frame& frame);

}  // namespace vexcap::tool
