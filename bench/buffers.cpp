#include "buffers.h"

#include <algorithm>
#include <cstdlib>
#include <random>
#include <vector>

namespace vexcap::bench {
namespace {

// One arena for every benchmark, touched once so that no page fault lands in a measurement.
std::uint8_t* arena() {
  static std::uint8_t* bytes = [] {
    auto* block = static_cast<std::uint8_t*>(std::aligned_alloc(4096, kArenaBytes));
    std::mt19937_64 gen(42);
    for (std::size_t i = 0; i < kArenaBytes; i += 8) {
      const std::uint64_t v = gen();
      for (int k = 0; k < 8; ++k) block[i + k] = static_cast<std::uint8_t>(v >> (8 * k));
    }
    return block;
  }();
  return bytes;
}

std::size_t round_up(std::size_t n) { return (n + 4095) / 4096 * 4096; }

}  // namespace

const char* cache_name(Cache cache) { return cache == Cache::Hot ? "hot" : "cold"; }

FrameSlots::FrameSlots(std::size_t src_bytes, std::size_t dst_bytes, Cache cache)
    : stride_(round_up(src_bytes) + round_up(dst_bytes)), src_bytes_(round_up(src_bytes)) {
  count_ = cache == Cache::Hot ? 1 : std::max<std::size_t>(2, kArenaBytes / stride_);
  (void)arena();
}

Slot FrameSlots::next() {
  std::uint8_t* base = arena() + at_ * stride_;
  at_ = (at_ + 1) % count_;
  return {base, base + src_bytes_};
}

}  // namespace vexcap::bench
