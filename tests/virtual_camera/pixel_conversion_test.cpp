// The platform conversions of the virtual camera against values computed by hand.
#include <gtest/gtest.h>

#include <array>

#include "platform/virtual/imaging.h"
#include "platform/virtual/pixel_image.h"
#include "platform/virtual/virtual_platform.h"

namespace vexcap::virtual_camera {
namespace {

using platform::PixelFormat;

TEST(VirtualPixelConversion, PatternBgraConvertsByTheDocumentedFormulas) {
  VirtualPlatform platform;
  const int n = 5, w = 6, h = 4;
  auto converted = std::make_shared<VirtualBitmap>(pattern_image(PixelFormat::Bgra8, w, h, n))->convert(PixelFormat::Nv12);
  auto locked = converted->lock_for_read();
  const std::uint8_t* d = locked->data();
  auto rgb = [&](int x, int y) { return std::array<int, 3>{(x + n) % 256, (y + 2 * n) % 256, (x + y + 3 * n) % 256}; };
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      auto [r, g, b] = rgb(x, y);
      EXPECT_EQ(d[y * w + x], ((66 * r + 129 * g + 25 * b + 128) >> 8) + 16) << x << "," << y;
    }
  for (int j = 0; j < h / 2; ++j)
    for (int i = 0; i < w / 2; ++i) {
      int r = 0, g = 0, b = 0;
      for (int y = 2 * j; y < 2 * j + 2; ++y)
        for (int x = 2 * i; x < 2 * i + 2; ++x) {
          auto c = rgb(x, y);
          r += c[0], g += c[1], b += c[2];
        }
      r = (r + 2) / 4, g = (g + 2) / 4, b = (b + 2) / 4;
      EXPECT_EQ(d[w * h + j * w + 2 * i], ((-38 * r - 74 * g + 112 * b + 128) >> 8) + 128);
      EXPECT_EQ(d[w * h + j * w + 2 * i + 1], ((112 * r - 94 * g - 18 * b + 128) >> 8) + 128);
    }
}

TEST(VirtualPixelConversion, UnmodelledConversionsThrowAsThePlatformDoes) {
  VirtualBitmap nv12(pattern_image(PixelFormat::Nv12, 4, 4, 0));
  EXPECT_THROW(nv12.convert(PixelFormat::Bgra8), platform::PlatformError);
  VirtualBitmap gray16(pattern_image(PixelFormat::Gray16, 3, 1, 0));
  auto gray8 = gray16.convert(PixelFormat::Gray8)->lock_for_read();
  EXPECT_EQ(std::vector<std::uint8_t>(gray8->data(), gray8->data() + 3), (std::vector<std::uint8_t>{0, 1, 2}));
}

}  // namespace
}  // namespace vexcap::virtual_camera
