// Every vector kernel table this CPU runs, forced in turn, against the scalar reference:
// RGB24 to NV12 on random and tie-heavy frames of many shapes, the luma of all 2^24 colours,
// and the rotations of every layout with padded rows. Buffers are exactly as large as the
// kernels may touch, so the sanitizer build catches any stray read or write.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <random>
#include <vector>

#include "frames/rgb24_to_nv12.h"
#include "frames/rotation.h"
#include "frames/simd/pixel_kernels.h"

namespace vexcap::frames {
namespace {

using Bytes = std::vector<std::uint8_t>;

std::vector<SimdLevel> vector_levels() {
  std::vector<SimdLevel> levels;
  for (SimdLevel level : {SimdLevel::Sse2, SimdLevel::Avx2, SimdLevel::Avx512}) {
    if (static_cast<int>(level) <= static_cast<int>(detected_simd_level())) levels.push_back(level);
  }
  return levels;
}

Bytes random_bytes(std::size_t n, std::uint32_t seed) {
  std::mt19937 gen(seed);
  Bytes b(n);
  for (auto& v : b) v = static_cast<std::uint8_t>(gen());
  return b;
}

TEST(PixelKernels, DispatchAnswersTheCappedLevelAndTheDetectedOneAfterwards) {
  const SimdLevel before = pixel_kernels().level;
  {
    ScopedSimdCap cap(SimdLevel::Scalar);
    EXPECT_EQ(pixel_kernels().level, SimdLevel::Scalar);
    EXPECT_EQ(pixel_kernels().rgb24_to_nv12, &convert_rgb24_plane_to_nv12);
  }
  EXPECT_EQ(pixel_kernels().level, before);
  EXPECT_EQ(pixel_kernels_at(SimdLevel::Avx512).level, detected_simd_level());
#if defined(__x86_64__) || defined(_M_X64)
  EXPECT_GE(static_cast<int>(detected_simd_level()), static_cast<int>(SimdLevel::Sse2));
#endif
}

// ---- RGB24 to NV12 ---------------------------------------------------------------------------

Bytes convert_with(const PixelKernels& kernels, const Bytes& rgb, std::uint32_t w, std::uint32_t h) {
  Bytes out(std::size_t{w} * h * 3 / 2, 0xC3);
  kernels.rgb24_to_nv12(rgb.data(), w, h, out.data());
  return out;
}

// Colours whose 2x2 block, four times the same colour, puts U's or V's numerator on a
// multiple of 4000: the quotient is whole and only the float sequence decides.
std::vector<std::array<std::uint8_t, 3>> tie_colours() {
  std::vector<std::array<std::uint8_t, 3>> found;
  for (int r = 0; r < 256; r += 3)
    for (int g = 0; g < 256; g += 5)
      for (int b = 0; b < 256; ++b) {
        const int u = 4 * (-148 * r - 291 * g + 439 * b) + 514000;
        const int v = 4 * (439 * r - 368 * g - 71 * b) + 514000;
        if (u % 4000 == 0 || v % 4000 == 0)
          found.push_back({std::uint8_t(r), std::uint8_t(g), std::uint8_t(b)});
      }
  return found;
}

// Random pixels with about one 2x2 block in three painted a tie colour.
Bytes tie_heavy_rgb(std::uint32_t w, std::uint32_t h, std::uint32_t seed) {
  static const auto ties = tie_colours();
  Bytes rgb = random_bytes(std::size_t{w} * h * 3, seed);
  std::mt19937 gen(seed);
  for (std::uint32_t y = 0; y + 1 < h; y += 2)
    for (std::uint32_t x = 0; x + 1 < w; x += 2) {
      if (gen() % 3 != 0) continue;
      const auto& c = ties[gen() % ties.size()];
      for (std::uint32_t p : {y * w + x, y * w + x + 1, (y + 1) * w + x, (y + 1) * w + x + 1})
        std::memcpy(&rgb[std::size_t{p} * 3], c.data(), 3);
    }
  return rgb;
}

TEST(PixelKernels, Rgb24ToNv12MatchesTheReferenceOnEveryShape) {
  ASSERT_GT(tie_colours().size(), 100u);
  std::vector<std::pair<std::uint32_t, std::uint32_t>> shapes = {
      {1, 1}, {1, 2}, {2, 1}, {1, 9}, {9, 1}, {2, 2}, {3, 3}, {640, 2}, {1922, 4}, {97, 31}};
  for (std::uint32_t w = 3; w <= 70; ++w) shapes.push_back({w, 2 + w % 5});
  const PixelKernels& scalar = pixel_kernels_at(SimdLevel::Scalar);
  std::uint32_t seed = 1;
  for (const auto& [w, h] : shapes) {
    const Bytes plain = random_bytes(std::size_t{w} * h * 3, seed++);
    const Bytes ties = tie_heavy_rgb(w, h, seed++);
    const Bytes expected_plain = convert_with(scalar, plain, w, h);
    const Bytes expected_ties = convert_with(scalar, ties, w, h);
    for (SimdLevel level : vector_levels()) {
      const PixelKernels& kernels = pixel_kernels_at(level);
      ASSERT_EQ(convert_with(kernels, plain, w, h), expected_plain)
          << simd_level_name(level) << " " << w << "x" << h;
      ASSERT_EQ(convert_with(kernels, ties, w, h), expected_ties)
          << simd_level_name(level) << " ties " << w << "x" << h;
    }
  }
}

// Luma written out independently: every product and sum rounded to single precision once.
std::uint8_t formula_luma(int r, int g, int b) {
  volatile float pr = 0.257f * float(r), pg = 0.504f * float(g), pb = 0.098f * float(b);
  volatile float s = pr + pg;
  s = s + pb;
  s = s + 16.0f;
  s = s + 0.5f;
  return static_cast<std::uint8_t>(static_cast<int>(s));
}

TEST(PixelKernels, LumaOfEveryColourMatchesTheFormulaOnEveryLevel) {
  // A 4096 x 4096 frame holds each (R, G, B) once: row R * 16 + G / 16, column
  // (G % 16) * 256 + B. Under the address sanitizer every seventeenth red is enough.
  constexpr std::uint32_t kSide = 4096;
#if defined(__SANITIZE_ADDRESS__)
  constexpr int kRedStep = 17;
#else
  constexpr int kRedStep = 1;
#endif
  std::vector<int> red_of_row;
  for (int r = 0; r < 256; r += kRedStep)
    for (int g_high = 0; g_high < 16; ++g_high) red_of_row.push_back(r);
  const std::uint32_t height = static_cast<std::uint32_t>(red_of_row.size());
  Bytes rgb(std::size_t{kSide} * height * 3);
  Bytes expected(std::size_t{kSide} * height);
  for (std::uint32_t y = 0; y < height; ++y) {
    const int r = red_of_row[y], g_high = static_cast<int>(y % 16);
    for (std::uint32_t x = 0; x < kSide; ++x) {
      const int g = g_high * 16 + static_cast<int>(x / 256), b = static_cast<int>(x % 256);
      std::uint8_t* p = &rgb[(std::size_t{y} * kSide + x) * 3];
      p[0] = std::uint8_t(r), p[1] = std::uint8_t(g), p[2] = std::uint8_t(b);
      expected[std::size_t{y} * kSide + x] = formula_luma(r, g, b);
    }
  }
  std::vector<SimdLevel> levels = vector_levels();
  levels.insert(levels.begin(), SimdLevel::Scalar);
  Bytes out(std::size_t{kSide} * height * 3 / 2);
  for (SimdLevel level : levels) {
    pixel_kernels_at(level).rgb24_to_nv12(rgb.data(), kSide, height, out.data());
    std::size_t mismatches = 0;
    for (std::size_t i = 0; i < expected.size(); ++i) mismatches += out[i] != expected[i];
    EXPECT_EQ(mismatches, 0u) << simd_level_name(level);
  }
}

// The vector kernels compute Y as floor((257 R + 504 G + 98 B + 16500) / 1000) and chroma from
// the 2x2 sums in integers, and hand whatever lands on a whole number back to the reference.
// Every such colour (and every chroma tie, as a solid block) in every lane of a 64-pixel run,
// top row and bottom row, and in the partial run past the last whole one.
TEST(PixelKernels, WholeNumberColoursAndChromaTiesInEveryLane) {
  std::vector<std::array<std::uint8_t, 3>> whole;
  int rounded_down = 0;
  for (int r = 0; r < 256; ++r)
    for (int g = 0; g < 256; ++g)
      for (int b = 0; b < 256; ++b) {
        const int n = 257 * r + 504 * g + 98 * b + 16500;
        if (n % 1000 != 0) continue;
        whole.push_back({std::uint8_t(r), std::uint8_t(g), std::uint8_t(b)});
        rounded_down += formula_luma(r, g, b) != n / 1000;
      }
  // The float sum falls just short of the whole number for these colours only.
  EXPECT_EQ(rounded_down, 325);

  const std::uint32_t w = 2 * 64 + 10;
  const std::uint32_t luma_rows = static_cast<std::uint32_t>((whole.size() + w - 1) / w) + 1;
  const auto ties = tie_colours();
  const std::uint32_t tie_rows = 2 * static_cast<std::uint32_t>(ties.size() / (w / 2) + 1);
  const std::uint32_t h = (luma_rows + 1) / 2 * 2 + tie_rows;
  Bytes rgb(std::size_t{w} * h * 3);
  for (std::size_t p = 0; p < std::size_t{w} * h; ++p) {
    const std::uint32_t y = static_cast<std::uint32_t>(p / w), x = static_cast<std::uint32_t>(p % w);
    const std::array<std::uint8_t, 3> colour =
        y < h - tie_rows ? whole[(p * 7) % whole.size()]
                         : ties[((y - (h - tie_rows)) / 2 * (w / 2) + x / 2) % ties.size()];
    std::memcpy(&rgb[p * 3], colour.data(), 3);
  }
  const Bytes expected = convert_with(pixel_kernels_at(SimdLevel::Scalar), rgb, w, h);
  for (std::size_t p = 0; p < std::size_t{w} * (h - tie_rows); ++p)
    ASSERT_EQ(expected[p], formula_luma(rgb[3 * p], rgb[3 * p + 1], rgb[3 * p + 2])) << p;
  for (SimdLevel level : vector_levels())
    EXPECT_EQ(convert_with(pixel_kernels_at(level), rgb, w, h), expected) << simd_level_name(level);
}

// ---- Copy -----------------------------------------------------------------------------------

TEST(PixelKernels, CopyWritesExactlyTheSourceBytesAtEveryLengthAndAlignment) {
  const Bytes src = random_bytes(5000, 31);
  std::vector<SimdLevel> levels = vector_levels();
  levels.insert(levels.begin(), SimdLevel::Scalar);
  std::vector<std::size_t> lengths;
  for (std::size_t n = 0; n <= 300; ++n) lengths.push_back(n);
  for (std::size_t n : {1023u, 1024u, 4096u, 4097u, 4900u}) lengths.push_back(n);
  for (SimdLevel level : levels) {
    for (std::size_t dst_offset : {0u, 1u, 7u, 16u, 31u}) {
      for (std::size_t src_offset : {0u, 3u, 16u}) {
        for (std::size_t n : lengths) {
          // Guard bytes on both sides of the destination must stay as they were.
          Bytes dst(n + 64 + 64, 0x5A);
          pixel_kernels_at(level).copy_bytes(dst.data() + 64 + dst_offset,
                                             src.data() + src_offset, n);
          Bytes expected(dst.size(), 0x5A);
          std::copy_n(src.begin() + static_cast<std::ptrdiff_t>(src_offset), n,
                      expected.begin() + 64 + static_cast<std::ptrdiff_t>(dst_offset));
          ASSERT_EQ(dst, expected) << simd_level_name(level) << " " << n << " bytes, offsets "
                                   << src_offset << " " << dst_offset;
        }
      }
    }
  }
}

// Long copies take one of two ways by where the destination lies from the source modulo 4096:
// both must give the source bytes, at every distance either side of a line and of a page.
TEST(PixelKernels, LongCopiesMatchTheSourceAtEveryDistanceModulo4096) {
  const std::size_t n = 20000;
  const Bytes src = random_bytes(n, 47);
  for (SimdLevel level : vector_levels()) {
    for (std::size_t distance : {0u, 1u, 15u, 16u, 63u, 64u, 65u, 1000u, 4032u, 4095u}) {
      Bytes block(n + 2 * 4096 + 64, 0x5A);
      const std::size_t src_at = reinterpret_cast<std::uintptr_t>(src.data()) % 4096;
      std::uint8_t* base = block.data() + (4096 - reinterpret_cast<std::uintptr_t>(block.data()) % 4096);
      std::uint8_t* dst = base + (src_at + distance) % 4096;
      pixel_kernels_at(level).copy_bytes(dst, src.data(), n);
      ASSERT_TRUE(std::equal(src.begin(), src.end(), dst))
          << simd_level_name(level) << " distance " << distance;
      ASSERT_EQ(dst[-1], 0x5A);
      ASSERT_EQ(dst[n], 0x5A);
    }
  }
}

// ---- Rotations -------------------------------------------------------------------------------

struct Shape {
  std::uint32_t w, h;
  std::uint32_t padding;  // bytes after each row of the first plane
};

// Planes smaller than a tile, exactly a tile (16x32 and 16x16 bytes, 8x16 and 8x8 units) and with
// ragged edges, where the last tile overlaps the one before it; planes tall enough to be walked
// in bands of rows, the last band a whole one, a ragged one and one shorter than a tile.
const Shape kRotationShapes[] = {{1, 1, 0},     {1, 37, 3},    {37, 1, 0},   {2, 2, 0},   {16, 16, 0},
                                 {32, 16, 0},   {16, 32, 0},   {17, 33, 5},  {64, 64, 0}, {70, 130, 2},
                                 {130, 70, 0},  {33, 129, 7},  {257, 66, 1}, {8, 96, 0},  {47, 18, 3},
                                 {40, 2048, 0}, {33, 1601, 2}, {18, 1541, 0}};

// Every vector level turns a random frame of this shape both ways as the scalar reference does.
void expect_quarter_turns_match_reference(std::uint32_t format, const Shape& s, std::uint32_t seed) {
  const FrameLayout layout{format, s.w, s.h, static_cast<std::int32_t>(row_bytes(format, s.w) + s.padding)};
  const Bytes src = random_bytes(frame_bytes(layout), seed);
  for (Rotation rotation : {Rotation::By90, Rotation::By270}) {
    Bytes expected(packed_frame_size(format, s.w, s.h), 0x11);
    ASSERT_TRUE(rotate_quarter_turn(layout, src.data(), rotation, expected.data(),
                                    pixel_kernels_at(SimdLevel::Scalar)));
    for (SimdLevel level : vector_levels()) {
      Bytes turned(expected.size(), 0x11);
      ASSERT_TRUE(rotate_quarter_turn(layout, src.data(), rotation, turned.data(), pixel_kernels_at(level)));
      // Not ASSERT_EQ: a failure would print megabytes.
      ASSERT_TRUE(turned == expected) << simd_level_name(level) << " format " << format << " " << s.w << "x"
                                      << s.h << " turn " << int(rotation);
    }
  }
}

TEST(PixelKernels, QuarterTurnsMatchTheReferenceForEveryLayout) {
  std::uint32_t seed = 500;
  for (std::uint32_t format : {kGray8, kGray16, kNv12, kYuy2})
    for (const Shape& s : kRotationShapes)
      ASSERT_NO_FATAL_FAILURE(expect_quarter_turns_match_reference(format, s, seed++));
}

// Planes of a 4K frame's size and more: the turn goes through a strip buffer and stores whole
// destination lines past the caches. Ragged columns, padded rows, and a last band of rows that
// is a single row (bands of 512 rows) or shorter than a byte tile; the destination rows start at
// every offset within a line.
TEST(PixelKernels, QuarterTurnsOfLargePlanesMatchTheReference) {
  ASSERT_NO_FATAL_FAILURE(expect_quarter_turns_match_reference(kGray16, {2049, 2049, 6}, 900));
  ASSERT_NO_FATAL_FAILURE(expect_quarter_turns_match_reference(kGray8, {3281, 2565, 3}, 901));
  ASSERT_NO_FATAL_FAILURE(expect_quarter_turns_match_reference(kNv12, {3858, 2180, 0}, 902));
}

TEST(PixelKernels, TiledQuarterTurnsFollowTheCoordinateMap) {
  // Independent of the scalar moves: destination (r, c) of a 90 turn is source
  // (H - 1 - c, r), of a 270 turn source (c, W - 1 - r). 2-byte units keep their bytes.
  const std::uint32_t w = 150, h = 140, stride = 2 * w + 6;
  const Bytes src = random_bytes(std::size_t{stride} * h, 77);
  for (SimdLevel level : vector_levels()) {
    for (std::uint32_t format : {kGray8, kGray16}) {
      const std::size_t unit = format == kGray16 ? 2 : 1;
      for (Rotation rotation : {Rotation::By90, Rotation::By270}) {
        Bytes dst(packed_frame_size(format, w, h));
        ASSERT_TRUE(rotate_quarter_turn({format, w, h, std::int32_t(stride)}, src.data(), rotation,
                                        dst.data(), pixel_kernels_at(level)));
        for (std::uint32_t r = 0; r < w; ++r)
          for (std::uint32_t c = 0; c < h; ++c) {
            const std::uint32_t y = rotation == Rotation::By90 ? h - 1 - c : c;
            const std::uint32_t x = rotation == Rotation::By90 ? r : w - 1 - r;
            ASSERT_EQ(std::memcmp(&dst[(std::size_t{r} * h + c) * unit],
                                  &src[std::size_t{y} * stride + x * unit], unit),
                      0)
                << simd_level_name(level) << " (" << r << "," << c << ")";
          }
      }
    }
  }
}

TEST(PixelKernels, HalfTurnCopyMatchesTheReferenceForEveryLayout) {
  // The buffer runs on past the frame, as a platform buffer may: those bytes come along.
  std::uint32_t seed = 900;
  const PixelKernels& scalar = pixel_kernels_at(SimdLevel::Scalar);
  for (std::uint32_t format : {kGray8, kGray16, kNv12, kYuy2}) {
    for (const Shape& s : kRotationShapes) {
      const FrameLayout layout{format, s.w, s.h,
                               static_cast<std::int32_t>(row_bytes(format, s.w) + s.padding)};
      for (std::size_t extra : {std::size_t{0}, std::size_t{5}}) {
        const Bytes src = random_bytes(frame_bytes(layout) + extra, seed++);
        Bytes expected(src.size(), 0x22);
        ASSERT_TRUE(rotate_half_turn_copy(layout, src.data(), src.size(), expected.data(), scalar));
        for (SimdLevel level : vector_levels()) {
          Bytes turned(src.size(), 0x22);
          ASSERT_TRUE(rotate_half_turn_copy(layout, src.data(), src.size(), turned.data(),
                                            pixel_kernels_at(level)));
          ASSERT_EQ(turned, expected) << simd_level_name(level) << " format " << format << " "
                                      << s.w << "x" << s.h << " +" << extra;
        }
      }
    }
  }
}

TEST(PixelKernels, HalfTurnCopyRefusesABufferShorterThanTheFrame) {
  const FrameLayout layout{kGray8, 4, 4, 4};
  const Bytes src(15, 1);
  Bytes dst(15, 9);
  EXPECT_FALSE(rotate_half_turn_copy(layout, src.data(), src.size(), dst.data(), pixel_kernels()));
  EXPECT_EQ(dst, Bytes(15, 9));
}

}  // namespace
}  // namespace vexcap::frames
