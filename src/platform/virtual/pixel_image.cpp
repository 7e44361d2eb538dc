#include "platform/virtual/pixel_image.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace vexcap::virtual_camera {

using platform::PixelFormat;

namespace {

// 0..255 twice: any run of up to 256 consecutive values (mod 256) is one copy from here.
constexpr std::array<std::uint8_t, 512> kRamp = [] {
  std::array<std::uint8_t, 512> ramp{};
  for (std::size_t i = 0; i < ramp.size(); ++i) ramp[i] = std::uint8_t(i);
  return ramp;
}();

std::int32_t even_up(std::int32_t v) { return v + (v & 1); }
std::int32_t half_up(std::int32_t v) { return (v + 1) / 2; }

// Row length in bytes of plane 0 without padding.
std::int32_t row_bytes(PixelFormat format, std::int32_t width) {
  switch (format) {
    case PixelFormat::Nv12: return even_up(width);
    case PixelFormat::Yuy2: return 2 * even_up(width);
    default: return bytes_per_pixel(format) * width;
  }
}

std::size_t image_size(PixelFormat format, std::int32_t stride, std::int32_t height, std::int32_t luma_rows) {
  if (format != PixelFormat::Nv12) return std::size_t(stride) * std::size_t(height);
  return std::size_t(stride) * (std::size_t(luma_rows) + std::size_t(half_up(height)));
}

std::int32_t aligned_rows(std::int32_t height, std::uint32_t alignment) {
  if (alignment <= 1) return height;
  const auto a = std::int64_t(alignment);
  return std::int32_t((height + a - 1) / a * a);
}

struct Rgb {
  int r, g, b;
};

Rgb pattern_rgb(std::int32_t x, std::int32_t y, std::uint64_t n) {
  return {int((x + n) & 0xFF), int((y + 2 * n) & 0xFF), int((x + y + 3 * n) & 0xFF)};
}

std::uint8_t luma(int r, int g, int b) { return std::uint8_t(((66 * r + 129 * g + 25 * b + 128) >> 8) + 16); }

// Where the channels sit in a packed RGB layout (RGB24, BGRA8, RGBA8).
struct PackedRgb {
  const std::uint8_t* data;
  std::size_t stride;
  int bytes_per_pixel, r, g, b;  // offsets of the channels within a pixel
};

// NV12 from packed RGB. The frames of every real-time stream pass through here, in unoptimized
// sanitizer builds too: plain loops over row pointers, no call per pixel.
PixelImage nv12_from_rgb(std::int32_t width, std::int32_t height, const PackedRgb& in) {
  PixelImage out = blank_image(PixelFormat::Nv12, width, height);
  const int step = in.bytes_per_pixel;
  for (std::int32_t y = 0; y < height; ++y) {
    const std::uint8_t* p = in.data + std::size_t(y) * in.stride;
    std::uint8_t* row = out.bytes.data() + std::size_t(y) * out.stride;
    for (std::int32_t x = 0; x < width; ++x, p += step) row[x] = luma(p[in.r], p[in.g], p[in.b]);
  }
  std::uint8_t* chroma = out.bytes.data() + out.chroma_offset();
  for (std::int32_t j = 0; j < half_up(height); ++j) {
    const std::uint8_t* row0 = in.data + std::size_t(2 * j) * in.stride;
    const std::uint8_t* row1 = 2 * j + 1 < height ? row0 + in.stride : nullptr;
    std::uint8_t* uv = chroma + std::size_t(j) * out.stride;
    for (std::int32_t i = 0; i < half_up(width); ++i) {
      const bool pair = 2 * i + 1 < width;
      int r = 0, g = 0, b = 0, count = 0;
      for (const std::uint8_t* line : {row0, row1}) {
        if (line == nullptr) continue;
        const std::uint8_t* p = line + std::size_t(2 * i) * step;
        r += p[in.r], g += p[in.g], b += p[in.b], ++count;
        if (pair) r += p[step + in.r], g += p[step + in.g], b += p[step + in.b], ++count;
      }
      r = (r + count / 2) / count, g = (g + count / 2) / count, b = (b + count / 2) / count;
      uv[2 * i] = std::uint8_t(((-38 * r - 74 * g + 112 * b + 128) >> 8) + 128);
      uv[2 * i + 1] = std::uint8_t(((112 * r - 94 * g - 18 * b + 128) >> 8) + 128);
    }
  }
  return out;
}

PixelImage nv12_from_yuy2(const PixelImage& src) {
  PixelImage out = blank_image(PixelFormat::Nv12, src.width, src.height);
  std::uint8_t* chroma = out.bytes.data() + out.chroma_offset();
  for (std::int32_t y = 0; y < src.height; ++y)
    for (std::int32_t x = 0; x < src.width; ++x)
      out.bytes[std::size_t(y) * out.stride + x] = src.bytes[std::size_t(y) * src.stride + 2 * x];
  for (std::int32_t j = 0; j < half_up(src.height); ++j) {
    const std::uint8_t* row0 = src.bytes.data() + std::size_t(2 * j) * src.stride;
    const std::uint8_t* row1 = src.bytes.data() + std::size_t(std::min(2 * j + 1, src.height - 1)) * src.stride;
    for (std::int32_t i = 0; i < half_up(src.width); ++i) {
      chroma[std::size_t(j) * out.stride + 2 * i] = std::uint8_t((row0[4 * i + 1] + row1[4 * i + 1] + 1) / 2);
      chroma[std::size_t(j) * out.stride + 2 * i + 1] = std::uint8_t((row0[4 * i + 3] + row1[4 * i + 3] + 1) / 2);
    }
  }
  return out;
}

// Copies the rows of every plane into `out`, which has the same format and size.
void copy_planes(const PixelImage& src, PixelImage& out) {
  const std::size_t row = std::size_t(std::min(src.stride, out.stride));
  for (std::int32_t y = 0; y < src.height; ++y)
    std::memcpy(out.bytes.data() + std::size_t(y) * out.stride, src.bytes.data() + std::size_t(y) * src.stride, row);
  if (src.format != PixelFormat::Nv12) return;
  for (std::int32_t j = 0; j < half_up(src.height); ++j)
    std::memcpy(out.bytes.data() + out.chroma_offset() + std::size_t(j) * out.stride,
                src.bytes.data() + src.chroma_offset() + std::size_t(j) * src.stride, row);
}

PixelImage repacked(const PixelImage& src) {
  PixelImage out = blank_image(src.format, src.width, src.height);
  copy_planes(src, out);
  return out;
}

}  // namespace

