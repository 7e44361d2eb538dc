#include <cpuid.h>

#include <algorithm>
#include <cstddef>

#include "frames/simd/x86/x86_kernels.h"

namespace vexcap::frames::x86 {
namespace {

// The largest cache that a deterministic cache-parameters leaf (4 on Intel, 0x8000001D on
// AMD) describes, or 0 when the CPU has no such leaf.
std::size_t largest_cache_in_leaf(unsigned leaf) {
  std::size_t largest = 0;
  for (unsigned index = 0; index < 16; ++index) {
    unsigned a = 0, b = 0, c = 0, d = 0;
    if (!__get_cpuid_count(leaf, index, &a, &b, &c, &d) || (a & 0x1F) == 0) break;
    const std::size_t ways = (b >> 22) + 1, partitions = ((b >> 12) & 0x3FF) + 1;
    const std::size_t line = (b & 0xFFF) + 1, sets = std::size_t{c} + 1;
    largest = std::max(largest, ways * partitions * line * sets);
  }
  return largest;
}

}  // namespace

std::size_t last_level_cache_bytes() {
  static const std::size_t bytes = [] {
    unsigned highest_extended = 0, b = 0, c = 0, d = 0;
    std::size_t found = 0;
    if (__get_cpuid(0x80000000, &highest_extended, &b, &c, &d) && highest_extended >= 0x8000001D)
      found = largest_cache_in_leaf(0x8000001D);
    if (found == 0) found = largest_cache_in_leaf(4);
    return found != 0 ? found : std::size_t{8} << 20;
  }();
  return bytes;
}

}  // namespace vexcap::frames::x86
