#include "capture/frame_controls.h"

#include "capture/capture_client.h"
#include "capture/exposure_iso.h"
#include "capture/led_torch.h"

namespace vexcap::capture {

namespace {

// The LED power in force: the torch first, the extension unit when the torch does not answer.
hresult read_led_power(capture::CaptureClient& client, std::uint32_t& power) {
  const hresult torch = capture::get_torch_power(client, power);
  if (torch == HR_OK) return HR_OK;
  controls::ExtensionUnit* unit = client.extension_unit();
  return unit != nullptr ? unit->read_led_power(power) : HR_FAIL;
}

}  // namespace

std::optional<hresult> report_controls(capture::CaptureClient& client, const ControlReport& report,
                                       vexcap_frame& record) {
  record.exposure = 0;
  if (report.report_exposure) {
    std::uint64_t exposure = 0;
    if (capture::get_exposure(client, exposure) == HR_OK) record.exposure = exposure;
  }

  record.iso_speed = 0;
  if (report.report_iso_speed && client.extension_unit() != nullptr) {
    std::uint32_t iso = 0;
    if (client.extension_unit()->read_gain(iso) == HR_OK) record.iso_speed = iso;
  }

  record.led_power = 255;
  if (!report.report_led_power) return std::nullopt;
  std::uint32_t power = 0;
  const hresult read = read_led_power(client, power);
  if (read == HR_OK) record.led_power = static_cast<std::uint8_t>(power);
  return read;
}

}  // namespace vexcap::capture
