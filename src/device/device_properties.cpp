// The device-level rules of the device properties: what runs beyond the exclusive client.
#include <system_error>

#include "capture/client_properties.h"
#include "capture/frame_rate.h"
#include "device/device.h"
#include "log/log.h"

namespace vexcap::device {
namespace {

// The format code tried when the host's stream type is missing on a 1080p request.
constexpr std::uint32_t kFallbackFromFullHd = VEXCAP_FORMAT_HIRES_720P;
// enable_stream_type's plain answer when the source offers no formats at all.
constexpr hresult kStreamTypeUnsupported = 16;
// The format the exclusive client falls back to when the host's code only names a frame rate.
constexpr std::uint32_t kFrameRateFallbackFormat = 11;

// Opens the camera once more, runs the property on that device's exclusive client and closes
// it again. Answers the open's failure or the property's result.
hresult set_on_temporary_device(const std::wstring& device_id, const vexcap_open_params& params,
                                const vexcap_property& property, const DeviceEnvironment& environment) {
  const std::shared_ptr<Device> temporary = Device::create(environment);
  if (!temporary) return HR_FAIL;
  const hresult opened = temporary->open(device_id, params);
  if (failed(opened)) return opened;
  const hresult result = capture::set_device_property(temporary->exclusive_client(), property);
  temporary->close();
  return result;
}

}  // namespace

hresult Device::set_property(const vexcap_property& property) {
  VEXCAP_DCHECK_ON_THREAD(request_thread_);
  if (property.id == VEXCAP_PROP_AUTO_EXPOSURE && property.value == VEXCAP_AUTO_EXPOSURE_OFF) {
    return switch_auto_exposure_off(property);
  }
  const hresult result = capture::set_device_property(*exclusive_, property);
  switch (property.id) {
    case VEXCAP_PROP_STREAM_TYPE_APPLY:
      return finish_stream_type_apply(property.value, result);
    case VEXCAP_PROP_RGB_OFF:  // both clients give the colour stream up
      return capture::set_device_property(*shared_, property);
    default:
      return result;
  }
}

// Automatic exposure is switched off twice: on this device's exclusive client (a worker) and
// on a temporary device opened for the same camera, whose answer the host gets.
hresult Device::switch_auto_exposure_off(const vexcap_property& property) {
  const std::wstring device_id = exclusive_->device_id();
  const vexcap_open_params params{exclusive_->reader_kind(), exclusive_->preferred_width(),
                                  exclusive_->preferred_height()};
  std::unique_ptr<WorkerThread> worker;
  int start_error = 0;
  try {
    worker = std::make_unique<WorkerThread>([client = exclusive_] {
      capture::set_device_property(*client, {VEXCAP_PROP_AUTO_EXPOSURE, VEXCAP_AUTO_EXPOSURE_OFF});
    });
  } catch (const std::system_error& error) {
    start_error = error.code().value();
  }

  const hresult result = set_on_temporary_device(device_id, params, property, environment_);

  if (!worker) {
    VXLOG('E', "Failed creating disabl exposure thread: %d", start_error);
    return HR_FAIL;
  }
  try {
    worker->join();
  } catch (const std::system_error& error) {
    VXLOG('E', "Failed waiting for exp thread: %lu", static_cast<unsigned>(error.code().value()));
  }
  return result;
}

// After the stream type with frame rate (16) ran on the exclusive client: the shared client's
// frame-rate limit, the retries of a missing format, and the unsupported-format notice.
hresult Device::finish_stream_type_apply(std::uint32_t format_code, hresult result) {
  if (result == HR_NOTIMPL) {
    if (format_code == VEXCAP_FORMAT_HIRES_1080P) {
      return capture::set_device_property(*exclusive_, {VEXCAP_PROP_STREAM_TYPE_APPLY, kFallbackFromFullHd});
    }
    // The code names a rate the camera has no format for: the shared client drops frames instead.
    capture::set_device_property(*exclusive_, {VEXCAP_PROP_STREAM_TYPE_APPLY, kFrameRateFallbackFormat});
    const std::uint32_t frames_per_second = capture::frames_per_second_for_code(format_code);
    shared_->set_frame_rate_limit(frames_per_second);
    return format_code != 0 && frames_per_second == 0 ? HR_NOINTERFACE : HR_OK;
  }
  if (result == HR_OK) {
    shared_->set_frame_rate_limit(0);
    return HR_OK;
  }
  if (result == kStreamTypeUnsupported) {
    // The host hears of it from a worker, so the request does not wait for its callback.
    try {
      replace_unsupported_format_notifier(
          std::make_unique<WorkerThread>([shared = shared_] { shared->raise_unsupported_format(); }));
    } catch (const std::system_error&) {
      return HR_FAIL;
    }
    return HR_OK;
  }
  return result;
}

}  // namespace vexcap::device
