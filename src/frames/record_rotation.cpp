#include "frames/record_rotation.h"

#include <cstdlib>

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

}  // namespace

void copy_pixels_upright(platform::FrameSource* source, const std::uint8_t* pixels,
                         std::size_t capacity, vexcap_frame& record) {
  const std::optional<Rotation> rotation = declared_rotation(source);
  const FrameLayout layout{record.pixel_format, record.width, record.height, record.stride};
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
