// Rotations of tiny frames, every byte written out by hand: the direction of each turn for both
// NV12 planes and the YUY2 chroma repair. Grey, padded and odd shapes are checked through the
// coordinate map in rotation_mapping_test.cpp.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "frames/rotation.h"

namespace vexcap::frames {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes quarter(std::uint32_t format, std::uint32_t w, std::uint32_t h, std::int32_t stride,
              const Bytes& src, Rotation rotation) {
  Bytes dst(packed_frame_size(format, w, h), 0xEE);
  EXPECT_TRUE(rotate_quarter_turn({format, w, h, stride}, src.data(), rotation, dst.data()));
  return dst;
}

Bytes half(std::uint32_t format, std::uint32_t w, std::uint32_t h, std::int32_t stride,
           const Bytes& src) {
  Bytes dst(src.size(), 0xEE);
  EXPECT_TRUE(rotate_half_turn_copy({format, w, h, stride}, src.data(), src.size(), dst.data(),
                                    pixel_kernels_at(SimdLevel::Scalar)));
  return dst;
}

// NV12 4x4, Y = 1..16, chroma pairs P Q / R S.
const Bytes kNv12Square = {1,    2,    3,    4,    5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16,  //
                           0xA0, 0xA1, 0xB0, 0xB1,   // P Q
                           0xC0, 0xC1, 0xD0, 0xD1};  // R S

TEST(RotationGolden, Nv12Square) {
  EXPECT_EQ(quarter(kNv12, 4, 4, 4, kNv12Square, Rotation::By90),
            (Bytes{13, 9, 5, 1, 14, 10, 6, 2, 15, 11, 7, 3, 16, 12, 8, 4,  //
                   0xC0, 0xC1, 0xA0, 0xA1, 0xD0, 0xD1, 0xB0, 0xB1}));      // R P / S Q
  EXPECT_EQ(quarter(kNv12, 4, 4, 4, kNv12Square, Rotation::By270),
            (Bytes{4, 8, 12, 16, 3, 7, 11, 15, 2, 6, 10, 14, 1, 5, 9, 13,  //
                   0xB0, 0xB1, 0xD0, 0xD1, 0xA0, 0xA1, 0xC0, 0xC1}));      // Q S / P R
  EXPECT_EQ(half(kNv12, 4, 4, 4, kNv12Square),
            (Bytes{16, 15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1,  //
                   0xD0, 0xD1, 0xC0, 0xC1, 0xB0, 0xB1, 0xA0, 0xA1}));      // S R / Q P
}

// YUY2 4x2: Y values 0x00..0x03 / 0x10..0x13; row 0 pairs (A0 A1)(B0 B1), row 1 (C0 C1)(D0 D1).
const Bytes kYuy2Frame = {0x00, 0xA0, 0x01, 0xA1, 0x02, 0xB0, 0x03, 0xB1,   //
                     0x10, 0xC0, 0x11, 0xC1, 0x12, 0xD0, 0x13, 0xD1};  //

TEST(RotationGolden, Yuy2QuarterTurnsRepairTheChroma) {
  // 90: rows carry U only / V only after the move; the repair pairs row r's U with row r+1's V.
  EXPECT_EQ(quarter(kYuy2, 4, 2, 8, kYuy2Frame, Rotation::By90),
            (Bytes{0x10, 0xC0, 0x00, 0xC1,     //
                   0x11, 0xA0, 0x01, 0xA1,     //
                   0x12, 0xD0, 0x02, 0xD1,     //
                   0x13, 0xB0, 0x03, 0xB1}));  //
  // 270: the first new row comes from the last (V) column, so pairs end up V before U.
  EXPECT_EQ(quarter(kYuy2, 4, 2, 8, kYuy2Frame, Rotation::By270),
            (Bytes{0x03, 0xB1, 0x13, 0xB0,     //
                   0x02, 0xD1, 0x12, 0xD0,     //
                   0x01, 0xA1, 0x11, 0xA0,     //
                   0x00, 0xC1, 0x10, 0xC0}));  //
}

TEST(RotationGolden, Yuy2HalfTurnPutsUBeforeVAgain) {
  EXPECT_EQ(half(kYuy2, 4, 2, 8, kYuy2Frame),
            (Bytes{0x13, 0xD0, 0x12, 0xD1, 0x11, 0xC0, 0x10, 0xC1,     //
                   0x03, 0xB0, 0x02, 0xB1, 0x01, 0xA0, 0x00, 0xA1}));  //
}

}  // namespace
}  // namespace vexcap::frames
