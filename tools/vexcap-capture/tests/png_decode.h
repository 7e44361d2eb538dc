// Decodes a PNG from its specification, over zlib alone: every chunk's CRC, the header, the
// image data inflated and every row filter undone. Samples as stored, 16-bit samples big-endian
// as the format defines them. Grey and RGB, 8 and 16 bits, not interlaced: what PNG writers
// make of camera frames.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

namespace vexcap::tool::testing {

struct DecodedPng {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  int bit_depth = 0;
  int channels = 0;  // 1 grey, 3 RGB
  std::vector<std::vector<std::uint8_t>> rows;

  // Sample c of pixel (x, y).
  unsigned sample(std::uint32_t x, std::uint32_t y, int c = 0) const;
};

// nullopt when the file is no complete, valid PNG of those kinds.
std::optional<DecodedPng> decode_png(const std::filesystem::path& path);

}  // namespace vexcap::tool::testing
