#include "capture/frame_controls.h"

namespace vexcap::capture {

std::optional<hresult> report_controls(FrameCamera& camera, const ControlReport& report,
                                       vexcap_frame& record) {
  record.exposure = 0;
  if (report.report_exposure) {
    std::uint64_t exposure = 0;
    if (camera.read_exposure(exposure) == HR_OK) record.exposure = exposure;
  }

  record.iso_speed = 0;
  if (report.report_iso_speed) {
    std::uint32_t iso = 0;
    if (camera.read_gain(iso) == HR_OK) record.iso_speed = iso;
  }

  record.led_power = 255;
  if (!report.report_led_power) return std::nullopt;
  std::uint32_t power = 0;
  const hresult read = camera.read_led_power(power);
  if (read == HR_OK) record.led_power = static_cast<std::uint8_t>(power);
  return read;
}

}  // namespace vexcap::capture
