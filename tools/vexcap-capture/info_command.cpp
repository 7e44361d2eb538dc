// `info`: the controls and device properties of one open camera, each with its value or with
// why it has none.
#include <cstdio>
#include <string>

#include "call_watchdog.h"
#include "camera_setup.h"
#include "commands.h"
#include "result_text.h"
#include "wide_text.h"

namespace vexcap::tool {
namespace {

void print_value(const char* name, int result, const std::string& value) {
  if (result == VEXCAP_OK) std::printf("  %-28s %s\n", name, value.c_str());
  else if (means_not_supported(result)) std::printf("  %-28s not supported (%s)\n", name, result_name(result));
  else std::printf("  %-28s failed: %s\n", name, describe_result(result).c_str());
}

std::string sensor_type_text(std::uint32_t code) {
  switch (code) {
    case VEXCAP_FORMAT_HIRES_1080P: return "18: 1920 wide at 30 fps";
    case VEXCAP_FORMAT_HIRES_720P: return "19: 1280x720 at 30 fps";
    case VEXCAP_FORMAT_HIRES_4K: return "20: 3840 wide at 30 fps";
    case VEXCAP_FORMAT_HIRES_NONE: return "21: none";
    default: return std::to_string(code);
  }
}

}  // namespace

int run_info(const Options& options) {
  Library library;
  const Camera camera = choose_camera(options.camera);
  const std::unique_ptr<OpenCamera> device = open_camera(camera, options.reader, options.width, options.height);
  vexcap_device* handle = device->handle();
  if (options.diagnostic_log) switch_diagnostic_log_on(handle);

  std::printf("%s\n  %-28s %s\n  %-28s %s\n", narrow(camera.name.empty() ? camera.id : camera.name).c_str(),
              "id", narrow(camera.id).c_str(), "reader", reader_name(options.reader));
  std::printf("controls\n");
  std::uint64_t exposure = 0;
  const int exposure_read = guarded("vexcap_get_exposure", [&] { return vexcap_get_exposure(handle, &exposure); });
  print_value("exposure", exposure_read,
              std::to_string(exposure) + " (100 ns units, " + std::to_string(exposure / 10) + " us)");
  std::uint32_t iso = 0;
  const int iso_read = guarded("vexcap_get_iso_speed", [&] { return vexcap_get_iso_speed(handle, &iso); });
  print_value("ISO speed", iso_read, std::to_string(iso));
  unsigned int led = 0;
  const int led_read = guarded("vexcap_get_led_power", [&] { return vexcap_get_led_power(handle, &led); });
  print_value("LED power", led_read, std::to_string(led));

  std::printf("device properties\n");
  std::uint32_t value = 0;
  int result = get_property(handle, VEXCAP_PROP_RGB_STATUS, value);
  print_value("17 RGB status", result, std::to_string(value) + (value != 0 ? " (colour stream active)" : ""));
  result = get_property(handle, VEXCAP_PROP_VIDEO_CONTROL_MODE, value);
  print_value("21 video control mode", result, std::to_string(value));
  result = get_property(handle, VEXCAP_PROP_HIRES_SENSOR_TYPE, value);
  print_value("22 high-res sensor type", result, sensor_type_text(value));
  return 0;
}

}  // namespace vexcap::tool
