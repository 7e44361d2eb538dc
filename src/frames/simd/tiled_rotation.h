// Quarter turns in square-ish tiles: the vector kernels transpose whole tiles held in
// registers, this drives them over a plane. Planes smaller than a tile, and unit sizes an
// instruction set has no tiles for, go to the scalar moves.
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

struct UnitTiles {
  TileShape shape;
  TileTurn clockwise;
  TileTurn counterclockwise;
};

// Copies `rows` rows of `bytes` bytes, storing the destination's whole lines past the caches.
using RowStream = void (*)(const std::uint8_t* src, std::size_t src_pitch, std::uint8_t* dst,
                           std::size_t dst_pitch, std::uint32_t rows, std::size_t bytes);

// One instruction set's tiles for 1-byte and 2-byte units.
struct QuarterTurnTiles {
  UnitTiles bytes;
  UnitTiles pairs;
  RowStream stream_rows;
  // Orders the streamed stores before every later store (another thread may read them next).
  void (*finish_streams)();
};

enum class TurnDirection { Clockwise, Counterclockwise };

void rotate_in_tiles(const QuarterTurnTiles& tiles, TurnDirection direction,
                     const std::uint8_t* src, std::size_t src_pitch, UnitGrid grid,
                     std::uint8_t* dst, std::size_t dst_pitch);

// The kernel table's entries for a set of tiles.
template <const QuarterTurnTiles& kTiles>
void rotate_clockwise_in_tiles(const std::uint8_t* src, std::size_t src_pitch, UnitGrid grid,
                               std::uint8_t* dst, std::size_t dst_pitch) {
  rotate_in_tiles(kTiles, TurnDirection::Clockwise, src, src_pitch, grid, dst, dst_pitch);
}

template <const QuarterTurnTiles& kTiles>
void rotate_counterclockwise_in_tiles(const std::uint8_t* src, std::size_t src_pitch,
                                      UnitGrid grid, std::uint8_t* dst, std::size_t dst_pitch) {
  rotate_in_tiles(kTiles, TurnDirection::Counterclockwise, src, src_pitch, grid, dst, dst_pitch);
}

}  // namespace vexcap::frames