std::vector<platform::PlaneDescription> PixelImage::planes() const {
  std::vector<platform::PlaneDescription> result{{0, width, height, stride}};
  if (format == PixelFormat::Nv12) result.push_back({std::int32_t(chroma_offset()), width / 2, height / 2, stride});
  return result;
}

std::int32_t bytes_per_pixel(PixelFormat format) {
  switch (format) {
    case PixelFormat::Gray8: case PixelFormat::Nv12: return 1;
    case PixelFormat::Gray16: case PixelFormat::Yuy2: return 2;
    case PixelFormat::Bgra8: case PixelFormat::Rgba8: return 4;
    default: return 0;
  }
}

std::size_t packed_size(PixelFormat format, std::int32_t width, std::int32_t height) {
  if (bytes_per_pixel(format) == 0 || width <= 0 || height <= 0) return 0;
  return image_size(format, row_bytes(format, width), height, height);
}

PixelImage blank_image(PixelFormat format, std::int32_t width, std::int32_t height, std::uint32_t padding,
                       std::uint32_t plane_rows_alignment) {
  PixelImage image;
  image.format = format;
  image.width = width;
  image.height = height;
  image.stride = row_bytes(format, width) + std::int32_t(padding);
  image.luma_rows = format == PixelFormat::Nv12 ? aligned_rows(height, plane_rows_alignment) : height;
  image.bytes.assign(image_size(format, image.stride, height, image.luma_rows), 0);
  return image;
}

PixelImage relaid(const PixelImage& image, std::uint32_t padding, std::uint32_t plane_rows_alignment) {
  PixelImage out = blank_image(image.format, image.width, image.height, padding, plane_rows_alignment);
  copy_planes(image, out);
  return out;
}

PixelImage pattern_image(PixelFormat format, std::int32_t width, std::int32_t height, std::uint64_t n,
                         std::uint32_t padding, std::uint32_t plane_rows_alignment) {
  PixelImage image = blank_image(format, width, height, padding, plane_rows_alignment);
  for (std::int32_t y = 0; y < height; ++y) {
    std::uint8_t* row = image.bytes.data() + std::size_t(y) * image.stride;
    // L = x + 2y + 3n (mod 256), counted along the row; channels likewise.
    std::uint8_t l = std::uint8_t(2 * y + 3 * n);
    switch (format) {
      case PixelFormat::Gray8: case PixelFormat::Nv12:
        for (std::int32_t x = 0; x < width; x += 256)
          std::memcpy(row + x, kRamp.data() + std::uint8_t(l + x), std::size_t(std::min(width - x, 256)));
        break;
      case PixelFormat::Gray16:
        for (std::int32_t x = 0; x < width; ++x, ++l) row[2 * x] = row[2 * x + 1] = l;
        break;
      case PixelFormat::Yuy2:
        for (std::int32_t x = 0; x < width; ++x, ++l) {
          std::int32_t i = x / 2;
          row[2 * x] = l;
          row[2 * x + 1] = std::uint8_t(((x & 1) ? 192 + i + 2 * y + n : 64 + i + y + n) & 0xFF);
        }
        break;
      case PixelFormat::Bgra8: case PixelFormat::Rgba8: {
        const bool bgra = format == PixelFormat::Bgra8;
        for (std::int32_t x = 0; x < width; ++x) {
          Rgb c = pattern_rgb(x, y, n);
          row[4 * x] = std::uint8_t(bgra ? c.b : c.r);
          row[4 * x + 1] = std::uint8_t(c.g);
          row[4 * x + 2] = std::uint8_t(bgra ? c.r : c.b);
          row[4 * x + 3] = 255;
        }
        break;
      }
      default: break;
    }
  }
  if (format == PixelFormat::Nv12) {
    std::uint8_t* chroma = image.bytes.data() + image.chroma_offset();
    for (std::int32_t j = 0; j < half_up(height); ++j) {
      std::uint8_t* uv = chroma + std::size_t(j) * image.stride;
      std::uint8_t u = std::uint8_t(64 + j + n), v = std::uint8_t(192 + 2 * j + n);
      for (std::int32_t i = 0; i < half_up(width); ++i) uv[2 * i] = u++, uv[2 * i + 1] = v++;
    }
  }
  return image;
}

