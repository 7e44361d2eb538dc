#include "frames/yuy2_chroma.h"

#include <utility>

namespace vexcap::frames {
namespace {

constexpr std::size_t kGroupBytes = 4;   // Y0 U Y1 V
constexpr std::size_t kBlockBytes = 16;  // eight 2-byte units: the width of a vector register

void swap_group_chroma(std::uint8_t* group) { std::swap(group[1], group[3]); }

}  // namespace

void repair_yuy2_chroma_after_quarter_turn(std::uint8_t* data, std::uint32_t width,
                                           std::uint32_t height) {
  const std::size_t pitch = std::size_t{width} * 2;
  for (std::size_t r = 0; r + 1 < height; r += 2) {
    std::uint8_t* upper = data + r * pitch;
    std::uint8_t* lower = upper + pitch;
    for (std::size_t c = 0; c + 1 < width; c += 2) {
      std::swap(upper[(c + 1) * 2 + 1], lower[c * 2 + 1]);
    }
  }
}

void swap_yuy2_chroma_order(std::uint8_t* data, std::size_t bytes) {
  std::size_t offset = 0;
  for (; offset + kBlockBytes <= bytes; offset += kBlockBytes) {
    std::uint8_t* block = data + offset;
    swap_group_chroma(block);
    swap_group_chroma(block + 4);
    swap_group_chroma(block + 8);
    swap_group_chroma(block + 12);
  }
  for (; offset + kGroupBytes <= bytes; offset += kGroupBytes) swap_group_chroma(data + offset);
}

}  // namespace vexcap::frames
