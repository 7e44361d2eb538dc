// Where benchmark frames live. Hot: the same source and destination every iteration, as when
// a kernel's data stay cached. Cold: each iteration takes the next slot of an arena several
// times the last-level cache, so the source arrives from memory like a fresh camera frame.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vexcap::bench {

enum class Cache { Hot, Cold };

const char* cache_name(Cache cache);

struct Slot {
  std::uint8_t* src;
  std::uint8_t* dst;
};

// Source and destination slots of the given sizes, filled with pseudo-random bytes once.
class FrameSlots {
 public:
  FrameSlots(std::size_t src_bytes, std::size_t dst_bytes, Cache cache);
  Slot next();
  std::size_t count() const { return count_; }

 private:
  std::size_t stride_;
  std::size_t src_bytes_;
  std::size_t count_;
  std::size_t at_ = 0;
};

// Bytes the cold arena spans: 256 MiB, eight times the 32 MiB cache of the reference machine.
inline constexpr std::size_t kArenaBytes = std::size_t{256} << 20;

}  // namespace vexcap::bench
