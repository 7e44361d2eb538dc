// The library's own RGB24 -> NV12 arithmetic (BT.601 limited range, single-precision float).
//
// These are the reference kernels: any faster version must produce the same bytes.
// The first byte of every source pixel is weighted as red, whatever the frame's byte order.
#pragma once

#include <cstdint>

namespace vexcap::frames {

// Converts one pair of RGB24 rows (3 bytes a pixel) into two Y rows of `width` bytes and one
// chroma row of `width` bytes holding U,V per 2x2 block.
// Odd widths: the last block lacks its right column; the last pixel of each row stands in for
// it, only the real pixel's Y is written, and the block's V is dropped because a `width`-byte
// chroma row has room for its U only. Nothing is read or written past `width` pixels.
void convert_rgb24_row_pair(const std::uint8_t* row0, const std::uint8_t* row1, std::uint32_t width,
                            std::uint8_t* y0, std::uint8_t* y1, std::uint8_t* uv);

// The Y byte the conversion writes for one RGB24 pixel (3 bytes at `pixel`).
std::uint8_t rgb24_pixel_luma(const std::uint8_t* pixel);

// Converts a tightly packed RGB24 frame (rows width x 3 bytes apart) into NV12 at `dst`:
// Y plane of width x height bytes, then the chroma plane at width x height, `width` bytes a
// row, height / 2 rows. `dst` holds at least (width x height x 3) / 2 bytes.
// Odd heights: the last row has no partner and its Y bytes are left as they were; a frame of
// one row converts nothing.
void convert_rgb24_plane_to_nv12(const std::uint8_t* src, std::uint32_t width, std::uint32_t height,
                                 std::uint8_t* dst);

}  // namespace vexcap::frames
