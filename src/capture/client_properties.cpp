#include "capture/client_properties.h"

#include "capture/capture_client.h"
#include "capture/exposure_iso.h"
#include "capture/led_torch.h"
#include "controls/extended_properties.h"
#include "log/log.h"

namespace vexcap::capture {
namespace {

// Selects a format (apply flag 1 also runs the reader briefly with it). A camera without the
// vendor's extension unit has its torch switched off with it.
hresult select_stream_type(capture::CaptureClient& client, std::uint32_t format_code,
                           std::uint32_t apply_flag) {
  const hresult result = client.enable_stream_type(static_cast<std::int32_t>(format_code), apply_flag);
  if (result != HR_OK) return result;
  const controls::ExtensionUnit* unit = client.extension_unit();
  if (unit == nullptr || (!unit->primary_unit().found && !unit->alternative_unit().found)) {
    enable_led_power_control(client, false);  // best effort: the format is chosen either way
  }
  return HR_OK;
}

std::uint8_t control18_byte(std::uint32_t value) {
  switch (value) {
    case VEXCAP_XU_CONTROL_18_ONE:
      return 1;
    case VEXCAP_XU_CONTROL_18_TWO:
      return 2;
    default:
      return 0;
  }
}

hresult write_control18(capture::CaptureClient& client, std::uint32_t value) {
  controls::ExtensionUnit* unit = client.extension_unit();
  return unit != nullptr ? unit->write_primary_control18(control18_byte(value)) : HR_FAIL;
}

// The highest resolution the colour sensor offers: 4K, then 1080p, then 720p.
std::uint32_t hires_sensor_type(const capture::CaptureClient& client) {
  for (const std::uint32_t code :
       {VEXCAP_FORMAT_HIRES_4K, VEXCAP_FORMAT_HIRES_1080P, VEXCAP_FORMAT_HIRES_720P}) {
    if (client.format_table().count(code) != 0) return code;
  }
  VXLOG('D', "No suppoted hires sensor type");
  return VEXCAP_FORMAT_HIRES_NONE;
}

}  // namespace

hresult set_device_property(capture::CaptureClient& client, const vexcap_property& property) {
  switch (property.id) {
    case VEXCAP_PROP_FACE_AUTH_MODE:
      return set_face_auth_mode(client.property_target(), property.value);
    case VEXCAP_PROP_AUTO_EXPOSURE:
      return set_auto_exposure_mode(client, property.value);
    case VEXCAP_PROP_DIAGNOSTIC_LOG:
      log::set_output_from_property(property.value);
      return HR_OK;
    case VEXCAP_PROP_STREAM_TYPE:
      return select_stream_type(client, property.value, 0);
    case VEXCAP_PROP_STREAM_TYPE_APPLY:
      return select_stream_type(client, property.value, 1);
    case VEXCAP_PROP_RGB_OFF:
      return client.switch_colour_stream_off();
    case VEXCAP_PROP_LLC:
      return set_llc(client.property_target(), property.value);
    case VEXCAP_PROP_XU_CONTROL_18:
      return write_control18(client, property.value);
    default:  // not an error: hosts probe ids
      VXLOG('E', "Unsupported device property id");
      return HR_OK;
  }
}

hresult get_device_property(capture::CaptureClient& client, vexcap_property& property) {
  VXLOG('D', "get_dev_property: %d", static_cast<int>(property.id));
  controls::ExtensionUnit* unit = client.extension_unit();
  switch (property.id) {
    case VEXCAP_PROP_RGB_STATUS: {
      std::uint32_t status = 0;
      const hresult result = unit != nullptr ? unit->read_rgb_status(status) : HR_FAIL;
      property.value = status;
      return result;
    }
    case VEXCAP_PROP_VIDEO_CONTROL_MODE: {
      std::uint32_t mode = 0;
      const hresult result = unit != nullptr ? unit->read_video_control_mode(mode) : HR_FAIL;
      property.value = mode & 2;
      return result;
    }
    case VEXCAP_PROP_HIRES_SENSOR_TYPE:
      property.value = hires_sensor_type(client);
      return HR_OK;
    default:
      VXLOG('E', "Unsupported device property id");
      return HR_OK;
  }
}

}  // namespace vexcap::capture
