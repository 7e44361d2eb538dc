#include "frames/rgb24_to_nv12.h"

#include <cstddef>

// Every product is rounded to float before it is added: the bytes must not depend on whether
// the compiler may fuse a multiply and an add (x86-64 with FMA would otherwise differ).
#if defined(__clang__)
#pragma STDC FP_CONTRACT OFF
#elif defined(__GNUC__)
#pragma GCC optimize("fp-contract=off")
#elif defined(_MSC_VER)
#pragma fp_contract(off)
#endif

namespace vexcap::frames {
namespace {

struct Rgb {
  float r, g, b;
};

Rgb load_pixel(const std::uint8_t* p) {
  return {static_cast<float>(p[0]), static_cast<float>(p[1]), static_cast<float>(p[2])};
}

// Truncation toward zero, then the low byte.
std::uint8_t store_byte(float value) {
  return static_cast<std::uint8_t>(static_cast<std::int32_t>(value));
}

std::uint8_t luma(Rgb p) {
  const float r = 0.257f * p.r;
  const float g = 0.504f * p.g;
  const float b = 0.098f * p.b;
  return store_byte(r + g + b + 16.0f + 0.5f);
}

float u_term(Rgb p) {
  const float r = -0.148f * p.r;
  const float g = 0.291f * p.g;
  const float b = 0.439f * p.b;
  return r - g + b + 128.0f;
}

float v_term(Rgb p) {
  const float r = 0.439f * p.r;
  const float g = 0.368f * p.g;
  const float b = 0.071f * p.b;
  return r - g - b + 128.0f;
}

}  // namespace

std::uint8_t rgb24_pixel_luma(const std::uint8_t* pixel) { return luma(load_pixel(pixel)); }

void convert_rgb24_row_pair(const std::uint8_t* row0, const std::uint8_t* row1, std::uint32_t width,
                            std::uint8_t* y0, std::uint8_t* y1, std::uint8_t* uv) {
  for (std::uint32_t left = 0; left < width; left += 2) {
    const bool has_right = left + 1 < width;
    const std::uint32_t right = has_right ? left + 1 : left;
    const Rgb a = load_pixel(row0 + std::size_t{left} * 3);
    const Rgb b = load_pixel(row0 + std::size_t{right} * 3);
    const Rgb c = load_pixel(row1 + std::size_t{left} * 3);
    const Rgb d = load_pixel(row1 + std::size_t{right} * 3);

    y0[left] = luma(a);
    y1[left] = luma(c);
    if (has_right) {
      y0[right] = luma(b);
      y1[right] = luma(d);
    }

    const float u_sum = u_term(a) + u_term(b) + u_term(c) + u_term(d);
    const float v_sum = v_term(a) + v_term(b) + v_term(c) + v_term(d);
    const float u_scaled = 0.25f * u_sum;
    const float v_scaled = 0.25f * v_sum;
    uv[left] = store_byte(u_scaled + 0.5f);
    if (has_right) uv[left + 1] = store_byte(v_scaled + 0.5f);
  }
}

void convert_rgb24_plane_to_nv12(const std::uint8_t* src, std::uint32_t width, std::uint32_t height,
                                 std::uint8_t* dst) {
  const std::size_t src_row = std::size_t{width} * 3;
  const std::size_t y_row = width;
  std::uint8_t* chroma = dst + y_row * height;
  // Bottom-up, as the conversion was first written; rows never overlap, so the order does not
  // change a byte.
  for (std::uint32_t pair = height / 2; pair-- > 0;) {
    const std::size_t top = std::size_t{pair} * 2;
    convert_rgb24_row_pair(src + top * src_row, src + (top + 1) * src_row, width, dst + top * y_row,
                           dst + (top + 1) * y_row, chroma + pair * y_row);
  }
}

}  // namespace vexcap::frames
