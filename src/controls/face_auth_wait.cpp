#include "controls/face_auth_wait.h"

#include <chrono>
#include <thread>

#include "controls/extended_properties.h"
#include "controls/ks_bytes.h"

namespace vexcap::controls {

namespace {

constexpr std::chrono::milliseconds kRetryInterval{200};

bool face_auth_busy(const std::uint8_t* buffer) {
  const std::uint64_t capability = ks::read_u64(buffer + face_auth::kCapabilityOffset);
  const std::uint64_t flags = ks::read_u64(buffer + face_auth::kFlagsOffset);
  return (capability & face_auth::kModeDisabled) != 0 && flags != face_auth::kModeDisabled;
}

}  // namespace

void wait_for_face_auth_disabled(const FaceAuthReader& read_face_auth) {
  std::uint8_t buffer[kExtendedPropertySize] = {};
  read_face_auth(buffer);
  while (face_auth_busy(buffer)) {
    std::this_thread::sleep_for(kRetryInterval);
    read_face_auth(buffer);
  }
}

}  // namespace vexcap::controls
