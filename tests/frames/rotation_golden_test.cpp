// Rotations of tiny frames, every byte written out by hand.
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
           Bytes data) {
  EXPECT_TRUE(rotate_half_turn_in_place({format, w, h, stride}, data.data()));
  return data;
}

TEST(RotationGolden, Gray8FourByTwo) {
  const Bytes src = {1, 2, 3, 4,   //
                     5, 6, 7, 8};
  EXPECT_EQ(quarter(kGray8, 4, 2, 4, src, Rotation::By90), (Bytes{5, 1, 6, 2, 7, 3, 8, 4}));
  EXPECT_EQ(quarter(kGray8, 4, 2, 4, src, Rotation::By270), (Bytes{4, 8, 3, 7, 2, 6, 1, 5}));
  EXPECT_EQ(half(kGray8, 4, 2, 4, src), (Bytes{8, 7, 6, 5, 4, 3, 2, 1}));
}

TEST(RotationGolden, Gray8RowsWithPadding) {
  // Stride 6; the last row carries no padding. 0x99 marks padding, which a half turn keeps.
  const Bytes src = {1, 2, 3, 4, 0x99, 0x99,  //
                     5, 6, 7, 8};
  EXPECT_EQ(quarter(kGray8, 4, 2, 6, src, Rotation::By90), (Bytes{5, 1, 6, 2, 7, 3, 8, 4}));
  EXPECT_EQ(quarter(kGray8, 4, 2, 6, src, Rotation::By270), (Bytes{4, 8, 3, 7, 2, 6, 1, 5}));
  EXPECT_EQ(half(kGray8, 4, 2, 6, src), (Bytes{8, 7, 6, 5, 0x99, 0x99, 4, 3, 2, 1}));
}

TEST(RotationGolden, Gray8OddMiddleRow) {
  const Bytes src = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  EXPECT_EQ(half(kGray8, 3, 3, 3, src), (Bytes{9, 8, 7, 6, 5, 4, 3, 2, 1}));
}

TEST(RotationGolden, Gray16TwoByThreeKeepsBytesOfAPixelTogether) {
  const Bytes src = {0x11, 0x12, 0x21, 0x22,   // A B
                     0x31, 0x32, 0x41, 0x42,   // C D
                     0x51, 0x52, 0x61, 0x62};  // E F
  EXPECT_EQ(quarter(kGray16, 2, 3, 4, src, Rotation::By90),
            (Bytes{0x51, 0x52, 0x31, 0x32, 0x11, 0x12,     // E C A
                   0x61, 0x62, 0x41, 0x42, 0x21, 0x22}));  // F D B
  EXPECT_EQ(quarter(kGray16, 2, 3, 4, src, Rotation::By270),
            (Bytes{0x21, 0x22, 0x41, 0x42, 0x61, 0x62,     // B D F
                   0x11, 0x12, 0x31, 0x32, 0x51, 0x52}));  // A C E
  EXPECT_EQ(half(kGray16, 2, 3, 4, src),
            (Bytes{0x61, 0x62, 0x51, 0x52, 0x41, 0x42, 0x31, 0x32, 0x21, 0x22, 0x11, 0x12}));
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

TEST(RotationGolden, Nv12WithPaddedRowsInBothPlanes) {
  // Stride 6: the chroma plane starts at 4 x 6 and its rows are 6 apart as well.
  const std::uint8_t p = 0x99;
  const Bytes src = {1,    2,    3,    4,    p, p, 5,    6,    7,    8,    p, p,  //
                     9,    10,   11,   12,   p, p, 13,   14,   15,   16,   p, p,  //
                     0xA0, 0xA1, 0xB0, 0xB1, p, p, 0xC0, 0xC1, 0xD0, 0xD1};
  EXPECT_EQ(quarter(kNv12, 4, 4, 6, src, Rotation::By90),
            quarter(kNv12, 4, 4, 4, kNv12Square, Rotation::By90));
  EXPECT_EQ(half(kNv12, 4, 4, 6, src),
            (Bytes{16,   15,   14,   13,   p, p, 12,   11,   10,   9,    p, p,  //
                   8,    7,    6,    5,    p, p, 4,    3,    2,    1,    p, p,  //
                   0xD0, 0xD1, 0xC0, 0xC1, p, p, 0xB0, 0xB1, 0xA0, 0xA1}));
}

TEST(RotationGolden, Nv12TallFrameGetsChromaRowsAsLongAsTheNewWidth) {
  // 2x4: Y [1 2][3 4][5 6][7 8], chroma P over Q -> 4x2 with chroma row Q P (or P Q).
  const Bytes src = {1, 2, 3, 4, 5, 6, 7, 8, 0xA0, 0xA1, 0xB0, 0xB1};
  EXPECT_EQ(quarter(kNv12, 2, 4, 2, src, Rotation::By90),
            (Bytes{7, 5, 3, 1, 8, 6, 4, 2, 0xB0, 0xB1, 0xA0, 0xA1}));
  EXPECT_EQ(quarter(kNv12, 2, 4, 2, src, Rotation::By270),
            (Bytes{2, 4, 6, 8, 1, 3, 5, 7, 0xA0, 0xA1, 0xB0, 0xB1}));
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
