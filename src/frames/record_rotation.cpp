#include "frames/record_rotation.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "frames/rotation.h"
#include "frames/rotation_text.h"

namespace vexcap::frames {
namespace {

std::optional<Rotation> declared_rotation(platform::FrameSource* source) {
  if (!source) return std::nullopt;
  const std::shared_ptr<platform::FrameFormat> format = source->current_format();
  if (!format) return std::nullopt;
  const std::optional<std::wstring> text = format->rotation_text();
  if (!text) return std::nullopt;
  return parse_rotation_text(*text);
}

std::uint8_t* allocate(std::size_t bytes) {
  return static_cast<std::uint8_t*>(std::malloc(bytes == 0 ? 1 : bytes));
}

std::size_t chroma_rows(const FrameLayout& layout) { return (std::size_t{layout.height} + 1) / 2; }

// The planes as the record lays them out: luma at 0, chroma right after height rows, one stride.
bool in_record_layout(const FrameLayout& layout, const Nv12Planes& planes) {
  const std::size_t stride = static_cast<std::size_t>(layout.stride);
  return planes.luma_offset == 0 && planes.chroma_offset == stride * layout.height &&
         static_cast<std::size_t>(planes.chroma_stride) == stride;
}

// True when every pixel the layout names lies inside the `capacity` bytes.
bool planes_fit(const FrameLayout& layout, const Nv12Planes& planes, std::size_t capacity) {
  if (!is_valid_layout(layout) || layout.width == 0 || layout.height == 0 || planes.chroma_stride < 0)
    return false;
  const std::size_t stride = static_cast<std::size_t>(layout.stride);
  const std::size_t luma_end = planes.luma_offset + (layout.height - 1) * stride + layout.width;
  const std::size_t chroma_row = std::size_t{layout.width / 2} * 2;
  const std::size_t chroma_end =
      planes.chroma_offset + (chroma_rows(layout) - 1) * static_cast<std::size_t>(planes.chroma_stride) + chroma_row;
  return static_cast<std::size_t>(planes.chroma_stride) >= chroma_row && luma_end <= capacity &&
         chroma_end <= capacity;
}

// The record's NV12 bytes from planes laid out elsewhere: luma rows, then chroma rows, with
// the luma stride; what the source rows do not fill (a narrower chroma stride) is 0.
std::uint8_t* gather_nv12(const FrameLayout& layout, const Nv12Planes& planes, const std::uint8_t* pixels,
                          std::size_t capacity, std::size_t& size) {
  const std::size_t stride = static_cast<std::size_t>(layout.stride);
  const std::size_t chroma_stride = static_cast<std::size_t>(planes.chroma_stride);
  size = stride * (layout.height + chroma_rows(layout));
  std::uint8_t* data = allocate(size);
  for (std::size_t y = 0; y < layout.height; ++y) {
    const std::size_t from = planes.luma_offset + y * stride;
    std::memcpy(data + y * stride, pixels + from, std::min(stride, capacity - from));
  }
  std::uint8_t* chroma = data + stride * layout.height;
  for (std::size_t j = 0; j < chroma_rows(layout); ++j) {
    const std::size_t from = planes.chroma_offset + j * chroma_stride;
    const std::size_t row = std::min({stride, chroma_stride, capacity - from});
    std::memcpy(chroma + j * stride, pixels + from, row);
    std::memset(chroma + j * stride + row, 0, stride - row);
  }
  return data;
}

// Planes laid out elsewhere: gathered into the record's layout, turned on the way by a quarter
// turn, or gathered and then turned by a half turn into the record (a second pass over these
// rare frames).
void copy_nv12_planes(const std::optional<Rotation>& rotation, const FrameLayout& layout,
                      const Nv12Planes& planes, const std::uint8_t* pixels, std::size_t capacity,
                      vexcap_frame& record) {
  const PixelKernels& kernels = pixel_kernels();
  if (rotation && *rotation != Rotation::By180) {
    record.data = allocate(packed_frame_size(layout.pixel_format, layout.width, layout.height));
    rotate_quarter_turn(layout, pixels + planes.luma_offset, pixels + planes.chroma_offset,
                        static_cast<std::size_t>(planes.chroma_stride), *rotation, record.data, kernels);
    const FrameLayout turned = rotated_layout(layout, *rotation);
    record.width = turned.width;
    record.height = turned.height;
    record.stride = turned.stride;
    return;
  }
  std::size_t size = 0;
  std::uint8_t* gathered = gather_nv12(layout, planes, pixels, capacity, size);
  if (!rotation) {
    record.data = gathered;
    return;
  }
  record.data = allocate(size);
  rotate_half_turn_copy(layout, gathered, size, record.data, kernels);
  std::free(gathered);
}

}  // namespace

void copy_pixels_upright(platform::FrameSource* source, const std::uint8_t* pixels,
                         std::size_t capacity, vexcap_frame& record,
                         const std::optional<Nv12Planes>& planes) {
  const std::optional<Rotation> rotation = declared_rotation(source);
  const FrameLayout layout{record.pixel_format, record.width, record.height, record.stride};
  if (planes && layout.pixel_format == kNv12 && !in_record_layout(layout, *planes) &&
      planes_fit(layout, *planes, capacity)) {
    copy_nv12_planes(rotation, layout, *planes, pixels, capacity, record);
    return;
  }
  // A buffer shorter than its layout claims is delivered as it came rather than overread.
  const std::size_t needed = frame_bytes(layout);
  const bool turns = rotation && needed != 0 && needed <= capacity;
  const PixelKernels& kernels = pixel_kernels();

  if (turns && *rotation != Rotation::By180) {
    const std::size_t size = packed_frame_size(layout.pixel_format, layout.width, layout.height);
    record.data = allocate(size);
    rotate_quarter_turn(layout, pixels, *rotation, record.data, kernels);
    const FrameLayout turned = rotated_layout(layout, *rotation);
    record.width = turned.width;
    record.height = turned.height;
    record.stride = turned.stride;
    return;
  }
  record.data = allocate(capacity);
  if (turns) {
    rotate_half_turn_copy(layout, pixels, capacity, record.data, kernels);
  } else {
    kernels.copy_bytes(record.data, pixels, capacity);
  }
}

}  // namespace vexcap::frames
