#include "frames/rotation.h"

#include "frames/unit_moves.h"
#include "frames/yuy2_chroma.h"

namespace vexcap::frames {
namespace {

std::size_t unit_bytes(std::uint32_t pixel_format) {
  return (pixel_format == kGray16 || pixel_format == kYuy2) ? 2 : 1;
}

void rotate_units(const std::uint8_t* src, std::size_t src_pitch, UnitGrid grid, Rotation rotation,
                  std::uint8_t* dst, std::size_t dst_pitch) {
  if (rotation == Rotation::By90) {
    rotate_units_clockwise(src, src_pitch, grid, dst, dst_pitch);
  } else {
    rotate_units_counterclockwise(src, src_pitch, grid, dst, dst_pitch);
  }
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
  if (!is_valid_layout(layout) || rotation == Rotation::By180) return false;
  const std::size_t src_pitch = static_cast<std::size_t>(layout.stride);
  const std::size_t unit = unit_bytes(layout.pixel_format);
  const std::size_t dst_pitch = std::size_t{layout.height} * unit;  // new width in bytes
  rotate_units(src, src_pitch, {unit, layout.width, layout.height}, rotation, dst, dst_pitch);

  if (layout.pixel_format == kNv12) {
    // U and V travel together as one 2-byte unit; chroma rows are as long as Y rows.
    const std::uint8_t* src_chroma = src + std::size_t{layout.height} * src_pitch;
    std::uint8_t* dst_chroma = dst + std::size_t{layout.height} * layout.width;
    rotate_units(src_chroma, src_pitch, {2, layout.width / 2, layout.height / 2}, rotation,
                 dst_chroma, layout.height);
  } else if (layout.pixel_format == kYuy2) {
    // Note: for an even width the 270 turn leaves each pair V before U; this layout is never
    // delivered to the host, and the repair is kept exactly as it has always been.
    repair_yuy2_chroma_after_quarter_turn(dst, layout.height, layout.width);
  }
  return true;
}

bool rotate_half_turn_in_place(const FrameLayout& layout, std::uint8_t* data) {
  if (!is_valid_layout(layout)) return false;
  const std::size_t pitch = static_cast<std::size_t>(layout.stride);
  reverse_units_in_place(data, pitch,
                         {unit_bytes(layout.pixel_format), layout.width, layout.height});

  if (layout.pixel_format == kNv12) {
    std::uint8_t* chroma = data + std::size_t{layout.height} * pitch;
    reverse_units_in_place(chroma, pitch, {2, layout.width / 2, layout.height / 2});
  } else if (layout.pixel_format == kYuy2) {
    const std::size_t row = row_bytes(kYuy2, layout.width);
    for (std::uint32_t y = 0; y < layout.height; ++y) swap_yuy2_chroma_order(data + y * pitch, row);
  }
  return true;
}

}  // namespace vexcap::frames
