#include "controls/ks_bytes.h"

#include <cstring>

namespace vexcap::controls::ks {

void write_u16(std::uint8_t* at, std::uint16_t value) {
  at[0] = static_cast<std::uint8_t>(value);
  at[1] = static_cast<std::uint8_t>(value >> 8);
}

void write_u32(std::uint8_t* at, std::uint32_t value) {
  for (int i = 0; i < 4; ++i) at[i] = static_cast<std::uint8_t>(value >> (8 * i));
}

void write_i32(std::uint8_t* at, std::int32_t value) {
  write_u32(at, static_cast<std::uint32_t>(value));
}

void write_u64(std::uint8_t* at, std::uint64_t value) {
  for (int i = 0; i < 8; ++i) at[i] = static_cast<std::uint8_t>(value >> (8 * i));
}

std::uint32_t read_u32(const std::uint8_t* at) {
  return static_cast<std::uint32_t>(at[0]) | static_cast<std::uint32_t>(at[1]) << 8 |
         static_cast<std::uint32_t>(at[2]) << 16 | static_cast<std::uint32_t>(at[3]) << 24;
}

std::int32_t read_i32(const std::uint8_t* at) { return static_cast<std::int32_t>(read_u32(at)); }

std::uint64_t read_u64(const std::uint8_t* at) {
  return static_cast<std::uint64_t>(read_u32(at)) |
         static_cast<std::uint64_t>(read_u32(at + 4)) << 32;
}

void write_guid(std::uint8_t* at, const platform::Guid& guid) {
  write_u32(at, guid.data1);
  write_u16(at + 4, guid.data2);
  write_u16(at + 6, guid.data3);
  std::memcpy(at + 8, guid.data4, sizeof guid.data4);
}

std::array<std::uint8_t, kGuidSize> guid_bytes(const platform::Guid& guid) {
  std::array<std::uint8_t, kGuidSize> bytes{};
  write_guid(bytes.data(), guid);
  return bytes;
}

void write_property(std::uint8_t* at, const platform::Guid& set, std::uint32_t id,
                    std::uint32_t flags) {
  write_guid(at, set);
  write_u32(at + 16, id);
  write_u32(at + 20, flags);
}

void write_node_property(std::uint8_t* at, const platform::Guid& set, std::uint32_t id,
                         std::uint32_t flags, std::uint32_t node_id) {
  write_property(at, set, id, flags);
  write_u32(at + 24, node_id);
  write_u32(at + 28, 0);
}

std::array<std::uint8_t, kPropertySize> property(const platform::Guid& set, std::uint32_t id,
                                                 std::uint32_t flags) {
  std::array<std::uint8_t, kPropertySize> bytes{};
  write_property(bytes.data(), set, id, flags);
  return bytes;
}

std::array<std::uint8_t, kNodeSize> node_property(const platform::Guid& set, std::uint32_t id,
                                                  std::uint32_t flags, std::uint32_t node_id) {
  std::array<std::uint8_t, kNodeSize> bytes{};
  write_node_property(bytes.data(), set, id, flags, node_id);
  return bytes;
}

}  // namespace vexcap::controls::ks
