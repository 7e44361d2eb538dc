// Pixel buffers of the virtual camera: their layouts, the test pattern every frame carries,
// and the conversions the platform performs (reader subtypes, Bitmap::convert).
//
// The pattern of frame n (0 for the first frame a reader produces), pixel (x, y), all values
// taken modulo 256:
//   L = x + 2y + 3n                                  (the luma / grey value)
//   Gray8: L.   Gray16: L * 257, little-endian (both bytes L).
//   NV12:  Y = L; the chroma pair of the 2x2 block (i, j) = (x/2, y/2) is
//          U = 64 + i + j + n,  V = 192 + i + 2j + n.
//   YUY2:  Y = L; the pair of pixels (i = x/2, row y) has U = 64 + i + y + n, V = 192 + i + 2y + n,
//          stored Y0 U Y1 V.
//   RGB:   R = x + n,  G = y + 2n,  B = x + y + 3n;  A = 255.
//          BGRA8 stores B G R A, RGBA8 R G B A, RGB24 frames (buffer only) R G B.
// Rows are `stride` bytes apart; padding bytes at the end of a row are 0. An NV12 chroma plane
// uses the same stride and starts at stride * height, or past the rows its luma plane is laid
// out over when a driver pads them (1080 rows in 1088); the rows between are 0.
//
// Conversions to NV12 (BT.601, limited range, integer arithmetic):
//   from RGB:  Y = ((66R + 129G + 25B + 128) >> 8) + 16 for every pixel; for every 2x2 block the
//              R, G and B of its pixels are averaged, rounding half up ((sum + count/2) / count),
//              and U = ((-38R - 74G + 112B + 128) >> 8) + 128, V = ((112R - 94G - 18B + 128) >> 8) + 128
//              (>> is an arithmetic shift).
//   from YUY2: Y copied; U and V of block (i, j) are the averages, rounding half up, of the
//              pair values of rows 2j and 2j + 1.
//   from Gray8: Y copied, U = V = 128.
// Gray16 converts to Gray8 by its high byte, Gray8 to Gray16 by v * 257. Other conversions are
// not modelled.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/port.h"

namespace vexcap::virtual_camera {

struct PixelImage {
  platform::PixelFormat format = platform::PixelFormat::Unknown;
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::int32_t stride = 0;  // bytes per row of plane 0
  std::int32_t luma_rows = 0;  // NV12: rows the luma plane is laid out over (at least height)
  std::vector<std::uint8_t> bytes;

  std::vector<platform::PlaneDescription> planes() const;
  std::size_t chroma_offset() const { return std::size_t(stride) * std::size_t(luma_rows); }
};

// Bytes per pixel of plane 0; 0 for formats the virtual camera does not model.
std::int32_t bytes_per_pixel(platform::PixelFormat format);
// Size of a tightly packed image; 0 when the format is not modelled.
std::size_t packed_size(platform::PixelFormat format, std::int32_t width, std::int32_t height);

// A zero-filled image, rows padded by `padding` bytes; an NV12 luma plane laid out over its
// height rounded up to a multiple of `plane_rows_alignment` (0 or 1: the height).
PixelImage blank_image(platform::PixelFormat format, std::int32_t width, std::int32_t height,
                       std::uint32_t padding = 0, std::uint32_t plane_rows_alignment = 0);
// The pattern of frame `n` (see above), in that layout.
PixelImage pattern_image(platform::PixelFormat format, std::int32_t width, std::int32_t height,
                         std::uint64_t n, std::uint32_t padding = 0, std::uint32_t plane_rows_alignment = 0);
// The same pixels in another layout (row padding, NV12 plane rows).
PixelImage relaid(const PixelImage& image, std::uint32_t padding, std::uint32_t plane_rows_alignment);
std::vector<std::uint8_t> pattern_rgb24(std::int32_t width, std::int32_t height, std::uint64_t n);

// A tightly packed image read from bytes of that layout; nullopt when too few bytes.
std::optional<PixelImage> image_from_bytes(platform::PixelFormat format, std::int32_t width,
                                           std::int32_t height, const std::uint8_t* data,
                                           std::size_t size);

// The platform's conversion; nullopt when the pair of formats is not modelled. The result is
// tightly packed.
std::optional<PixelImage> convert_image(const PixelImage& source, platform::PixelFormat target);
// RGB24 bytes (R G B, tightly packed) to NV12.
PixelImage rgb24_to_nv12(const std::uint8_t* data, std::int32_t width, std::int32_t height);

}  // namespace vexcap::virtual_camera
