// One RGB24 -> NV12 frame walked row pair by row pair in runs of a vector kernel's columns.
// Every instruction set brings its own run kernel; the walk, the fetch ahead and the ragged
// right edge are the same for all of them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frames/rgb24_to_nv12.h"
#include "frames/simd/rgb24_whole_numbers.h"

namespace vexcap::frames {

// The same row pair from column x on.
inline Rgb24RowPair columns_on(const Rgb24RowPair& row, std::size_t x) {
  return {row.top + 3 * x, row.bottom + 3 * x, row.y_top + x, row.y_bottom + x, row.uv + x};
}

// `Runs` is a type of one kernel file's unnamed namespace (so every instantiation stays in the
// file built for its instruction set) with
//   static constexpr std::uint32_t kColumns;   columns per run, even
//   void convert(Rgb24RowPair) const;   one run of kColumns columns
// and, optionally, a kernel for the last, shorter run that answers how many columns it took:
//   std::uint32_t convert_last(Rgb24RowPair, std::uint32_t columns) const;
// Columns no kernel takes go to the reference. `runs` and the row pair are taken by value:
// copies no pointer reaches stay in registers across the stores, which may alias anything.
template <class Runs>
void convert_rgb24_frame_in_runs(Runs runs, const std::uint8_t* src, std::uint32_t width,
                                 std::uint32_t height, std::uint8_t* dst) {
  constexpr std::size_t kRunBytes = std::size_t{Runs::kColumns} * 3;
  const std::size_t src_row = std::size_t{width} * 3;
  // The same columns two rows on: fetched into L2 while this pair is converted (the hardware
  // prefetcher alone leaves a cold frame's rows waiting on memory). The last pair's fetches
  // point past the frame: harmless, a prefetch never faults.
  const std::size_t ahead = 2 * src_row;
  std::uint8_t* chroma = dst + std::size_t{width} * height;
  for (std::size_t pair = 0; pair < height / 2; ++pair) {
    const std::size_t top = pair * 2;
    const Rgb24RowPair row{src + top * src_row, src + (top + 1) * src_row, dst + top * width,
                           dst + (top + 1) * width, chroma + pair * width};
    // The run's pointers move along by themselves: worked out from the column on every run,
    // they cost more instructions than the moves.
    Rgb24RowPair at = row;
    std::uint32_t x = 0;
    for (; x + Runs::kColumns <= width; x += Runs::kColumns) {
#if defined(__GNUC__)
      for (std::size_t line = 0; line < kRunBytes; line += 64) {
        __builtin_prefetch(at.top + ahead + line, 0, 2);
        __builtin_prefetch(at.bottom + ahead + line, 0, 2);
      }
#endif
      runs.convert(at);
      at = columns_on(at, Runs::kColumns);
    }
    std::uint32_t rest = width - x;
    if constexpr (requires { runs.convert_last(at, rest); }) {
      if (rest != 0) {
        const std::uint32_t taken = runs.convert_last(at, rest);
        at = columns_on(at, taken);
        rest -= taken;
      }
    }
    if (rest != 0) convert_rgb24_row_pair(at.top, at.bottom, rest, at.y_top, at.y_bottom, at.uv);
  }
}

}  // namespace vexcap::frames
