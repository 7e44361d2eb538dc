#include "png_file.h"

#include <png.h>

#include <csetjmp>
#include <cstdio>
#include <string>
#include <vector>

#include "frame_pixels.h"
#include "output_file.h"
#include "tool_error.h"

namespace vexcap::tool {
namespace {

// What libpng needs, prepared before the encoder's setjmp so that nothing with a destructor
// lives in the frame a longjmp may leave.
struct PngImage {
  std::uint32_t width;
  std::uint32_t height;
  int bit_depth;
  int color_type;
  bool little_endian_16;
  png_bytepp rows;
};

struct PngFailure {
  char message[256];
};

void on_png_error(png_structp png, png_const_charp message) {
  auto* failure = static_cast<PngFailure*>(png_get_error_ptr(png));
  std::snprintf(failure->message, sizeof failure->message, "%s", message);
  png_longjmp(png, 1);
}

void on_png_warning(png_structp, png_const_charp) {}

// False with failure->message set when libpng reports an error.
bool encode(std::FILE* file, const PngImage& image, PngFailure* failure) {
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, failure, on_png_error, on_png_warning);
  if (png == nullptr) {
    std::snprintf(failure->message, sizeof failure->message, "out of memory");
    return false;
  }
  png_infop info = png_create_info_struct(png);
  if (info == nullptr || setjmp(png_jmpbuf(png))) {
    png_destroy_write_struct(&png, &info);
    return false;
  }
  png_init_io(png, file);
  png_set_IHDR(png, info, image.width, image.height, image.bit_depth, image.color_type,
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  // Frames are written as fast as they come: light compression keeps up with the camera.
  png_set_compression_level(png, 1);
  png_write_info(png, info);
  if (image.little_endian_16) png_set_swap(png);
  png_write_image(png, image.rows);
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  return true;
}

}  // namespace

void write_frame_png(const std::filesystem::path& path, const vexcap_frame& frame) {
  std::vector<std::uint8_t> rgb;
  std::vector<png_bytep> rows(frame.height);
  PngImage image{frame.width, frame.height, 8, PNG_COLOR_TYPE_GRAY, false, rows.data()};
  switch (frame.pixel_format) {
    case VEXCAP_PIXEL_FORMAT_GRAY8:
    case VEXCAP_PIXEL_FORMAT_GRAY16:
      for (std::uint32_t y = 0; y < frame.height; ++y) rows[y] = frame.data + std::size_t(frame.stride) * y;
      if (frame.pixel_format == VEXCAP_PIXEL_FORMAT_GRAY16) {
        image.bit_depth = 16;
        image.little_endian_16 = true;  // the frame holds little-endian samples, PNG big-endian
      }
      break;
    case VEXCAP_PIXEL_FORMAT_NV12:
      rgb = nv12_to_rgb(frame);
      for (std::uint32_t y = 0; y < frame.height; ++y) rows[y] = rgb.data() + std::size_t(frame.width) * 3 * y;
      image.color_type = PNG_COLOR_TYPE_RGB;
      break;
    default:
      throw ToolError("cannot write " + path.string() + ": the frame's pixel format " +
                      std::to_string(frame.pixel_format) + " is none the library delivers");
  }

  OutputFile file(path);
  PngFailure failure{};
  if (!encode(file.stream(), image, &failure)) {
    throw ToolError("cannot write " + path.string() + ": libpng: " + failure.message);
  }
  file.commit();
}

}  // namespace vexcap::tool
