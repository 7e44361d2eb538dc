// Face-authentication mode and low-light compensation ("LLC"): camera settings read and
// written as raw 40-byte kernel-streaming buffers through the frame source's controller.
//
// Every set reads the camera's current buffer first and writes back the same buffer with only
// the wanted fields changed. Request thread only; stateless.
#pragma once

#include <cstddef>
#include <cstdint>

#include "common/hresult.h"
#include "platform/port.h"

namespace vexcap::controls {

// What a capture client lends for one call: its frame source's controller (may be null while
// the client is not initialized) and whether the client is initialized.
struct PropertyTarget {
  platform::SourceController* controller = nullptr;
  bool initialized = false;
};

constexpr std::size_t kExtendedPropertySize = 40;

// The face-auth buffer: KSCAMERA_EXTENDEDPROP_HEADER then one KSCAMERA_EXTENDEDPROP_VALUE.
namespace face_auth {
constexpr std::size_t kVersionOffset = 0;
constexpr std::size_t kPinIdOffset = 4;
constexpr std::size_t kSizeOffset = 8;
constexpr std::size_t kResultOffset = 12;
constexpr std::size_t kFlagsOffset = 16;       // u64
constexpr std::size_t kCapabilityOffset = 24;  // u64
constexpr std::size_t kPayloadOffset = 32;     // u64
constexpr std::uint64_t kModeDisabled = 0x1;   // KSCAMERA_EXTENDEDPROP_FACEAUTH_MODE_DISABLED
}  // namespace face_auth

// The LLC buffer: KSPROPERTY_CAMERACONTROL_S padded to 40 bytes.
namespace llc {
constexpr std::size_t kValueOffset = 24;
}  // namespace llc

// Reads the 40-byte buffer into `buffer` (40 bytes). A client that is not initialized answers
// HR_OK and leaves the buffer untouched.
hresult get_face_auth_mode(const PropertyTarget& target, std::uint8_t* buffer);
hresult get_llc(const PropertyTarget& target, std::uint8_t* buffer);

// Host codes: face-auth 0x101 disabled, 0x102 alternative frame illumination, 0x104
// background subtraction; LLC 0x1301 on, 0x1302 off.
hresult set_face_auth_mode(const PropertyTarget& target, std::uint32_t host_code);
hresult set_llc(const PropertyTarget& target, std::uint32_t host_code);

}  // namespace vexcap::controls
