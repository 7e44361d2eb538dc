// The exclusive-control status event of a capture client.
#include "capture/capture_client.h"
#include "controls/face_auth_wait.h"
#include "log/log.h"

namespace vexcap::capture {

namespace {

// The status the host hears: the platform's values 1 and 2 as they are, 3 for any other.
std::uint8_t host_status(platform::ExclusiveControlStatus status) {
  const auto raw = static_cast<std::int32_t>(status);
  return raw == 1 || raw == 2 ? static_cast<std::uint8_t>(raw) : 3;
}

// Status 2 is reported while the camera's face authentication may still be switching modes.
constexpr std::int32_t kFaceAuthSettling = 2;

}  // namespace

hresult CaptureClient::register_exclusive_control_status(vexcap_excl_ctrl_status_callback callback,
                                                         void* context) {
  const std::unique_lock<Mutex> lock = exclusive_control_.hold();
  if (exclusive_control_.registered(lock)) return HR_OK;
  if (!capture_) return HR_INVALID_STATE;

  std::weak_ptr<CaptureClient> weak = weak_from_this();
  exclusive_control_token_ =
      capture_->add_exclusive_control_status_changed([weak](const platform::ExclusiveControlChange& change) {
        const std::shared_ptr<CaptureClient> client = weak.lock();
        if (!client) return;
        const bool available = change.status == platform::ExclusiveControlStatus::ExclusiveControlAvailable;
        client->exclusive_control_.raise([&](vexcap_excl_ctrl_status_callback callback, void* context) {
          callback(change.device_id.c_str(), host_status(change.status), available, context);
        });
      });
  exclusive_control_.store(lock, callback, context);

  if (initialized_ && frame_source_ &&
      static_cast<std::int32_t>(frame_source_->exclusive_control_status()) == kFaceAuthSettling) {
    const controls::PropertyTarget target = property_target();
    controls::wait_for_face_auth_disabled(
        [&target](std::uint8_t* buffer) { return controls::get_face_auth_mode(target, buffer); });
  }
  return HR_OK;
}

hresult CaptureClient::unregister_exclusive_control_status() {
  const std::unique_lock<Mutex> lock = exclusive_control_.hold();
  exclusive_control_.clear(lock);
  if (exclusive_control_token_ == 0 || !capture_) return HR_OK;
  try {
    capture_->remove_exclusive_control_status_changed(exclusive_control_token_);
    exclusive_control_token_ = 0;
    return HR_OK;
  } catch (const platform::PlatformError& error) {
    VXLOG('E', "Failed unregistering for exclusive control: %ws", error.message().c_str());
    return error.code();
  }
}

}  // namespace vexcap::capture
