// libpng, a decoder the tool's authors did not write, reads the tool's PNG files as the
// specification decoder of the end-to-end tests does, sample for sample.
#include <gtest/gtest.h>
#include <png.h>

#include <chrono>
#include <csetjmp>
#include <cstdio>
#include <vector>

#include "png_decode.h"
#include "png_file.h"

namespace vexcap::tool {
namespace {

namespace fs = std::filesystem;
using testing::DecodedPng;

// libpng longjmps out of here on a damaged file: no object with a destructor lives in it.
bool read_with_libpng(std::FILE* file, DecodedPng* image) {
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

std::optional<DecodedPng> libpng_decode(const fs::path& path) {
  std::FILE* file = std::fopen(path.string().c_str(), "rb");
  if (file == nullptr) return std::nullopt;
  DecodedPng image;
  const bool read = read_with_libpng(file, &image);
  std::fclose(file);
  return read ? std::optional(image) : std::nullopt;
}

class LibpngReadTest : public ::testing::Test {
 protected:
  void SetUp() override {
    folder_ = fs::temp_directory_path() /
              ("vexcap-libpng-" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()));
    fs::create_directories(folder_);
  }
  void TearDown() override { fs::remove_all(folder_); }
  fs::path folder_;
};

TEST_F(LibpngReadTest, BothDecodersReadTheSameSamples) {
  // A frame of each kind the library delivers, with padded rows and odd content.
  struct Case {
    std::uint32_t format;
    std::uint32_t width, height;
    int stride;
    int bit_depth, channels;
  };
  for (const Case& c : {Case{VEXCAP_PIXEL_FORMAT_GRAY8, 37, 11, 40, 8, 1}, Case{VEXCAP_PIXEL_FORMAT_GRAY16, 23, 9, 50, 16, 1},
                        Case{VEXCAP_PIXEL_FORMAT_NV12, 18, 10, 20, 8, 3}}) {
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(c.stride) * c.height * 2);
    for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<std::uint8_t>(i * 7 + i / 13);
    vexcap_frame frame{};
    frame.data = pixels.data();
    frame.width = c.width;
    frame.height = c.height;
    frame.stride = c.stride;
    frame.pixel_format = c.format;
    const fs::path path = folder_ / ("frame-" + std::to_string(c.format) + ".png");
    write_frame_png(path, frame);

    const std::optional<DecodedPng> ours = testing::decode_png(path);
    const std::optional<DecodedPng> theirs = libpng_decode(path);
    ASSERT_TRUE(ours && theirs) << c.format;
    EXPECT_EQ(theirs->bit_depth, c.bit_depth);
    EXPECT_EQ(theirs->channels, c.channels);
    EXPECT_EQ(theirs->width, c.width);
    EXPECT_EQ(ours->rows, theirs->rows) << c.format;
    if (c.format == VEXCAP_PIXEL_FORMAT_GRAY16) {  // little-endian samples in, big-endian PNG out
      EXPECT_EQ(theirs->sample(5, 3), pixels[3 * 50 + 10] | unsigned{pixels[3 * 50 + 11]} << 8);
    } else if (c.format == VEXCAP_PIXEL_FORMAT_GRAY8) {
      EXPECT_EQ(theirs->sample(36, 10), pixels[10 * 40 + 36]);
    }
  }
}

}  // namespace
}  // namespace vexcap::tool