namespace {

// Along a pattern row R counts up from n, G = y + 2n stays and B = R + G (mod 256): a row is
// a run of the table of G, from R. Two periods per G, so any run of up to 256 pixels is one
// copy; the camera builds its 1 kHz frames by copies, not per pixel.
const std::uint8_t* rgb_runs(std::uint8_t g) {
  static std::array<std::uint8_t, 256 * 512 * 3> table;  // static storage: no heap to account for
  static const bool filled = [] {
    for (int green = 0; green < 256; ++green)
      for (int i = 0; i < 512; ++i) {
        std::uint8_t* p = table.data() + (std::size_t(green) * 512 + i) * 3;
        p[0] = std::uint8_t(i), p[1] = std::uint8_t(green), p[2] = std::uint8_t(i + green);
      }
    return true;
  }();
  (void)filled;
  return table.data() + std::size_t(g) * 512 * 3;
}

}  // namespace

std::vector<std::uint8_t> pattern_rgb24(std::int32_t width, std::int32_t height, std::uint64_t n) {
  std::vector<std::uint8_t> bytes(std::size_t(width) * height * 3);
  for (std::int32_t y = 0; y < height; ++y) {
    std::uint8_t* p = bytes.data() + std::size_t(y) * width * 3;
    const std::uint8_t* runs = rgb_runs(std::uint8_t(y + 2 * n));
    for (std::int32_t x = 0; x < width; x += 256) {
      const std::int32_t count = std::min(width - x, 256);
      std::memcpy(p + std::size_t(x) * 3, runs + std::size_t((x + n) & 0xFF) * 3, std::size_t(count) * 3);
    }
  }
  return bytes;
}

std::optional<PixelImage> image_from_bytes(PixelFormat format, std::int32_t width, std::int32_t height,
                                           const std::uint8_t* data, std::size_t size) {
  std::size_t needed = packed_size(format, width, height);
  if (needed == 0 || data == nullptr || size < needed) return std::nullopt;
  PixelImage image = blank_image(format, width, height);
  std::memcpy(image.bytes.data(), data, needed);
  return image;
}

std::optional<PixelImage> convert_image(const PixelImage& src, PixelFormat target) {
  if (src.format == target) return repacked(src);
  auto at = [&](std::int32_t, std::int32_t y) { return src.bytes.data() + std::size_t(y) * src.stride; };
  switch (target) {
    case PixelFormat::Nv12:
      if (src.format == PixelFormat::Yuy2) return nv12_from_yuy2(src);
      if (src.format == PixelFormat::Bgra8 || src.format == PixelFormat::Rgba8) {
        const bool bgra = src.format == PixelFormat::Bgra8;
        return nv12_from_rgb(src.width, src.height,
                             PackedRgb{src.bytes.data(), std::size_t(src.stride), 4, bgra ? 2 : 0, 1, bgra ? 0 : 2});
      }
      if (src.format == PixelFormat::Gray8) {
        PixelImage out = blank_image(PixelFormat::Nv12, src.width, src.height);
        for (std::int32_t y = 0; y < src.height; ++y)
          std::memcpy(out.bytes.data() + std::size_t(y) * out.stride, at(0, y), std::size_t(src.width));
        std::fill(out.bytes.begin() + std::ptrdiff_t(out.chroma_offset()), out.bytes.end(), 128);
        return out;
      }
      return std::nullopt;
    case PixelFormat::Gray8:
      if (src.format == PixelFormat::Gray16) {
        PixelImage out = blank_image(target, src.width, src.height);
        for (std::int32_t y = 0; y < src.height; ++y)
          for (std::int32_t x = 0; x < src.width; ++x) out.bytes[std::size_t(y) * out.stride + x] = at(x, y)[2 * x + 1];
        return out;
      }
      return std::nullopt;
    case PixelFormat::Gray16:
      if (src.format == PixelFormat::Gray8) {
        PixelImage out = blank_image(target, src.width, src.height);
        for (std::int32_t y = 0; y < src.height; ++y)
          for (std::int32_t x = 0; x < src.width; ++x)
            out.bytes[std::size_t(y) * out.stride + 2 * x] = out.bytes[std::size_t(y) * out.stride + 2 * x + 1] = at(x, y)[x];
        return out;
      }
      return std::nullopt;
    default:
      return std::nullopt;
  }
}

PixelImage rgb24_to_nv12(const std::uint8_t* data, std::int32_t width, std::int32_t height) {
  return nv12_from_rgb(width, height, PackedRgb{data, std::size_t(width) * 3, 3, 0, 1, 2});
}

}  // namespace vexcap::virtual_camera
