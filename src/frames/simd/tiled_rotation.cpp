#include "frames/simd/tiled_rotation.h"

namespace vexcap::frames {
namespace {

// Tiles every `size` units along `length`, and where that leaves a ragged end one more flush
// with it, overlapping the one before: a quarter turn never writes its source, so units
// written twice get the same bytes twice, where the scalar moves cost ten times a tile's.
template <class Visit>
void for_each_tile_start(std::uint32_t length, std::uint32_t size, Visit visit) {
  std::uint32_t at = 0;
  for (; at + size <= length; at += size) visit(at);
  if (at != length) visit(length - size);
}

}  // namespace

// Strips of `shape.cols` source columns, walked down the source: each strip fills
// `shape.cols` destination rows, and the source lines it reads serve the next strips while
// they are still cached.
void rotate_in_tiles(const QuarterTurnTiles& tiles, TurnDirection direction,
                     const std::uint8_t* src, std::size_t src_pitch, UnitGrid grid,
                     std::uint8_t* dst, std::size_t dst_pitch) {
  const bool clockwise = direction == TurnDirection::Clockwise;
  const UnitTiles* kind = grid.unit == 1 ? &tiles.bytes : grid.unit == 2 ? &tiles.pairs : nullptr;
  if (kind == nullptr || kind->clockwise == nullptr || grid.cols < kind->shape.cols ||
      grid.rows < kind->shape.rows) {
    if (clockwise) {
      rotate_units_clockwise(src, src_pitch, grid, dst, dst_pitch);
    } else {
      rotate_units_counterclockwise(src, src_pitch, grid, dst, dst_pitch);
    }
    return;
  }
  const TileShape shape = kind->shape;
  const TileTurn turn = clockwise ? kind->clockwise : kind->counterclockwise;
  for_each_tile_start(grid.cols, shape.cols, [&](std::uint32_t x) {
    for_each_tile_start(grid.rows, shape.rows, [&](std::uint32_t y) {
      std::uint8_t* to = clockwise
                             ? dst + x * dst_pitch + (grid.rows - y - shape.rows) * grid.unit
                             : dst + (grid.cols - x - shape.cols) * dst_pitch + y * grid.unit;
      turn(src + y * src_pitch + x * grid.unit, src_pitch, to, dst_pitch);
    });
  });
}

}  // namespace vexcap::frames
