#include "frames/rotation_text.h"

#include <cstdint>

namespace vexcap::frames {
namespace {

bool is_c_space(wchar_t c) {
  return c == L' ' || c == L'\t' || c == L'\n' || c == L'\v' || c == L'\f' || c == L'\r';
}

}  // namespace

std::optional<Rotation> parse_rotation_text(std::wstring_view text) {
  std::size_t i = 0;
  while (i < text.size() && is_c_space(text[i])) ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == L'+' || text[i] == L'-')) {
    negative = text[i] == L'-';
    ++i;
  }
  // Any value above 270 is as good as any other: stop growing there instead of overflowing.
  constexpr std::int64_t kBeyondAnyRotation = 1000;
  std::int64_t value = 0;
  for (; i < text.size() && text[i] >= L'0' && text[i] <= L'9'; ++i) {
    if (value < kBeyondAnyRotation) value = value * 10 + (text[i] - L'0');
  }
  if (negative) return std::nullopt;
  switch (value) {
    case 90:
      return Rotation::By90;
    case 180:
      return Rotation::By180;
    case 270:
      return Rotation::By270;
    default:
      return std::nullopt;
  }
}

}  // namespace vexcap::frames
