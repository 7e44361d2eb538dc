// Rotations of larger random frames, checked pixel by pixel through the inverse coordinate map,
// and the YUY2 half-turn block path.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <utility>
#include <vector>

#include "frames/rotation.h"
#include "frames/yuy2_chroma.h"

namespace vexcap::frames {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes random_bytes(std::size_t n, std::uint32_t seed) {
  std::mt19937 gen(seed);
  Bytes b(n);
  for (auto& v : b) v = static_cast<std::uint8_t>(gen());
  return b;
}

// Where destination (r, c) of a w x h source comes from, as (row, column) of the source.
std::pair<std::uint32_t, std::uint32_t> source_of(Rotation rotation, std::uint32_t r,
                                                  std::uint32_t c, std::uint32_t w,
                                                  std::uint32_t h) {
  switch (rotation) {
    case Rotation::By90:
      return {h - 1 - c, r};
    case Rotation::By270:
      return {c, w - 1 - r};
    default:
      return {h - 1 - r, w - 1 - c};
  }
}

// One plane of `unit`-byte pixels: w x h, rows `pitch` apart, at `offset` in the buffer.
struct Plane {
  std::size_t offset, pitch, unit;
  std::uint32_t w, h;
  const std::uint8_t* at(const Bytes& b, std::uint32_t y, std::uint32_t x) const {
    return b.data() + offset + y * pitch + x * unit;
  }
};

void expect_plane_rotated(const Bytes& src, Plane from, const Bytes& dst, Plane to,
                          Rotation rotation) {
  for (std::uint32_t r = 0; r < to.h; ++r) {
    for (std::uint32_t c = 0; c < to.w; ++c) {
      const auto [y, x] = source_of(rotation, r, c, from.w, from.h);
      for (std::size_t i = 0; i < from.unit; ++i) {
        ASSERT_EQ(to.at(dst, r, c)[i], from.at(src, y, x)[i])
            << "dest (" << r << "," << c << ") byte " << i << " rotation " << int(rotation);
      }
    }
  }
}

struct Shape {
  std::uint32_t w, h;
  std::int32_t stride;
};

// The planes of a frame of format `f`: the first plane and, for NV12, the chroma pairs.
std::vector<Plane> planes_of(std::uint32_t f, Shape s) {
  const std::size_t unit = (f == kGray16 || f == kYuy2) ? 2 : 1;
  std::vector<Plane> planes = {{0, std::size_t(s.stride), unit, s.w, s.h}};
  if (f == kNv12)
    planes.push_back({std::size_t{s.h} * s.stride, std::size_t(s.stride), 2, s.w / 2, s.h / 2});
  return planes;
}

const Shape kShapes[] = {{6, 4, 6},   {6, 4, 9}, {4, 6, 4}, {8, 6, 12},
                         {10, 2, 10}, {2, 8, 3}, {5, 3, 5}, {7, 5, 8}};

Bytes make_source(std::uint32_t f, Shape s, std::uint32_t seed) {
  // A whole padded last row is allocated too; frame_bytes() would allow less.
  const std::size_t rows = (f == kNv12) ? s.h + s.h / 2 : s.h;
  return random_bytes(rows * std::size_t(s.stride), seed);
}

TEST(RotationMapping, QuarterTurnsOfEveryPlaneFollowTheCoordinateMap) {
  std::uint32_t seed = 1;
  for (std::uint32_t f : {kGray8, kGray16, kNv12}) {
    for (Shape s : kShapes) {
      if (std::size_t(s.stride) < row_bytes(f, s.w)) continue;
      const Bytes src = make_source(f, s, seed++);
      for (Rotation rotation : {Rotation::By90, Rotation::By270}) {
        SCOPED_TRACE(testing::Message() << "format " << f << " " << s.w << "x" << s.h << " stride "
                                        << s.stride << " rotation " << int(rotation));
        Bytes dst(packed_frame_size(f, s.w, s.h));
        ASSERT_TRUE(rotate_quarter_turn({f, s.w, s.h, s.stride}, src.data(), rotation, dst.data()));
        const FrameLayout turned = rotated_layout({f, s.w, s.h, s.stride}, rotation);
        const auto from = planes_of(f, s);
        const auto to = planes_of(f, {turned.width, turned.height, turned.stride});
        for (std::size_t p = 0; p < from.size(); ++p)
          expect_plane_rotated(src, from[p], dst, to[p], rotation);
      }
    }
  }
}

TEST(RotationMapping, HalfTurnReversesEveryPlaneAndKeepsPadding) {
  std::uint32_t seed = 50;
  for (std::uint32_t f : {kGray8, kGray16, kNv12}) {
    for (Shape s : kShapes) {
      if (std::size_t(s.stride) < row_bytes(f, s.w)) continue;
      SCOPED_TRACE(testing::Message()
                   << "format " << f << " " << s.w << "x" << s.h << " stride " << s.stride);
      const Bytes src = make_source(f, s, seed++);
      Bytes data(src.size(), 0xEE);
      ASSERT_TRUE(rotate_half_turn_copy({f, s.w, s.h, s.stride}, src.data(), src.size(), data.data(),
                                        pixel_kernels_at(SimdLevel::Scalar)));
      std::vector<bool> is_pixel(data.size(), false);
      for (const Plane& p : planes_of(f, s)) {
        expect_plane_rotated(src, p, data, p, Rotation::By180);
        for (std::uint32_t y = 0; y < p.h; ++y)
          for (std::uint32_t x = 0; x < p.w * p.unit; ++x)
            is_pixel[p.offset + y * p.pitch + x] = true;
      }
      for (std::size_t i = 0; i < data.size(); ++i) {
        if (!is_pixel[i]) {
          ASSERT_EQ(data[i], src[i]) << "padding byte " << i;
        }
      }
    }
  }
}

TEST(RotationMapping, Yuy2QuarterTurnMovesLumaAndPullsChromaAcrossRowPairs) {
  // Luma follows the coordinate map. Chroma: first moved with its unit, then for even r and
  // even c with c + 1 < width, (r, c + 1) takes what landed on (r + 1, c) and the other way.
  std::uint32_t seed = 80;
  for (Shape s : {Shape{6, 4, 12}, Shape{8, 6, 20}, Shape{4, 5, 8}, Shape{6, 3, 12}}) {
    const Bytes src = make_source(kYuy2, s, seed++);
    for (Rotation rotation : {Rotation::By90, Rotation::By270}) {
      SCOPED_TRACE(testing::Message() << s.w << "x" << s.h << " rotation " << int(rotation));
      Bytes dst(packed_frame_size(kYuy2, s.w, s.h));
      ASSERT_TRUE(
          rotate_quarter_turn({kYuy2, s.w, s.h, s.stride}, src.data(), rotation, dst.data()));
      const std::uint32_t nw = s.h, nh = s.w;
      auto src_byte = [&](std::uint32_t r, std::uint32_t c, int i) {
        const auto [y, x] = source_of(rotation, r, c, s.w, s.h);
        return src[y * std::size_t(s.stride) + x * 2 + i];
      };
      for (std::uint32_t r = 0; r < nh; ++r) {
        for (std::uint32_t c = 0; c < nw; ++c) {
          std::uint32_t cr = r, cc = c;
          if (r % 2 == 0 && c % 2 == 1 && r + 1 < nh) cr = r + 1, cc = c - 1;
          if (r % 2 == 1 && c % 2 == 0 && c + 1 < nw) cr = r - 1, cc = c + 1;
          const std::uint8_t* px = dst.data() + (std::size_t{r} * nw + c) * 2;
          ASSERT_EQ(px[0], src_byte(r, c, 0)) << "luma (" << r << "," << c << ")";
          ASSERT_EQ(px[1], src_byte(cr, cc, 1)) << "chroma (" << r << "," << c << ")";
        }
      }
    }
  }
}

// ---- YUY2 half turn: blocks of eight units and the tail against the plain exchange ----------

Bytes plain_chroma_exchange(Bytes b, std::size_t bytes) {
  for (std::size_t g = 0; g + 4 <= bytes; g += 4) std::swap(b[g + 1], b[g + 3]);
  return b;
}

TEST(Yuy2ChromaOrder, BlocksAndTailEqualThePlainExchange) {
  for (std::size_t bytes = 0; bytes <= 70; ++bytes) {
    const Bytes src = random_bytes(bytes, std::uint32_t(300 + bytes));
    Bytes data = src;
    swap_yuy2_chroma_order(data.data(), bytes);
    EXPECT_EQ(data, plain_chroma_exchange(src, bytes)) << bytes << " bytes";
  }
}

TEST(Yuy2ChromaOrder, HalfTurnRowsAroundMultiplesOfEightUnits) {
  // Independent half turn: pixel (y, x) takes luma from (H-1-y, W-1-x) and, as the pair's
  // U or V, the same chroma slot of the mirrored pair.
  for (std::uint32_t w : {2u, 6u, 8u, 10u, 14u, 16u, 18u, 24u, 26u}) {
    const std::uint32_t h = 3;
    const std::int32_t stride = std::int32_t(w * 2 + 4);
    const Bytes src = random_bytes(std::size_t(stride) * h, 400 + w);
    Bytes data(src.size(), 0xEE);
    ASSERT_TRUE(rotate_half_turn_copy({kYuy2, w, h, stride}, src.data(), src.size(), data.data(),
                                      pixel_kernels_at(SimdLevel::Scalar)));
    for (std::uint32_t y = 0; y < h; ++y) {
      for (std::uint32_t x = 0; x < w; ++x) {
        const std::size_t to = y * std::size_t(stride) + x * 2;
        const std::uint32_t my = h - 1 - y, mx = w - 1 - x;
        const std::size_t from = my * std::size_t(stride) + mx * 2;
        ASSERT_EQ(data[to], src[from]) << "luma " << w << " (" << y << "," << x << ")";
        // The chroma byte at (y, x) is U for even x, V for odd x, taken from the mirrored pair.
        const std::size_t mirrored_pair = my * std::size_t(stride) + (mx / 2) * 4;
        ASSERT_EQ(data[to + 1], src[mirrored_pair + (x % 2 == 0 ? 1 : 3)]) << "chroma " << w;
      }
      for (std::size_t pad = w * 2; pad < std::size_t(stride); ++pad)
        ASSERT_EQ(data[y * std::size_t(stride) + pad], src[y * std::size_t(stride) + pad]);
    }
  }
}

}  // namespace
}  // namespace vexcap::frames
