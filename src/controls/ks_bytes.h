// Byte images of the kernel-streaming request structures, built by hand so the requests are
// the same on every compiler: little-endian fields at their published offsets.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/port.h"

namespace vexcap::controls::ks {

constexpr std::uint32_t kTypeGet = 0x00000001;       // KSPROPERTY_TYPE_GET
constexpr std::uint32_t kTypeSet = 0x00000002;       // KSPROPERTY_TYPE_SET
constexpr std::uint32_t kTypeTopology = 0x10000000;  // KSPROPERTY_TYPE_TOPOLOGY

constexpr std::size_t kGuidSize = 16;
constexpr std::size_t kPropertySize = 24;  // KSPROPERTY: Set, Id, Flags
constexpr std::size_t kNodeSize = 32;      // KSP_NODE: KSPROPERTY, NodeId, Reserved

void write_u16(std::uint8_t* at, std::uint16_t value);
void write_u32(std::uint8_t* at, std::uint32_t value);
void write_i32(std::uint8_t* at, std::int32_t value);
void write_u64(std::uint8_t* at, std::uint64_t value);
std::uint32_t read_u32(const std::uint8_t* at);
std::int32_t read_i32(const std::uint8_t* at);
std::uint64_t read_u64(const std::uint8_t* at);

// The GUID as stored in memory: Data1, Data2, Data3 little-endian, Data4 as is.
void write_guid(std::uint8_t* at, const platform::Guid& guid);
std::array<std::uint8_t, kGuidSize> guid_bytes(const platform::Guid& guid);

// KSPROPERTY at `at` (24 bytes).
void write_property(std::uint8_t* at, const platform::Guid& set, std::uint32_t id,
                    std::uint32_t flags);
// KSP_NODE at `at` (32 bytes; Reserved is zeroed).
void write_node_property(std::uint8_t* at, const platform::Guid& set, std::uint32_t id,
                         std::uint32_t flags, std::uint32_t node_id);

std::array<std::uint8_t, kPropertySize> property(const platform::Guid& set, std::uint32_t id,
                                                 std::uint32_t flags);
std::array<std::uint8_t, kNodeSize> node_property(const platform::Guid& set, std::uint32_t id,
                                                  std::uint32_t flags, std::uint32_t node_id);

}  // namespace vexcap::controls::ks
