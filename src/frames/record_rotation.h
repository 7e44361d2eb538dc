// Builds a frame record's private copy of the pixels, upright according to the rotation the
// frame source declares.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/port.h"
#include "vexcap/vexcap.h"

namespace vexcap::frames {

// Sets record.data to a new C-heap block made from the `capacity` locked bytes at `pixels` in
// one pass: turned by 90 or 270 into a packed buffer (width, height and stride follow), turned
// by 180 with every byte of the capacity kept, or copied as it is when the source declares no
// rotation, another angle, or a layout the bytes do not hold.
void copy_pixels_upright(platform::FrameSource* source, const std::uint8_t* pixels,
                         std::size_t capacity, vexcap_frame& record);

}  // namespace vexcap::frames
