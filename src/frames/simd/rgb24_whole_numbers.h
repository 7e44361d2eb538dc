// The vector RGB24 -> NV12 kernels compute in integers: Y = floor(N / 1000) with
// N = 257 R + 504 G + 98 B + 16500, U and V = floor(N / 4000) over the 2x2 sums. These equal the
// single-precision reference except where N is a multiple of 1000 (4000), where the float sum
// may land on either side of the whole number (for Y it falls short on 325 colours; the tests
// check every colour, and the integer division was checked over every 2x2 sum). The kernels
// flag such pixels and blocks and hand them here, to be written again by the reference.
#pragma once

#include <cstdint>

namespace vexcap::frames {

// Where a run of a row pair starts: the first column a kernel's flags count. Kernels pass it by
// value, so that it stays in registers; the rare settling takes a copy by reference.
struct Rgb24RowPair {
  const std::uint8_t* top;
  const std::uint8_t* bottom;
  std::uint8_t* y_top;
  std::uint8_t* y_bottom;
  std::uint8_t* uv;
};

// Rewrites the Y of the flagged pixels (bit i: column i) of each row and the U, V and four Y
// of the flagged 2x2 blocks (bit j: columns 2j and 2j + 1).
void settle_whole_numbers(const Rgb24RowPair& at, std::uint64_t top_pixels, std::uint64_t bottom_pixels,
                          std::uint32_t blocks);

}  // namespace vexcap::frames
