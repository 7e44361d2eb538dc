#include "frames/frame_controls.h"

namespace vexcap::frames {

std::optional<hresult> report_controls(client::VexCap& /*client*/, vexcap_frame& record) {
  record.exposure = 0;
  record.iso_speed = 0;
  record.led_power = 255;
  return std::nullopt;
}

}  // namespace vexcap::frames
