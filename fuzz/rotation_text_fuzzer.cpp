// MF_MT_VIDEO_ROTATION values as text: the parser answers what the C runtime's wcstol reads from
// the same characters, restricted to the three quarter turns.
#include <cstdint>
#include <cstdlib>
#include <cwchar>
#include <string>

#include "frames/rotation_text.h"

using namespace vexcap::frames;

namespace {

std::optional<Rotation> reference(const std::wstring& text) {
  const long value = std::wcstol(text.c_str(), nullptr, 10);  // stops at the first NUL, as the parser's digits do
  if (value == 90) return Rotation::By90;
  if (value == 180) return Rotation::By180;
  if (value == 270) return Rotation::By270;
  return std::nullopt;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Two bytes a character, so texts hold wide characters beyond Latin-1 as well.
  std::wstring text;
  for (std::size_t i = 0; i + 1 < size; i += 2) {
    const unsigned high = data[i + 1];
    // Mostly ASCII: the high byte set only when it is odd, so digits and signs stay common.
    text.push_back(static_cast<wchar_t>((high & 1) != 0 ? (high << 8) | data[i] : data[i] & 0x7F));
  }
  if (parse_rotation_text(text) != reference(text)) std::abort();
  return 0;
}
