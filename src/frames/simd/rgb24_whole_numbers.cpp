#include "frames/simd/rgb24_whole_numbers.h"

#include <bit>
#include <cstddef>

#include "frames/rgb24_to_nv12.h"

namespace vexcap::frames {

void settle_whole_numbers(const Rgb24RowPair& at, std::uint64_t top_pixels, std::uint64_t bottom_pixels,
                          std::uint32_t blocks) {
  for (; top_pixels != 0; top_pixels &= top_pixels - 1) {
    const std::size_t i = static_cast<std::size_t>(std::countr_zero(top_pixels));
    at.y_top[i] = rgb24_pixel_luma(at.top + 3 * i);
  }
  for (; bottom_pixels != 0; bottom_pixels &= bottom_pixels - 1) {
    const std::size_t i = static_cast<std::size_t>(std::countr_zero(bottom_pixels));
    at.y_bottom[i] = rgb24_pixel_luma(at.bottom + 3 * i);
  }
  for (; blocks != 0; blocks &= blocks - 1) {
    const std::size_t j = static_cast<std::size_t>(std::countr_zero(blocks));
    convert_rgb24_row_pair(at.top + 6 * j, at.bottom + 6 * j, 2, at.y_top + 2 * j,
                           at.y_bottom + 2 * j, at.uv + 2 * j);
  }
}

}  // namespace vexcap::frames
