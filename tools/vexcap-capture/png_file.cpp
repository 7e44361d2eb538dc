#include "png_file.h"

#include <zlib.h>

#include <array>
#include <string>
#include <vector>

#include "frame_pixels.h"
#include "output_file.h"
#include "tool_error.h"

namespace vexcap::tool {
namespace {

// PNG's colour types and the one filter the encoder uses.
constexpr std::uint8_t kGrey = 0;
constexpr std::uint8_t kRgb = 2;
constexpr std::uint8_t kFilterNone = 0;

struct Image {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint8_t bit_depth = 8;
  std::uint8_t colour_type = kGrey;
  std::size_t row_bytes = 0;
  const std::uint8_t* rows = nullptr;  // row y at rows + y * stride
  std::size_t stride = 0;
  bool swap_16 = false;  // little-endian samples, which PNG stores big-endian
};

void put_u32(std::vector<std::uint8_t>& out, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) out.push_back(static_cast<std::uint8_t>(value >> shift));
}

// Length, type, data, and the CRC of type and data.
void write_chunk(OutputFile& file, const char (&type)[5], const std::vector<std::uint8_t>& data) {
  std::vector<std::uint8_t> head;
  put_u32(head, static_cast<std::uint32_t>(data.size()));
  head.insert(head.end(), type, type + 4);
  uLong crc = crc32(0L, Z_NULL, 0);
  crc = crc32(crc, head.data() + 4, 4);
  if (!data.empty()) crc = crc32(crc, data.data(), static_cast<uInt>(data.size()));
  std::vector<std::uint8_t> tail;
  put_u32(tail, static_cast<std::uint32_t>(crc));
  file.write(head.data(), head.size());
  file.write(data.data(), data.size());
  file.write(tail.data(), tail.size());
}

// The zlib stream of the filtered rows: each row behind its filter byte.
std::vector<std::uint8_t> compressed_rows(const Image& image, const std::filesystem::path& path) {
  z_stream stream{};
  // Frames are written as fast as they come: light compression keeps up with the camera.
  if (deflateInit(&stream, 1) != Z_OK) throw ToolError("cannot write " + path.string() + ": zlib would not start");
  std::vector<std::uint8_t> out(deflateBound(&stream, static_cast<uLong>((image.row_bytes + 1) * image.height)));
  stream.next_out = out.data();
  stream.avail_out = static_cast<uInt>(out.size());
  std::vector<std::uint8_t> row(image.row_bytes + 1);
  int result = Z_OK;
  for (std::uint32_t y = 0; y < image.height && result == Z_OK; ++y) {
    const std::uint8_t* source = image.rows + image.stride * y;
    row[0] = kFilterNone;
    for (std::size_t i = 0; i < image.row_bytes; ++i) row[1 + i] = source[image.swap_16 ? i ^ 1 : i];
    stream.next_in = row.data();
    stream.avail_in = static_cast<uInt>(row.size());
    result = deflate(&stream, y + 1 == image.height ? Z_FINISH : Z_NO_FLUSH);
  }
  if (image.height == 0) result = deflate(&stream, Z_FINISH);
  out.resize(stream.total_out);
  deflateEnd(&stream);
  if (result != Z_STREAM_END) {
    throw ToolError("cannot write " + path.string() + ": zlib: " + std::to_string(result));
  }
  return out;
}

void encode(OutputFile& file, const Image& image, const std::filesystem::path& path) {
  static const std::array<std::uint8_t, 8> kSignature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  file.write(kSignature.data(), kSignature.size());
  std::vector<std::uint8_t> header;
  put_u32(header, image.width);
  put_u32(header, image.height);
  header.insert(header.end(), {image.bit_depth, image.colour_type, 0 /* deflate */, 0 /* adaptive filters */,
                               0 /* not interlaced */});
  write_chunk(file, "IHDR", header);
  write_chunk(file, "IDAT", compressed_rows(image, path));
  write_chunk(file, "IEND", {});
}

}  // namespace

void write_frame_png(const std::filesystem::path& path, const vexcap_frame& frame) {
  std::vector<std::uint8_t> rgb;
  Image image;
  image.width = frame.width;
  image.height = frame.height;
  image.rows = frame.data;
  image.stride = static_cast<std::size_t>(frame.stride < 0 ? 0 : frame.stride);
  switch (frame.pixel_format) {
    case VEXCAP_PIXEL_FORMAT_GRAY8:
      image.row_bytes = frame.width;
      break;
    case VEXCAP_PIXEL_FORMAT_GRAY16:
      image.bit_depth = 16;
      image.row_bytes = std::size_t{frame.width} * 2;
      image.swap_16 = true;
      break;
    case VEXCAP_PIXEL_FORMAT_NV12:
      rgb = nv12_to_rgb(frame);
      image.colour_type = kRgb;
      image.row_bytes = std::size_t{frame.width} * 3;
      image.rows = rgb.data();
      image.stride = image.row_bytes;
      break;
    default:
      throw ToolError("cannot write " + path.string() + ": the frame's pixel format " +
                      std::to_string(frame.pixel_format) + " is none the library delivers");
  }
  if (image.stride < image.row_bytes) {
    throw ToolError("cannot write " + path.string() + ": the frame's stride " + std::to_string(frame.stride) +
                    " is shorter than a row");
  }
  OutputFile file(path);
  encode(file, image, path);
  file.commit();
}

}  // namespace vexcap::tool
