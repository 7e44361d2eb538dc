// Puts a frame upright according to the rotation its source declares.
//
// Quarter turns (90, 270) write a new, tightly packed buffer chosen by the caller; the half turn
// (180) writes a buffer of the same layout. Formats: Gray8, Gray16, NV12 and YUY2
// (frame_layout.h).
#pragma once

#include <cstdint>

#include "frames/frame_layout.h"
#include "frames/simd/pixel_kernels.h"

namespace vexcap::frames {

// Clockwise, in degrees.
enum class Rotation : std::int32_t { By90 = 90, By180 = 180, By270 = 270 };

// The layout after the rotation: a quarter turn exchanges width and height and packs the rows
// (stride = new width in bytes of the first plane); a half turn changes nothing.
FrameLayout rotated_layout(const FrameLayout& layout, Rotation rotation);

// Rotates by 90 (source row y, column x to row x, column H - 1 - y) or 270 (to row W - 1 - x,
// column y) from `src` (frame_bytes(layout) bytes, rows `stride` apart) into `dst`
// (packed_frame_size(format, W, H) bytes). NV12: the Y plane moves as bytes, the chroma plane
// (at H x stride in the source, at H x W in `dst`, rows new-width bytes apart) as U,V pairs
// over (W/2) x (H/2). YUY2: 2-byte units, then the chroma repair of yuy2_chroma.h.
// Returns false and writes nothing for an invalid layout or a half turn.
bool rotate_quarter_turn(const FrameLayout& layout, const std::uint8_t* src, Rotation rotation,
                         std::uint8_t* dst);
// The same with the unit moves of `kernels`; the scalar table gives the function above.
bool rotate_quarter_turn(const FrameLayout& layout, const std::uint8_t* src, Rotation rotation,
                         std::uint8_t* dst, const PixelKernels& kernels);
// The same for an NV12 frame whose chroma plane lies elsewhere: at `src_chroma`, rows
// `chroma_pitch` bytes apart (a platform may lay the luma plane out over more rows than the
// frame has). The destination is packed as above.
bool rotate_quarter_turn(const FrameLayout& layout, const std::uint8_t* src,
                         const std::uint8_t* src_chroma, std::size_t chroma_pitch, Rotation rotation,
                         std::uint8_t* dst, const PixelKernels& kernels);

// The half turn in one pass from `src` into `dst` (`bytes` bytes each, at least
// frame_bytes(layout)): unit (y, x) of every plane comes from unit (rows - 1 - y, cols - 1 - x),
// as bytes for Gray8 and NV12's Y plane, as 2-byte units for Gray16, YUY2 and NV12's chroma
// pairs, and YUY2 groups then get U back before V; every byte outside the planes' pixels (row
// padding, the rest of the buffer) is copied where it is. Returns false and writes nothing for
// an invalid layout or a buffer too short for it.
bool rotate_half_turn_copy(const FrameLayout& layout, const std::uint8_t* src, std::size_t bytes,
                           std::uint8_t* dst, const PixelKernels& kernels);

}  // namespace vexcap::frames
