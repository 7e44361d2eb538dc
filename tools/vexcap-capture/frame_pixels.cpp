#include "frame_pixels.h"

#include <algorithm>

namespace vexcap::tool {
namespace {

std::uint8_t clamp_byte(int value) { return static_cast<std::uint8_t>(std::clamp(value, 0, 255)); }

}  // namespace

const char* pixel_format_name(std::uint32_t pixel_format) {
  switch (pixel_format) {
    case VEXCAP_PIXEL_FORMAT_GRAY8: return "Gray8";
    case VEXCAP_PIXEL_FORMAT_GRAY16: return "Gray16";
    case VEXCAP_PIXEL_FORMAT_NV12: return "NV12";
    case VEXCAP_PIXEL_FORMAT_YUY2: return "YUY2";
    default: return "unknown";
  }
}

std::size_t pixel_row_bytes(std::uint32_t pixel_format, std::uint32_t width) {
  switch (pixel_format) {
    case VEXCAP_PIXEL_FORMAT_GRAY8:
    case VEXCAP_PIXEL_FORMAT_NV12: return width;
    case VEXCAP_PIXEL_FORMAT_GRAY16: return std::size_t{width} * 2;
    default: return 0;
  }
}

std::size_t frame_buffer_bytes(const vexcap_frame& frame) {
  const std::size_t plane = static_cast<std::size_t>(frame.stride < 0 ? 0 : frame.stride) * frame.height;
  return frame.pixel_format == VEXCAP_PIXEL_FORMAT_NV12 ? plane + plane / 2 : plane;
}

std::vector<std::uint8_t> nv12_to_rgb(const vexcap_frame& frame) {
  const std::size_t stride = static_cast<std::size_t>(frame.stride);
  const std::uint8_t* luma = frame.data;
  const std::uint8_t* chroma = frame.data + stride * frame.height;
  std::vector<std::uint8_t> rgb(std::size_t{frame.width} * frame.height * 3);
  std::uint8_t* out = rgb.data();
  for (std::uint32_t y = 0; y < frame.height; ++y) {
    const std::uint8_t* luma_row = luma + stride * y;
    const std::uint8_t* chroma_row = chroma + stride * (y / 2);
    for (std::uint32_t x = 0; x < frame.width; ++x) {
      const int c = luma_row[x] - 16;
      const int d = chroma_row[x & ~1u] - 128;
      const int e = chroma_row[(x & ~1u) + 1] - 128;
      *out++ = clamp_byte((298 * c + 409 * e + 128) >> 8);
      *out++ = clamp_byte((298 * c - 100 * d - 208 * e + 128) >> 8);
      *out++ = clamp_byte((298 * c + 516 * d + 128) >> 8);
    }
  }
  return rgb;
}

}  // namespace vexcap::tool
