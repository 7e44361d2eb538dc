#include "frames/rotation.h"

#include <algorithm>
#include <cstring>

#include "frames/unit_moves.h"
#include "frames/yuy2_chroma.h"

namespace vexcap::frames {
namespace {

std::size_t unit_bytes(std::uint32_t pixel_format) {
  return (pixel_format == kGray16 || pixel_format == kYuy2) ? 2 : 1;
}

void rotate_units(const PixelKernels& kernels, const std::uint8_t* src, std::size_t src_pitch,
                  UnitGrid grid, Rotation rotation, std::uint8_t* dst, std::size_t dst_pitch) {
  if (rotation == Rotation::By90) {
    kernels.rotate_clockwise(src, src_pitch, grid, dst, dst_pitch);
  } else {
    kernels.rotate_counterclockwise(src, src_pitch, grid, dst, dst_pitch);
  }
}

// Rows of one plane at `offset`, each filled from its mirrored row read backwards; the bytes
// between a row's pixels and the next row (padding) are copied where they are, up to `bytes`.
// Answers where the plane's last row ends.
std::size_t copy_plane_reversed(const PixelKernels& kernels, const std::uint8_t* src,
                                std::size_t bytes, std::size_t offset, std::size_t pitch,
                                UnitGrid grid, std::uint8_t* dst) {
  const std::size_t pixels = grid.cols * grid.unit;
  for (std::size_t y = 0; y < grid.rows; ++y) {
    const std::size_t row = offset + y * pitch;
    kernels.reverse_units(src + offset + (grid.rows - 1 - y) * pitch, dst + row, grid.cols,
                          grid.unit);
    const std::size_t next_row = std::min(row + pitch, bytes);
    if (next_row > row + pixels) std::memcpy(dst + row + pixels, src + row + pixels, next_row - row - pixels);
  }
  return std::min(offset + grid.rows * pitch, bytes);
}

}  // namespace

FrameLayout rotated_layout(const FrameLayout& layout, Rotation rotation) {
  if (rotation == Rotation::By180) return layout;
  FrameLayout turned = layout;
  turned.width = layout.height;
  turned.height = layout.width;
  turned.stride = static_cast<std::int32_t>(row_bytes(layout.pixel_format, turned.width));
  return turned;
}

bool rotate_quarter_turn(const FrameLayout& layout, const std::uint8_t* src, Rotation rotation,
                         std::uint8_t* dst) {
  return rotate_quarter_turn(layout, src, rotation, dst, pixel_kernels_at(SimdLevel::Scalar));
}

bool rotate_quarter_turn(const FrameLayout& layout, const std::uint8_t* src, Rotation rotation,
                         std::uint8_t* dst, const PixelKernels& kernels) {
  // Packed NV12: the chroma rows follow the luma rows, with the same pitch. Other formats have
  // no chroma plane (and an empty frame may have no pixels at all).
  const std::size_t pitch = static_cast<std::size_t>(layout.stride);
  const std::uint8_t* chroma =
      layout.pixel_format == kNv12 && src ? src + std::size_t{layout.height} * pitch : nullptr;
  return rotate_quarter_turn(layout, src, chroma, pitch, rotation, dst, kernels);
}

bool rotate_quarter_turn(const FrameLayout& layout, const std::uint8_t* src,
                         const std::uint8_t* src_chroma, std::size_t chroma_pitch, Rotation rotation,
                         std::uint8_t* dst, const PixelKernels& kernels) {
  if (!is_valid_layout(layout) || rotation == Rotation::By180) return false;
  const std::size_t src_pitch = static_cast<std::size_t>(layout.stride);
  const std::size_t unit = unit_bytes(layout.pixel_format);
  const std::size_t dst_pitch = std::size_t{layout.height} * unit;  // new width in bytes
  rotate_units(kernels, src, src_pitch, {unit, layout.width, layout.height}, rotation, dst,
               dst_pitch);

  if (layout.pixel_format == kNv12) {
    // U and V travel together as one 2-byte unit.
    std::uint8_t* dst_chroma = dst + std::size_t{layout.height} * layout.width;
    rotate_units(kernels, src_chroma, chroma_pitch, {2, layout.width / 2, layout.height / 2},
                 rotation, dst_chroma, layout.height);
  } else if (layout.pixel_format == kYuy2) {
    // Note: for an even width the 270 turn leaves each pair V before U; this layout is never
    // delivered to the host, and the repair is kept exactly as it has always been.
    repair_yuy2_chroma_after_quarter_turn(dst, layout.height, layout.width);
  }
  return true;
}

bool rotate_half_turn_copy(const FrameLayout& layout, const std::uint8_t* src, std::size_t bytes,
                           std::uint8_t* dst, const PixelKernels& kernels) {
  if (!is_valid_layout(layout) || frame_bytes(layout) > bytes) return false;
  const std::size_t pitch = static_cast<std::size_t>(layout.stride);
  std::size_t done = copy_plane_reversed(
      kernels, src, bytes, 0, pitch, {unit_bytes(layout.pixel_format), layout.width, layout.height},
      dst);
  if (layout.pixel_format == kNv12) {
    done = copy_plane_reversed(kernels, src, bytes, std::size_t{layout.height} * pitch, pitch,
                               {2, layout.width / 2, layout.height / 2}, dst);
  } else if (layout.pixel_format == kYuy2) {
    // The rows were just written: the exchange runs on cached bytes.
    const std::size_t row = row_bytes(kYuy2, layout.width);
    for (std::uint32_t y = 0; y < layout.height; ++y) swap_yuy2_chroma_order(dst + y * pitch, row);
  }
  if (done < bytes) std::memcpy(dst + done, src + done, bytes - done);
  return true;
}

}  // namespace vexcap::frames
