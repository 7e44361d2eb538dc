#include "frames/unit_moves.h"

#include <cstring>
#include <utility>

namespace vexcap::frames {
namespace {

void swap_units(std::uint8_t* a, std::uint8_t* b, std::size_t unit) {
  for (std::size_t i = 0; i < unit; ++i) std::swap(a[i], b[i]);
}

}  // namespace

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

void reverse_units_in_place(std::uint8_t* data, std::size_t pitch, UnitGrid grid) {
  if (grid.rows == 0 || grid.cols == 0) return;
  const std::size_t last_col = grid.cols - 1;
  // Rows from both ends meet in the middle, each exchanged with its partner read backwards.
  for (std::size_t top = 0, bottom = grid.rows - 1; top < bottom; ++top, --bottom) {
    std::uint8_t* a = data + top * pitch;
    std::uint8_t* b = data + bottom * pitch;
    for (std::size_t x = 0; x < grid.cols; ++x) {
      swap_units(a + x * grid.unit, b + (last_col - x) * grid.unit, grid.unit);
    }
  }
  // An odd middle row is its own partner: reverse it within itself.
  if (grid.rows % 2 == 1) {
    std::uint8_t* middle = data + std::size_t{grid.rows / 2} * pitch;
    for (std::size_t x = 0; x < grid.cols / 2; ++x) {
      swap_units(middle + x * grid.unit, middle + (last_col - x) * grid.unit, grid.unit);
    }
  }
}

void reverse_units_copy(const std::uint8_t* src, std::uint8_t* dst, std::size_t units,
                        std::size_t unit) {
  for (std::size_t i = 0; i < units; ++i)
    std::memcpy(dst + i * unit, src + (units - 1 - i) * unit, unit);
}

}  // namespace vexcap::frames
