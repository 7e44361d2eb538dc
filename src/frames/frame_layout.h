// Geometry of a frame buffer as the frame record describes it, for the pixel layouts the
// rotation code knows: Gray8, Gray16, NV12 and YUY2 (the platform's BitmapPixelFormat values).
#pragma once

#include <cstddef>
#include <cstdint>

namespace vexcap::frames {

inline constexpr std::uint32_t kGray16 = 57;
inline constexpr std::uint32_t kGray8 = 62;
inline constexpr std::uint32_t kNv12 = 103;
inline constexpr std::uint32_t kYuy2 = 107;

struct FrameLayout {
  std::uint32_t pixel_format = 0;
  std::uint32_t width = 0;   // pixels
  std::uint32_t height = 0;  // pixels
  std::int32_t stride = 0;   // bytes per row of the first plane; NV12's chroma rows use it too
};

bool is_rotatable_format(std::uint32_t pixel_format);

// Bytes of one row of pixels of the first plane (no padding); 0 for an unknown format.
std::size_t row_bytes(std::uint32_t pixel_format, std::uint32_t width);

// A layout the rotation code can work on: known format and rows at least as long as the pixels.
bool is_valid_layout(const FrameLayout& layout);

// Bytes a buffer must hold so that every pixel of the layout can be read: the last row (and
// for NV12 the last chroma row) need not carry its padding. 0 for an invalid layout.
std::size_t frame_bytes(const FrameLayout& layout);

// Size of a tightly packed frame of this format: W x H (Gray8), W x H x 2 (Gray16, YUY2),
// W x H x 3 / 2 (NV12); 0 for an unknown format. A quarter turn writes this many bytes at most.
std::size_t packed_frame_size(std::uint32_t pixel_format, std::uint32_t width,
                              std::uint32_t height);

}  // namespace vexcap::frames
