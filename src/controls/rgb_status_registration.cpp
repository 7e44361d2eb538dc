#include "controls/rgb_status_registration.h"

#include <chrono>
#include <thread>

namespace vexcap::controls {

namespace {

constexpr std::chrono::milliseconds kRetryInterval{200};

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

  if (is_infrared && read_face_auth) wait_for_face_auth_disabled(read_face_auth);

  return unit->start_rgb_status_notifier(callback, context);
}

void unregister_rgb_status_notifier(ExtensionUnit* unit) {
  if (unit != nullptr) unit->stop_rgb_status_notifier();
}

}  // namespace vexcap::controls
