#include "camera_setup.h"

#include <cstdio>

#include "call_watchdog.h"
#include "result_text.h"
#include "tool_error.h"
#include "wide_text.h"

namespace vexcap::tool {
namespace {

bool has_reader_kind(const Capabilities& capabilities, std::uint32_t reader) {
  switch (reader) {
    case 0: return capabilities.color;
    case 1: return capabilities.infrared;
    case 2: return capabilities.depth;
    default: return capabilities.other;
  }
}

void set_checked(vexcap_device* device, std::uint32_t id, std::uint32_t value) {
  const int result = set_property(device, id, value);
  if (result == VEXCAP_OK) return;
  const bool format = id == VEXCAP_PROP_STREAM_TYPE || id == VEXCAP_PROP_STREAM_TYPE_APPLY;
  throw CallError("vexcap_set_dev_property (" + std::string(property_name(id)) + " = " +
                      std::to_string(value) + ")",
                  result,
                  format ? "`vexcap-capture check` streams every format code the camera accepts" : "");
}

}  // namespace

const char* reader_name(std::uint32_t reader) {
  switch (reader) {
    case 0: return "colour";
    case 1: return "infrared";
    case 2: return "depth";
    default: return "custom";
  }
}

const char* property_name(std::uint32_t id) {
  switch (id) {
    case VEXCAP_PROP_FACE_AUTH_MODE: return "property 1 (face-auth mode)";
    case VEXCAP_PROP_AUTO_EXPOSURE: return "property 2 (auto exposure)";
    case VEXCAP_PROP_DIAGNOSTIC_LOG: return "property 5 (diagnostic log)";
    case VEXCAP_PROP_STREAM_TYPE: return "property 9 (format code)";
    case VEXCAP_PROP_STREAM_TYPE_APPLY: return "property 16 (format code, rate limit)";
    case VEXCAP_PROP_RGB_STATUS: return "property 17 (RGB status)";
    case VEXCAP_PROP_RGB_OFF: return "property 18 (colour off)";
    case VEXCAP_PROP_LLC: return "property 19 (LLC)";
    case VEXCAP_PROP_XU_CONTROL_18: return "property 20 (XU control 18)";
    case VEXCAP_PROP_VIDEO_CONTROL_MODE: return "property 21 (video control mode)";
    case VEXCAP_PROP_HIRES_SENSOR_TYPE: return "property 22 (hi-res sensor type)";
    default: return "unknown property";
  }
}

std::unique_ptr<OpenCamera> open_camera(const Camera& camera, std::uint32_t reader,
                                        std::uint16_t width, std::uint16_t height) {
  const std::optional<Capabilities> capabilities = capabilities_of(camera.id);
  if (!capabilities) {
    throw CallError("vexcap_get_device_capabilities", VEXCAP_E_FAIL,
                    "no camera has the id " + narrow(camera.id));
  }
  if (!has_reader_kind(*capabilities, reader)) {
    throw ToolError("the camera " + narrow(camera.id) + " has no " + reader_name(reader) +
                    " source (see --reader and `vexcap-capture list`)");
  }
  return std::make_unique<OpenCamera>(camera.id, vexcap_open_params{reader, width, height});
}

int set_property(vexcap_device* device, std::uint32_t id, std::uint32_t value) {
  vexcap_property property{id, value};
  return guarded("vexcap_set_dev_property", [&] { return vexcap_set_dev_property(device, &property); });
}

int get_property(vexcap_device* device, std::uint32_t id, std::uint32_t& value) {
  vexcap_property property{id, 0};
  const int result =
      guarded("vexcap_get_dev_property", [&] { return vexcap_get_dev_property(device, &property); });
  value = property.value;
  return result;
}

bool switch_diagnostic_log_on(vexcap_device* device) {
  const int result = set_property(device, VEXCAP_PROP_DIAGNOSTIC_LOG, VEXCAP_DIAGNOSTIC_LOG_ON);
  if (result != VEXCAP_OK) {
    std::fprintf(stderr, "vexcap-capture: warning: the diagnostic log stays off: vexcap_set_dev_property (%s) answered %s\n",
                 property_name(VEXCAP_PROP_DIAGNOSTIC_LOG), describe_result(result).c_str());
  }
  return result == VEXCAP_OK;
}

void announce_log_start() {
  std::fprintf(stderr, "vexcap-capture: --log: the library's log starts here, once the camera is open "
                       "(it prints only while a camera is open)\n");
}

void apply_format_and_controls(vexcap_device* device, const Options& options) {
  if (options.format) set_checked(device, options.format_property, *options.format);
  if (options.auto_exposure) set_checked(device, VEXCAP_PROP_AUTO_EXPOSURE, *options.auto_exposure);
  if (options.exposure) {
    check_call("vexcap_set_exposure", guarded("vexcap_set_exposure", [&] {
                 return vexcap_set_exposure(device, *options.exposure);
               }));
  }
  if (options.iso_speed) {
    check_call("vexcap_set_iso_speed", guarded("vexcap_set_iso_speed", [&] {
                 return vexcap_set_iso_speed(device, *options.iso_speed);
               }));
  }
  if (options.led_power) {
    check_call("vexcap_set_led_power", guarded("vexcap_set_led_power", [&] {
                 return vexcap_set_led_power(device, *options.led_power);
               }));
  }
  if (options.face_auth) set_checked(device, VEXCAP_PROP_FACE_AUTH_MODE, *options.face_auth);
  if (options.llc) set_checked(device, VEXCAP_PROP_LLC, *options.llc);
}

}  // namespace vexcap::tool
