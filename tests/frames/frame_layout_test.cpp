#include "frames/frame_layout.h"

#include <gtest/gtest.h>

#include <vector>

#include "frames/rotation.h"

namespace vexcap::frames {
namespace {

TEST(FrameLayout, QuarterTurnSwapsSizesAndPacksRows) {
  const FrameLayout gray = rotated_layout({kGray8, 640, 480, 640}, Rotation::By90);
  EXPECT_EQ(gray.width, 480u);
  EXPECT_EQ(gray.height, 640u);
  EXPECT_EQ(gray.stride, 480);
  EXPECT_EQ(rotated_layout({kGray16, 640, 480, 1536}, Rotation::By270).stride, 960);
  EXPECT_EQ(rotated_layout({kYuy2, 640, 480, 1280}, Rotation::By90).stride, 960);
  EXPECT_EQ(rotated_layout({kNv12, 640, 480, 704}, Rotation::By270).stride, 480);
  const FrameLayout same = rotated_layout({kNv12, 640, 480, 704}, Rotation::By180);
  EXPECT_EQ(same.width, 640u);
  EXPECT_EQ(same.height, 480u);
  EXPECT_EQ(same.stride, 704);
}

TEST(FrameLayout, Sizes) {
  EXPECT_EQ(packed_frame_size(kGray8, 640, 480), 307200u);
  EXPECT_EQ(packed_frame_size(kGray16, 640, 480), 614400u);
  EXPECT_EQ(packed_frame_size(kYuy2, 640, 480), 614400u);
  EXPECT_EQ(packed_frame_size(kNv12, 640, 480), 460800u);
  EXPECT_EQ(packed_frame_size(87, 640, 480), 0u);  // Bgra8 is not rotated
  // Padded rows; the last row of each plane needs only its pixels.
  EXPECT_EQ(frame_bytes({kGray8, 4, 2, 6}), 10u);
  EXPECT_EQ(frame_bytes({kGray16, 3, 2, 8}), 14u);
  EXPECT_EQ(frame_bytes({kNv12, 4, 4, 6}), 34u);  // 4 x 6 Y, then 6 + 4 chroma
  EXPECT_EQ(frame_bytes({kNv12, 4, 4, 4}), 24u);
  EXPECT_EQ(frame_bytes({kGray8, 4, 2, 3}), 0u);  // stride shorter than a row
}

TEST(FrameLayout, InvalidLayoutsAreLeftAlone) {
  std::vector<std::uint8_t> src(64, 7), dst(64, 9);
  EXPECT_FALSE(rotate_quarter_turn({87, 4, 2, 16}, src.data(), Rotation::By90, dst.data()));
  EXPECT_FALSE(rotate_quarter_turn({kGray16, 4, 2, 7}, src.data(), Rotation::By90, dst.data()));
  EXPECT_FALSE(rotate_quarter_turn({kGray8, 4, 2, -4}, src.data(), Rotation::By270, dst.data()));
  EXPECT_FALSE(rotate_quarter_turn({kGray8, 4, 2, 4}, src.data(), Rotation::By180, dst.data()));
  const PixelKernels& scalar = pixel_kernels_at(SimdLevel::Scalar);
  EXPECT_FALSE(rotate_half_turn_copy({30, 4, 2, 16}, src.data(), src.size(), dst.data(), scalar));
  EXPECT_FALSE(rotate_half_turn_copy({kYuy2, 4, 2, 6}, src.data(), src.size(), dst.data(), scalar));
  EXPECT_EQ(src, std::vector<std::uint8_t>(64, 7));
  EXPECT_EQ(dst, std::vector<std::uint8_t>(64, 9));
}

}  // namespace
}  // namespace vexcap::frames
