#include "frames/unit_moves.h"

#include <cstring>

namespace vexcap::frames {

void rotate_units_clockwise(const std::uint8_t* src, std::size_t src_pitch, UnitGrid grid,
                            std::uint8_t* dst, std::size_t dst_pitch) {
  for (std::uint32_t y = 0; y < grid.rows; ++y) {
    const std::uint8_t* src_row = src + y * src_pitch;
    const std::size_t dst_col = grid.rows - 1 - y;
    for (std::uint32_t x = 0; x < grid.cols; ++x) {
      std::memcpy(dst + x * dst_pitch + dst_col * grid.unit, src_row + x * grid.unit, grid.unit);
    }
  }
}

void rotate_units_counterclockwise(const std::uint8_t* src, std::size_t src_pitch, UnitGrid grid,
                                   std::uint8_t* dst, std::size_t dst_pitch) {
  for (std::uint32_t y = 0; y < grid.rows; ++y) {
    const std::uint8_t* src_row = src + y * src_pitch;
    for (std::uint32_t x = 0; x < grid.cols; ++x) {
      const std::size_t dst_row = grid.cols - 1 - x;
      std::memcpy(dst + dst_row * dst_pitch + std::size_t{y} * grid.unit, src_row + x * grid.unit,
                  grid.unit);
    }
  }
}

void reverse_units_copy(const std::uint8_t* src, std::uint8_t* dst, std::size_t units,
                        std::size_t unit) {
  for (std::size_t i = 0; i < units; ++i)
    std::memcpy(dst + i * unit, src + (units - 1 - i) * unit, unit);
}

}  // namespace vexcap::frames
