// RGB24 to NV12 and the rotations on frames of any size, stride and format: every vector level
// this CPU runs must write exactly the scalar reference's bytes. Buffers are as large as the
// kernels may touch and no larger, so ASan catches any stray access.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "frames/rgb24_to_nv12.h"
#include "frames/rotation.h"
#include "frames/simd/pixel_kernels.h"

using namespace vexcap::frames;
using Bytes = std::vector<std::uint8_t>;

namespace {

constexpr SimdLevel kLevels[] = {SimdLevel::Sse2, SimdLevel::Avx2, SimdLevel::Avx512};

void require(bool condition) {
  if (!condition) std::abort();
}

// Pixel bytes from the input, repeated when the input is shorter than the frame.
Bytes frame_bytes_from(FuzzedDataProvider& input, std::size_t size) {
  Bytes pattern = input.ConsumeRemainingBytes<std::uint8_t>();
  if (pattern.empty()) pattern.push_back(0x5A);
  Bytes bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(pattern[i % pattern.size()] + i / pattern.size());
  return bytes;
}

void rgb24_to_nv12(FuzzedDataProvider& input) {
  const std::uint32_t width = input.ConsumeIntegralInRange<std::uint32_t>(1, 200);
  const std::uint32_t height = input.ConsumeIntegralInRange<std::uint32_t>(1, 40);
  const Bytes rgb = frame_bytes_from(input, std::size_t{width} * height * 3);
  const std::size_t out_size = std::size_t{width} * height * 3 / 2;

  Bytes expected(out_size, 0xC3);
  convert_rgb24_plane_to_nv12(rgb.data(), width, height, expected.data());
  for (SimdLevel level : kLevels) {
    Bytes out(out_size, 0xC3);
    pixel_kernels_at(level).rgb24_to_nv12(rgb.data(), width, height, out.data());
    require(out == expected);
  }
}

// The unit moves themselves, with pitches the frame code never uses.
void unit_moves(FuzzedDataProvider& input) {
  const std::size_t unit = input.ConsumeBool() ? 2 : 1;
  const std::uint32_t cols = input.ConsumeIntegralInRange<std::uint32_t>(1, 90);
  const std::uint32_t rows = input.ConsumeIntegralInRange<std::uint32_t>(1, 90);
  const std::size_t src_pitch = cols * unit + input.ConsumeIntegralInRange<std::size_t>(0, 40);
  const std::size_t dst_pitch = rows * unit + input.ConsumeIntegralInRange<std::size_t>(0, 40);
  const bool clockwise = input.ConsumeBool();
  const UnitGrid grid{unit, cols, rows};
  const Bytes src = frame_bytes_from(input, (rows - 1) * src_pitch + cols * unit);
  const std::size_t dst_size = (cols - 1) * dst_pitch + rows * unit;

  Bytes expected(dst_size, 0xEE);
  (clockwise ? rotate_units_clockwise : rotate_units_counterclockwise)(src.data(), src_pitch, grid,
                                                                        expected.data(), dst_pitch);
  Bytes reversed(cols * unit);
  reverse_units_copy(src.data(), reversed.data(), cols, unit);
  for (SimdLevel level : kLevels) {
    const PixelKernels& kernels = pixel_kernels_at(level);
    Bytes out(dst_size, 0xEE);
    (clockwise ? kernels.rotate_clockwise : kernels.rotate_counterclockwise)(
        src.data(), src_pitch, grid, out.data(), dst_pitch);
    require(out == expected);
    Bytes row(cols * unit);
    kernels.reverse_units(src.data(), row.data(), cols, unit);
    require(row == reversed);
  }
}

void frame_rotation(FuzzedDataProvider& input) {
  constexpr std::uint32_t kFormats[] = {kGray8, kGray16, kNv12, kYuy2};
  const std::uint32_t format = input.PickValueInArray(kFormats);
  const std::uint32_t width = input.ConsumeIntegralInRange<std::uint32_t>(0, 96);
  const std::uint32_t height = input.ConsumeIntegralInRange<std::uint32_t>(0, 96);
  // Strides shorter than a row are refused; let some of them through to check that.
  const int padding = input.ConsumeIntegralInRange<int>(-3, 37);
  const std::int32_t stride = static_cast<std::int32_t>(row_bytes(format, width)) + padding;
  constexpr Rotation kRotations[] = {Rotation::By90, Rotation::By180, Rotation::By270};
  const Rotation rotation = input.PickValueInArray(kRotations);
  const FrameLayout layout{format, width, height, stride};
  const std::size_t size = frame_bytes(layout);
  // The frame path turns only frames with pixels (frame_bytes != 0); invalid layouts must be
  // refused untouched.
  if (size == 0 && is_valid_layout(layout)) return;
  const Bytes src = frame_bytes_from(input, size);

  if (rotation == Rotation::By180) {
    Bytes expected(size, 0xEE);
    const bool turned = rotate_half_turn_copy(layout, src.data(), src.size(), expected.data(),
                                              pixel_kernels_at(SimdLevel::Scalar));
    require(turned == (is_valid_layout(layout)));
    for (SimdLevel level : kLevels) {
      Bytes out(size, 0xEE);
      const bool copied = rotate_half_turn_copy(layout, src.data(), src.size(), out.data(),
                                                pixel_kernels_at(level));
      require(copied == turned);
      if (copied) require(out == expected);
    }
    return;
  }

  const std::size_t out_size = packed_frame_size(format, width, height);
  Bytes expected(out_size, 0xEE);
  const bool turned = rotate_quarter_turn(layout, src.data(), rotation, expected.data());
  require(turned == is_valid_layout(layout));
  for (SimdLevel level : kLevels) {
    Bytes out(out_size, 0xEE);
    require(rotate_quarter_turn(layout, src.data(), rotation, out.data(), pixel_kernels_at(level)) ==
            turned);
    require(out == expected);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  switch (input.ConsumeIntegralInRange<int>(0, 2)) {
    case 0:
      rgb24_to_nv12(input);
      break;
    case 1:
      unit_moves(input);
      break;
    default:
      frame_rotation(input);
      break;
  }
  return 0;
}
