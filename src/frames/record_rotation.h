// Builds a frame record's private copy of the pixels, upright according to the rotation the
// frame source declares.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "platform/port.h"
#include "vexcap/vexcap.h"

namespace vexcap::frames {

// Where an NV12 bitmap's planes lie in its locked bytes, as the platform describes them. A
// driver may lay the luma plane out over more rows than the frame has (1080 in 1088), so the
// chroma plane need not start at height x stride.
struct Nv12Planes {
  std::size_t luma_offset = 0;
  std::size_t chroma_offset = 0;
  std::int32_t chroma_stride = 0;
};

// Sets record.data to a new C-heap block made from the `capacity` locked bytes at `pixels` in
// one pass: turned by 90 or 270 into a packed buffer (width, height and stride follow), turned
// by 180 with every byte of the capacity kept, or copied as it is when the source declares no
// rotation, another angle, or a layout the bytes do not hold.
//
// NV12 planes laid out elsewhere than the record's layout (`planes`) are brought together on
// the way: the record holds the luma rows, then the chroma rows at stride x height, with the
// luma plane's stride, as the host reads it.
void copy_pixels_upright(platform::FrameSource* source, const std::uint8_t* pixels,
                         std::size_t capacity, vexcap_frame& record,
                         const std::optional<Nv12Planes>& planes = std::nullopt);

}  // namespace vexcap::frames
