#include "png_decode.h"

#include <zlib.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

namespace vexcap::tool::testing {
namespace {

std::uint32_t be32(const std::uint8_t* bytes) {
  return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 | bytes[3];
}

int paeth(int a, int b, int c) {
  const int p = a + b - c;
  const int pa = std::abs(p - a), pb = std::abs(p - b), pc = std::abs(p - c);
  if (pa <= pb && pa <= pc) return a;
  return pb <= pc ? b : c;
}

// Undoes one row's filter in place; `previous` is the row above (zeros for the first).
bool unfilter(int filter, std::vector<std::uint8_t>& row, const std::vector<std::uint8_t>& previous,
              std::size_t pixel_bytes) {
  for (std::size_t i = 0; i < row.size(); ++i) {
    const int left = i >= pixel_bytes ? row[i - pixel_bytes] : 0;
    const int up = previous[i];
    const int up_left = i >= pixel_bytes ? previous[i - pixel_bytes] : 0;
    int predicted = 0;
    switch (filter) {
      case 0: predicted = 0; break;
      case 1: predicted = left; break;
      case 2: predicted = up; break;
      case 3: predicted = (left + up) / 2; break;
      case 4: predicted = paeth(left, up, up_left); break;
      default: return false;
    }
    row[i] = static_cast<std::uint8_t>(row[i] + predicted);
  }
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
  std::ifstream file(path, std::ios::binary);
  const std::vector<std::uint8_t> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  static const std::uint8_t kSignature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  if (bytes.size() < 8 || std::memcmp(bytes.data(), kSignature, 8) != 0) return std::nullopt;

  DecodedPng image;
  std::vector<std::uint8_t> compressed;
  bool have_header = false, ended = false;
  for (std::size_t at = 8; !ended;) {
    if (at + 12 > bytes.size()) return std::nullopt;
    const std::uint32_t length = be32(&bytes[at]);
    if (length > bytes.size() - at - 12) return std::nullopt;
    const std::string type(reinterpret_cast<const char*>(&bytes[at + 4]), 4);
    const std::uint8_t* data = &bytes[at + 8];
    const uLong crc = crc32(crc32(0L, Z_NULL, 0), &bytes[at + 4], length + 4);
    if (crc != be32(data + length)) return std::nullopt;
    if (type == "IHDR") {
      if (length != 13) return std::nullopt;
      image.width = be32(data);
      image.height = be32(data + 4);
      image.bit_depth = data[8];
      const int colour_type = data[9];
      if (data[10] != 0 || data[11] != 0 || data[12] != 0) return std::nullopt;  // deflate, filters, no interlace
      if (colour_type != 0 && colour_type != 2) return std::nullopt;
      if (image.bit_depth != 8 && image.bit_depth != 16) return std::nullopt;
      image.channels = colour_type == 2 ? 3 : 1;
      have_header = true;
    } else if (type == "IDAT") {
      compressed.insert(compressed.end(), data, data + length);
    } else if (type == "IEND") {
      ended = true;
    }
    at += 12 + length;
  }
  if (!have_header || image.width == 0 || image.height == 0) return std::nullopt;

  const std::size_t pixel_bytes = static_cast<std::size_t>(image.channels) * (image.bit_depth / 8);
  const std::size_t row_bytes = pixel_bytes * image.width;
  std::vector<std::uint8_t> filtered((row_bytes + 1) * image.height);
  uLongf inflated = static_cast<uLongf>(filtered.size());
  if (uncompress(filtered.data(), &inflated, compressed.data(), static_cast<uLong>(compressed.size())) != Z_OK ||
      inflated != filtered.size()) {
    return std::nullopt;
  }
  std::vector<std::uint8_t> previous(row_bytes, 0);
  for (std::uint32_t y = 0; y < image.height; ++y) {
    const std::uint8_t* line = &filtered[(row_bytes + 1) * y];
    std::vector<std::uint8_t> row(line + 1, line + 1 + row_bytes);
    if (!unfilter(line[0], row, previous, pixel_bytes)) return std::nullopt;
    previous = row;
    image.rows.push_back(std::move(row));
  }
  return image;
}

}  // namespace vexcap::tool::testing
