#include "capture/exposure_iso.h"

#include <memory>

#include "capture/capture_client.h"
#include "controls/platform_failure.h"
#include "log/log.h"
#include "platform/port.h"

namespace vexcap::capture {

namespace {

constexpr std::uint32_t kAutoExposureOn = 513;

// Fetched afresh at every step: nothing is cached between calls.
std::shared_ptr<platform::ExposureControl> exposure_control(capture::CaptureClient& client) {
  const std::shared_ptr<platform::FrameSource> source = client.frame_source();
  return source ? source->controller()->exposure_control() : nullptr;
}

std::shared_ptr<platform::IsoSpeedControl> iso_speed_control(platform::FrameSource& source) {
  return source.controller()->iso_speed_control();
}

// The checks shared by set and get exposure once the client's state allows the call.
hresult check_manual_exposure(capture::CaptureClient& client) {
  if (!exposure_control(client)) {
    VXLOG('D', "No exp_ctrl");
    return HR_NOINTERFACE;
  }
  if (!exposure_control(client)->supported()) {
    VXLOG('D', "exposure control not supported");
    return HR_FAIL;
  }
  if (exposure_control(client)->auto_enabled()) {
    VXLOG('D', "auto exposure is ON");
    return HR_INVALID_STATE;
  }
  return HR_OK;
}

}  // namespace

hresult set_exposure(capture::CaptureClient& client, std::int64_t exposure) {
  if (!client.initialized() || !client.has_source_group() || !client.has_capture() || client.rgb_disabled()) {
    return HR_INVALID_STATE;
  }
  try {
    const hresult check = check_manual_exposure(client);
    if (check != HR_OK) return check;
    if (exposure > exposure_control(client)->max()) {
      exposure = exposure_control(client)->max();
    } else if (exposure < exposure_control(client)->min()) {
      exposure = exposure_control(client)->min();
    }
    exposure_control(client)->set_value(exposure);
  } catch (const platform::PlatformError& error) {
    return controls::failure_code(error);  // ends the request without a log line
  }
  client.control_tracker().store_exposure(static_cast<std::uint64_t>(exposure));
  return HR_OK;
}

hresult get_exposure(capture::CaptureClient& client, std::uint64_t& exposure) {
  if (!client.initialized() || !client.has_source_group() || !client.frame_reader()) {
    return HR_INVALID_STATE;
  }
  const hresult check = check_manual_exposure(client);
  if (check != HR_OK) return check;
  exposure = static_cast<std::uint64_t>(exposure_control(client)->value());
  return HR_OK;
}

hresult set_iso_speed(capture::CaptureClient& client, std::uint32_t iso_speed) {
  controls::ExtensionUnit* unit = client.extension_unit();
  const hresult ks_result = unit != nullptr ? unit->write_gain(iso_speed) : HR_FAIL;
  hresult result = ks_result;
  if (ks_result != HR_OK) {
    const std::shared_ptr<platform::FrameSource> second = client.second_source();
    if (!second || client.rgb_disabled()) return ks_result;
    const std::shared_ptr<platform::IsoSpeedControl> probe = iso_speed_control(*second);
    if (!probe || !probe->supported()) {
      VXLOG('D', "iso speed control not supported\n");
      return ks_result;
    }
    if (iso_speed > iso_speed_control(*second)->max()) {
      iso_speed = iso_speed_control(*second)->max();
    } else if (iso_speed < iso_speed_control(*second)->min()) {
      iso_speed = iso_speed_control(*second)->min();
    }
    iso_speed_control(*second)->set_value(iso_speed);
    result = HR_OK;
  }
  client.control_tracker().store_iso_speed(iso_speed);
  return result;
}

hresult set_auto_exposure_mode(capture::CaptureClient& client, std::uint32_t mode) {
  if (!client.initialized() || client.rgb_disabled()) return HR_INVALID_STATE;
  const bool automatic = mode == kAutoExposureOn;
  try {
    const std::shared_ptr<platform::ExposureControl> probe = exposure_control(client);
    if (!probe || !probe->supported()) {
      VXLOG('I', "exposure mode ctrl not supported");
      return HR_NOT_FOUND;
    }
    VXLOG('I', "Setting auto exposure mode to %d", automatic ? 1 : 0);
    exposure_control(client)->set_auto(automatic);
    return HR_OK;
  } catch (const platform::PlatformError& error) {
    VXLOG('I', "Setting auto exposure mode exception: %ws", error.message().c_str());
    return controls::failure_code(error);
  }
}

}  // namespace vexcap::capture
