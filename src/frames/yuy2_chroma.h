// Chroma fix-ups for YUY2 frames (each 4-byte group is Y0 U Y1 V for two neighbouring pixels)
// after their 2-byte units were moved by a rotation.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vexcap::frames {

// After a quarter turn every new row carries only U or only V bytes. For each pair of rows
// (r, r + 1), r even, and each even column c below width - 1, exchanges the chroma byte of
// pixel (r, c + 1) with that of pixel (r + 1, c). Rows are width x 2 bytes apart.
void repair_yuy2_chroma_after_quarter_turn(std::uint8_t* data, std::uint32_t width,
                                           std::uint32_t height);

// After a half turn every group reads Y1 V Y0 U: exchanges bytes 1 and 3 of every whole 4-byte
// group in [data, data + bytes). Works in 16-byte blocks with a tail of single groups; a
// trailing part shorter than a group is left alone.
void swap_yuy2_chroma_order(std::uint8_t* data, std::size_t bytes);

}  // namespace vexcap::frames
