#include "png_decode.h"

#include <png.h>

#include <csetjmp>
#include <cstdio>

namespace vexcap::tool::testing {
namespace {

// libpng longjmps out of here on a damaged file: no object with a destructor lives in it.
bool read_rows(std::FILE* file, DecodedPng* image) {
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  if (png == nullptr) return false;
  png_infop info = png_create_info_struct(png);
  if (info == nullptr || setjmp(png_jmpbuf(png))) {
    png_destroy_read_struct(&png, &info, nullptr);
    return false;
  }
  png_init_io(png, file);
  png_read_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
  image->width = png_get_image_width(png, info);
  image->height = png_get_image_height(png, info);
  image->bit_depth = png_get_bit_depth(png, info);
  image->channels = png_get_channels(png, info);
  const png_bytepp rows = png_get_rows(png, info);
  const png_size_t row_bytes = png_get_rowbytes(png, info);
  image->rows.resize(image->height);
  for (std::uint32_t y = 0; y < image->height; ++y) image->rows[y].assign(rows[y], rows[y] + row_bytes);
  png_destroy_read_struct(&png, &info, nullptr);
  return true;
}

}  // namespace

unsigned DecodedPng::sample(std::uint32_t x, std::uint32_t y, int c) const {
  const std::vector<std::uint8_t>& row = rows.at(y);
  const std::size_t index = std::size_t{x} * channels + c;
  if (bit_depth == 16) return (unsigned{row.at(index * 2)} << 8) | row.at(index * 2 + 1);
  return row.at(index);
}

std::optional<DecodedPng> decode_png(const std::filesystem::path& path) {
  std::FILE* file = std::fopen(path.string().c_str(), "rb");
  if (file == nullptr) return std::nullopt;
  DecodedPng image;
  const bool read = read_rows(file, &image);
  std::fclose(file);
  if (!read) return std::nullopt;
  return image;
}

}  // namespace vexcap::tool::testing
