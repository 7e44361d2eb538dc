// Little-endian field access for the kernel-streaming and extended-property byte layouts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/port.h"

namespace vexcap::virtual_camera::le {

inline std::uint32_t u32(const std::uint8_t* p) {
  return std::uint32_t(p[0]) | std::uint32_t(p[1]) << 8 | std::uint32_t(p[2]) << 16 |
         std::uint32_t(p[3]) << 24;
}
inline std::uint64_t u64(const std::uint8_t* p) { return u32(p) | std::uint64_t(u32(p + 4)) << 32; }
inline void put_u32(std::uint8_t* p, std::uint32_t v) {
  for (int i = 0; i < 4; ++i) p[i] = std::uint8_t(v >> (8 * i));
}
inline void put_u64(std::uint8_t* p, std::uint64_t v) {
  put_u32(p, std::uint32_t(v));
  put_u32(p + 4, std::uint32_t(v >> 32));
}

// A GUID as stored in memory (the KSPROPERTY Set field): 16 bytes.
inline platform::Guid guid(const std::uint8_t* p) {
  platform::Guid g;
  g.data1 = u32(p);
  g.data2 = std::uint16_t(p[4] | p[5] << 8);
  g.data3 = std::uint16_t(p[6] | p[7] << 8);
  for (int i = 0; i < 8; ++i) g.data4[i] = p[8 + i];
  return g;
}
inline void put_guid(std::uint8_t* p, const platform::Guid& g) {
  put_u32(p, g.data1);
  p[4] = std::uint8_t(g.data2);
  p[5] = std::uint8_t(g.data2 >> 8);
  p[6] = std::uint8_t(g.data3);
  p[7] = std::uint8_t(g.data3 >> 8);
  for (int i = 0; i < 8; ++i) p[8 + i] = g.data4[i];
}

// KSPROPERTY (24 bytes) or KSP_NODE (32 bytes) with the given fields.
inline std::vector<std::uint8_t> ks_property(const platform::Guid& set, std::uint32_t id,
                                             std::uint32_t flags, std::size_t size = 24,
                                             std::uint32_t node_id = 0) {
  std::vector<std::uint8_t> bytes(size < 24 ? 24 : size, 0);
  put_guid(bytes.data(), set);
  put_u32(bytes.data() + 16, id);
  put_u32(bytes.data() + 20, flags);
  if (bytes.size() >= 32) put_u32(bytes.data() + 24, node_id);
  return bytes;
}

}  // namespace vexcap::virtual_camera::le
