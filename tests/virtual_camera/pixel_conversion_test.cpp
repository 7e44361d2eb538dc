// The platform conversions of the virtual camera against values computed by hand.
#include <gtest/gtest.h>

#include "platform/virtual/imaging.h"
#include "platform/virtual/pixel_image.h"
#include "platform/virtual/virtual_platform.h"

namespace vexcap::virtual_camera {
namespace {

using platform::PixelFormat;

TEST(PixelConversion, WhiteAndBlackBgraBecomeLimitedRangeNv12) {
  // 2x2 white then 2x2 black, side by side: Y 235 / 16, chroma neutral.
  PixelImage bgra = blank_image(PixelFormat::Bgra8, 4, 2);
  for (int y = 0; y < 2; ++y)
    for (int x = 0; x < 2; ++x)
      for (int c = 0; c < 4; ++c) bgra.bytes[y * bgra.stride + x * 4 + c] = 255;
  for (int y = 0; y < 2; ++y) bgra.bytes[y * bgra.stride + 2 * 4 + 3] = bgra.bytes[y * bgra.stride + 3 * 4 + 3] = 255;
  VirtualBitmap bitmap(bgra);
  auto nv12 = bitmap.convert(PixelFormat::Nv12);
  auto locked = nv12->lock_for_read();
  ASSERT_EQ(locked->plane_count(), 2);
  const std::uint8_t* d = locked->data();
  std::vector<std::uint8_t> expected = {235, 235, 16, 16, 235, 235, 16, 16, 128, 128, 128, 128};
  ASSERT_EQ(locked->capacity(), expected.size());
  EXPECT_EQ(std::vector<std::uint8_t>(d, d + expected.size()), expected);
}

}  // namespace
}  // namespace vexcap::virtual_camera
