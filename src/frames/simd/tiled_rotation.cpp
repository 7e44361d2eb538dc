#include "frames/simd/tiled_rotation.h"

namespace vexcap::frames {

// Strips of `shape.cols` source columns, walked down the source: each strip fills
// `shape.cols` destination rows, and the source lines it reads serve the next strips while
// they are still cached.
void rotate_clockwise_in_tiles(const std::uint8_t* src, std::size_t src_pitch, UnitGrid grid,
                               std::uint8_t* dst, std::size_t dst_pitch, TileShape shape,
                               TileTurn turn) {
  const std::uint32_t tiled_cols = grid.cols - grid.cols % shape.cols;
  const std::uint32_t tiled_rows = grid.rows - grid.rows % shape.rows;
  for (std::uint32_t x = 0; x < tiled_cols; x += shape.cols) {
    for (std::uint32_t y = 0; y < tiled_rows; y += shape.rows) {
      turn(src + y * src_pitch + x * grid.unit, src_pitch,
           dst + x * dst_pitch + (grid.rows - y - shape.rows) * grid.unit, dst_pitch);
    }
  }
  // Right strip: destination rows from tiled_cols on, every column.
  rotate_units_clockwise(src + tiled_cols * grid.unit, src_pitch,
                         {grid.unit, grid.cols - tiled_cols, grid.rows},
                         dst + tiled_cols * dst_pitch, dst_pitch);
  // Bottom strip: the leftmost destination columns of the tiled rows.
  rotate_units_clockwise(src + tiled_rows * src_pitch, src_pitch,
                         {grid.unit, tiled_cols, grid.rows - tiled_rows}, dst, dst_pitch);
}

void rotate_counterclockwise_in_tiles(const std::uint8_t* src, std::size_t src_pitch,
                                      UnitGrid grid, std::uint8_t* dst, std::size_t dst_pitch,
                                      TileShape shape, TileTurn turn) {
  const std::uint32_t tiled_cols = grid.cols - grid.cols % shape.cols;
  const std::uint32_t tiled_rows = grid.rows - grid.rows % shape.rows;
  for (std::uint32_t x = 0; x < tiled_cols; x += shape.cols) {
    for (std::uint32_t y = 0; y < tiled_rows; y += shape.rows) {
      turn(src + y * src_pitch + x * grid.unit, src_pitch,
           dst + (grid.cols - x - shape.cols) * dst_pitch + y * grid.unit, dst_pitch);
    }
  }
  // Right strip: the top destination rows, every column.
  rotate_units_counterclockwise(src + tiled_cols * grid.unit, src_pitch,
                                {grid.unit, grid.cols - tiled_cols, grid.rows}, dst, dst_pitch);
  // Bottom strip: the right destination columns of the tiled rows.
  rotate_units_counterclockwise(src + tiled_rows * src_pitch, src_pitch,
                                {grid.unit, tiled_cols, grid.rows - tiled_rows},
                                dst + (grid.cols - tiled_cols) * dst_pitch + tiled_rows * grid.unit,
                                dst_pitch);
}

}  // namespace vexcap::frames
