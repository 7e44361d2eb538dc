#include "controls/rgb_status_registration.h"

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

hresult register_rgb_status_notifier(ExtensionUnit* unit, bool initialized, bool is_infrared,
                                     const FaceAuthReader& read_face_auth,
                                     vexcap_rgb_status_callback callback, void* context) {
  if (!initialized || unit == nullptr) return HR_OK;

  std::uint32_t status = 0;
  unit->read_rgb_status(status);
  while (status != 0) {
    std::this_thread::sleep_for(kRetryInterval);
    unit->read_rgb_status(status);
  }

  if (is_infrared && read_face_auth) {
    std::uint8_t buffer[kExtendedPropertySize] = {};
    read_face_auth(buffer);
    while (face_auth_busy(buffer)) {
      std::this_thread::sleep_for(kRetryInterval);
      read_face_auth(buffer);
    }
  }

  return unit->start_rgb_status_notifier(callback, context);
}

void unregister_rgb_status_notifier(ExtensionUnit* unit) {
  if (unit != nullptr) unit->stop_rgb_status_notifier();
}

}  // namespace vexcap::controls
