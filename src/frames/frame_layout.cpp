#include "frames/frame_layout.h"

namespace vexcap::frames {

bool is_rotatable_format(std::uint32_t pixel_format) {
  return pixel_format == kGray8 || pixel_format == kGray16 || pixel_format == kNv12 ||
         pixel_format == kYuy2;
}

std::size_t row_bytes(std::uint32_t pixel_format, std::uint32_t width) {
  switch (pixel_format) {
    case kGray8:
    case kNv12:
      return width;
    case kGray16:
    case kYuy2:
      return std::size_t{width} * 2;
    default:
      return 0;
  }
}

bool is_valid_layout(const FrameLayout& layout) {
  return is_rotatable_format(layout.pixel_format) && layout.stride >= 0 &&
         static_cast<std::size_t>(layout.stride) >= row_bytes(layout.pixel_format, layout.width);
}

std::size_t frame_bytes(const FrameLayout& layout) {
  if (!is_valid_layout(layout) || layout.width == 0 || layout.height == 0) return 0;
  const std::size_t stride = static_cast<std::size_t>(layout.stride);
  const std::size_t row = row_bytes(layout.pixel_format, layout.width);
  const std::size_t first_plane = (layout.height - 1) * stride + row;
  if (layout.pixel_format != kNv12) return first_plane;

  // The chroma plane starts after height full strides and holds (W/2) U,V pairs a row.
  const std::size_t chroma_rows = layout.height / 2;
  const std::size_t chroma_row = std::size_t{layout.width / 2} * 2;
  if (chroma_rows == 0 || chroma_row == 0) return first_plane;
  return layout.height * stride + (chroma_rows - 1) * stride + chroma_row;
}

std::size_t packed_frame_size(std::uint32_t pixel_format, std::uint32_t width,
                              std::uint32_t height) {
  const std::size_t pixels = std::size_t{width} * height;
  switch (pixel_format) {
    case kGray8:
      return pixels;
    case kGray16:
    case kYuy2:
      return pixels * 2;
    case kNv12:
      return pixels * 3 / 2;
    default:
      return 0;
  }
}

}  // namespace vexcap::frames
