// Moves of fixed-size pixel units (1 or 2 bytes) over a rectangle: the building blocks of the
// frame rotations. A plane is `cols` x `rows` units whose rows lie `pitch` bytes apart.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vexcap::frames {

struct UnitGrid {
  std::size_t unit;  // bytes per unit
  std::uint32_t cols;
  std::uint32_t rows;
};

// Unit (y, x) of src goes to row x, column (rows - 1 - y) of dst (a quarter turn clockwise).
// dst has `grid.cols` rows of `grid.rows` units.
void rotate_units_clockwise(const std::uint8_t* src, std::size_t src_pitch, UnitGrid grid,
                            std::uint8_t* dst, std::size_t dst_pitch);

// Unit (y, x) of src goes to row (cols - 1 - x), column y of dst.
void rotate_units_counterclockwise(const std::uint8_t* src, std::size_t src_pitch, UnitGrid grid,
                                   std::uint8_t* dst, std::size_t dst_pitch);

// One row read backwards: unit i of dst is unit (units - 1 - i) of src. dst and src do not
// overlap.
void reverse_units_copy(const std::uint8_t* src, std::uint8_t* dst, std::size_t units,
                        std::size_t unit);

}  // namespace vexcap::frames
