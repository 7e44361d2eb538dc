// Quarter turns in square-ish tiles: the vector kernels transpose whole tiles held in
// registers, this drives them over a plane and leaves the ragged right and bottom strips to
// the scalar moves.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frames/unit_moves.h"

namespace vexcap::frames {

// Turns one tile of `rows` x `cols` units (the tile's own shape) whose first source row is at
// `src`; `dst` is where the tile's first destination row starts.
// Clockwise: destination row j, unit i = source row (rows - 1 - i), unit j.
// Counterclockwise: destination row j, unit i = source row i, unit (cols - 1 - j).
using TileTurn = void (*)(const std::uint8_t* src, std::size_t src_pitch, std::uint8_t* dst,
                          std::size_t dst_pitch);

struct TileShape {
  std::uint32_t cols;  // source units across
  std::uint32_t rows;  // source rows down
};

void rotate_clockwise_in_tiles(const std::uint8_t* src, std::size_t src_pitch, UnitGrid grid,
                               std::uint8_t* dst, std::size_t dst_pitch, TileShape shape,
                               TileTurn turn);

void rotate_counterclockwise_in_tiles(const std::uint8_t* src, std::size_t src_pitch,
                                      UnitGrid grid, std::uint8_t* dst, std::size_t dst_pitch,
                                      TileShape shape, TileTurn turn);

}  // namespace vexcap::frames
