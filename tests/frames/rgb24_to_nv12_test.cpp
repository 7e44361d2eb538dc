#include "frames/rgb24_to_nv12.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

namespace vexcap::frames {
namespace {

using Bytes = std::vector<std::uint8_t>;

// ---- An independent reading of the formula -------------------------------------------------
// Every intermediate goes through a volatile float, so each product and each sum is rounded to
// single precision exactly once, whatever the compiler may fuse elsewhere.

float mul(float a, float b) {
  volatile float p = a * b;
  return p;
}
float add(float a, float b) {
  volatile float s = a + b;
  return s;
}
std::uint8_t trunc_low_byte(float v) { return static_cast<std::uint8_t>(static_cast<int>(v)); }

struct Px {
  float r, g, b;
};

std::uint8_t ref_y(Px p) {
  const float sum = add(add(mul(0.257f, p.r), mul(0.504f, p.g)), mul(0.098f, p.b));
  return trunc_low_byte(add(add(sum, 16.0f), 0.5f));
}
float ref_u_term(Px p) {
  return add(add(add(mul(-0.148f, p.r), mul(-0.291f, p.g)), mul(0.439f, p.b)), 128.0f);
}
float ref_v_term(Px p) {
  return add(add(add(mul(0.439f, p.r), mul(-0.368f, p.g)), mul(-0.071f, p.b)), 128.0f);
}

// Whole-frame reference: pixel by pixel over an image accessor that replicates the last column
// when a 2x2 block overhangs an odd width. Bytes it does not define keep `fill`.
Bytes reference_nv12(const Bytes& rgb, std::uint32_t w, std::uint32_t h, std::uint8_t fill) {
  auto px = [&](std::uint32_t y, std::uint32_t x) {
    const std::size_t at = (std::size_t{y} * w + std::min(x, w - 1)) * 3;
    return Px{float(rgb[at]), float(rgb[at + 1]), float(rgb[at + 2])};
  };
  Bytes out(std::size_t{w} * h * 3 / 2, fill);
  const std::uint32_t paired_rows = h - h % 2;
  for (std::uint32_t y = 0; y < paired_rows; ++y)
    for (std::uint32_t x = 0; x < w; ++x) out[std::size_t{y} * w + x] = ref_y(px(y, x));
  for (std::uint32_t j = 0; j < h / 2; ++j) {
    for (std::uint32_t x = 0; x < w; x += 2) {
      const Px block[4] = {px(2 * j, x), px(2 * j, x + 1), px(2 * j + 1, x), px(2 * j + 1, x + 1)};
      float u = 0, v = 0;
      for (const Px& p : block) {
        u = add(u, ref_u_term(p));
        v = add(v, ref_v_term(p));
      }
      const std::size_t at = std::size_t{w} * h + std::size_t{j} * w + x;
      out[at] = trunc_low_byte(add(mul(0.25f, u), 0.5f));
      if (x + 1 < w) out[at + 1] = trunc_low_byte(add(mul(0.25f, v), 0.5f));
    }
  }
  return out;
}

Bytes random_rgb(std::uint32_t w, std::uint32_t h, std::uint32_t seed) {
  std::mt19937 gen(seed);
  std::uniform_int_distribution<int> byte(0, 255);
  Bytes rgb(std::size_t{w} * h * 3);
  for (auto& b : rgb) b = static_cast<std::uint8_t>(byte(gen));
  return rgb;
}

Bytes convert(const Bytes& rgb, std::uint32_t w, std::uint32_t h, std::uint8_t fill) {
  Bytes out(std::size_t{w} * h * 3 / 2, fill);  // exact size: an overrun trips the sanitizer
  convert_rgb24_plane_to_nv12(rgb.data(), w, h, out.data());
  return out;
}

// ---- Hand-computed bytes ---------------------------------------------------------------------

struct SolidCase {
  std::uint8_t r, g, b;
  std::uint8_t y, u, v;
};

TEST(Rgb24ToNv12, SolidTwoByTwoFramesGiveTheBt601Values) {
  // Y = 0.257R + 0.504G + 0.098B + 16.5, U = -0.148R - 0.291G + 0.439B + 128.5, ... truncated.
  const SolidCase cases[] = {
      {255, 255, 255, 235, 128, 128},                            // white: 235.545
      {0, 0, 0, 16, 128, 128},        {255, 0, 0, 82, 90, 240},  // 82.035, 90.76, 240.445; R first
      {0, 255, 0, 145, 54, 34},                                  // 145.02, 54.295, 34.66
      {0, 0, 255, 41, 240, 110},                                 // 41.49, 240.445, 110.395
  };
  for (const auto& c : cases) {
    const Bytes rgb = {c.r, c.g, c.b, c.r, c.g, c.b, c.r, c.g, c.b, c.r, c.g, c.b};
    EXPECT_EQ(convert(rgb, 2, 2, 0xEE), (Bytes{c.y, c.y, c.y, c.y, c.u, c.v}))
        << int(c.r) << "," << int(c.g) << "," << int(c.b);
  }
}

TEST(Rgb24ToNv12, MixedFourByTwoFrame) {
  // Row 0: white black red green; row 1: blue black white red.
  const Bytes rgb = {255, 255, 255, 0, 0, 0, 255, 0,   0,   0,   255, 0,
                     0,   0,   255, 0, 0, 0, 255, 255, 255, 255, 0,   0};
  // Block 0 (white, black, blue, black): U = (128 + 128 + 239.945 + 128) / 4 + 0.5 = 156.49,
  //   V = (128 + 128 + 109.895 + 128) / 4 + 0.5 = 123.97.
  // Block 1 (red, green, white, red): U = (90.26 + 53.795 + 128 + 90.26) / 4 + 0.5 = 91.08,
  //   V = (239.945 + 34.16 + 128 + 239.945) / 4 + 0.5 = 161.01.
  const Bytes expected = {235, 16, 82, 145, 41, 16, 235, 82, 156, 123, 91, 161};
  EXPECT_EQ(convert(rgb, 4, 2, 0), expected);
}

// ---- Against the independent reference -------------------------------------------------------

TEST(Rgb24ToNv12, EvenFramesMatchTheReference) {
  const std::uint32_t sizes[][2] = {{2, 2}, {4, 2}, {6, 4}, {16, 6}, {34, 10}, {64, 8}};
  std::uint32_t seed = 1;
  for (const auto& [w, h] : sizes) {
    const Bytes rgb = random_rgb(w, h, seed++);
    EXPECT_EQ(convert(rgb, w, h, 0x5A), reference_nv12(rgb, w, h, 0x5A)) << w << "x" << h;
  }
}

TEST(Rgb24ToNv12, OddSizesStayInsideTheFrame) {
  // Exactly sized buffers: any read or write past them trips the address sanitizer. The last
  // row of an odd height, and a frame of one row, keep the bytes that were there.
  const std::uint32_t sizes[][2] = {{1, 1}, {1, 2}, {3, 2}, {2, 3}, {5, 3}, {7, 5},
                                    {9, 4}, {1, 7}, {4, 1}, {0, 4}};
  std::uint32_t seed = 100;
  for (const auto& [w, h] : sizes) {
    const Bytes rgb = random_rgb(w, h, seed++);
    EXPECT_EQ(convert(rgb, w, h, 0xAB), reference_nv12(rgb, w, h, 0xAB)) << w << "x" << h;
  }
}

TEST(Rgb24ToNv12, OddWidthLastBlockUsesTheLastColumnTwice) {
  // 3x2: the last block is (red, -, red, -) with the missing column taken as red: U = 90, and
  // the row has no byte left for its V.
  Bytes rgb = {0, 0, 0, 255, 255, 255, 255, 0, 0, 0, 0, 0, 255, 255, 255, 255, 0, 0};
  Bytes out(9, 0xAB);
  convert_rgb24_plane_to_nv12(rgb.data(), 3, 2, out.data());
  // Block 0 is black and white: U = V = trunc(128 + 0.5) with float noise around 128.5.
  const Bytes expected = {16, 235, 82, 16, 235, 82, 128, 128, 90};
  EXPECT_EQ(out, expected);
}

}  // namespace
}  // namespace vexcap::frames
