// The pixel kernels of the frame path, chosen once per process for the CPU at hand.
//
// The scalar kernels (rgb24_to_nv12.h, unit_moves.h) are the reference: every table produces
// exactly their bytes. A table entry never fails; widths and strides that a vector kernel does
// not cover are handed to the scalar code for the remaining columns or rows.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frames/unit_moves.h"

namespace vexcap::frames {

// Instruction-set levels, each including the ones before it.
enum class SimdLevel : int { Scalar = 0, Sse2 = 1, Avx2 = 2, Avx512 = 3 };

const char* simd_level_name(SimdLevel level);

struct PixelKernels {
  SimdLevel level;
  // Tightly packed RGB24 frame to NV12, as convert_rgb24_plane_to_nv12.
  void (*rgb24_to_nv12)(const std::uint8_t* src, std::uint32_t width, std::uint32_t height,
                        std::uint8_t* dst);
  // As rotate_units_clockwise / rotate_units_counterclockwise.
  void (*rotate_clockwise)(const std::uint8_t* src, std::size_t src_pitch, UnitGrid grid,
                           std::uint8_t* dst, std::size_t dst_pitch);
  void (*rotate_counterclockwise)(const std::uint8_t* src, std::size_t src_pitch, UnitGrid grid,
                                  std::uint8_t* dst, std::size_t dst_pitch);
  // As reverse_units_copy: one row of `units` units read backwards into dst.
  void (*reverse_units)(const std::uint8_t* src, std::uint8_t* dst, std::size_t units,
                        std::size_t unit);
  // As memcpy (the regions do not overlap), in the library's own vector moves: glibc's
  // `rep movsb` copy runs more than ten times slower on AMD CPUs when the destination lies a few
  // bytes past the source modulo 4096, as a record's C-heap block may.
  void (*copy_bytes)(std::uint8_t* dst, const std::uint8_t* src, std::size_t bytes);
};

// The best level this CPU (and its operating system) runs.
SimdLevel detected_simd_level();

// The kernels of the frame path: the detected level's, unless capped below it.
const PixelKernels& pixel_kernels();

// The kernels of `level`, or of the detected level when that is lower.
const PixelKernels& pixel_kernels_at(SimdLevel level);

// Test and benchmark hook: caps the level pixel_kernels() answers from now on (Scalar runs the
// reference code). Not for use while frames are delivered on other threads.
void cap_simd_level(SimdLevel level);

// Caps the level for one scope and puts the previous table back.
class ScopedSimdCap {
 public:
  explicit ScopedSimdCap(SimdLevel level);
  ~ScopedSimdCap();
  ScopedSimdCap(const ScopedSimdCap&) = delete;
  ScopedSimdCap& operator=(const ScopedSimdCap&) = delete;

 private:
  SimdLevel previous_;
};

}  // namespace vexcap::frames
