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

}  // namespace

void rotate_record(platform::FrameSource* source, vexcap_frame& record, std::size_t capacity) {
  const std::optional<Rotation> rotation = declared_rotation(source);
  if (!rotation) return;
  const FrameLayout layout{record.pixel_format, record.width, record.height, record.stride};
  // A buffer shorter than its layout claims is delivered as it came rather than overread.
  const std::size_t needed = frame_bytes(layout);
  if (needed == 0 || needed > capacity) return;

  if (*rotation == Rotation::By180) {
    rotate_half_turn_in_place(layout, record.data);
    return;
  }
  const std::size_t size = packed_frame_size(layout.pixel_format, layout.width, layout.height);
  auto* rotated = static_cast<std::uint8_t*>(std::malloc(size));
  if (!rotated || !rotate_quarter_turn(layout, record.data, *rotation, rotated)) {
    std::free(rotated);
    return;
  }
  std::free(record.data);
  record.data = rotated;
  const FrameLayout turned = rotated_layout(layout, *rotation);
  record.width = turned.width;
  record.height = turned.height;
  record.stride = turned.stride;
}

}  // namespace vexcap::frames
