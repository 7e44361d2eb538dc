// `info`: one open camera's controls, device properties and formats, each with its value or
// with why it has none; as text, or as one JSON document with --json.
//
// The library reports a control's value but not its range or step. It clamps a new exposure to
// the camera's range, though, so the exposure's range shows by asking for the extremes and
// reading back what was applied (then the first value is set again). ISO speed and LED power
// go to the camera's extension unit first, which does not clamp: their ranges stay unknown.
// The formats are the format codes the camera takes, each streamed for a moment to show the
// frames it brings.
#include <cstdio>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "call_watchdog.h"
#include "camera_setup.h"
#include "commands.h"
#include "format_codes.h"
#include "frame_pixels.h"
#include "interrupt.h"
#include "json_value.h"
#include "result_text.h"
#include "stream_probe.h"
#include "wide_text.h"

namespace vexcap::tool {
namespace {

// How long each format streams: enough frames for a rate.
constexpr double kSecondsPerFormat = 0.3;

struct Reading {
  int result = VEXCAP_OK;
  std::uint64_t value = 0;
  std::string text;  // the value in words
};

struct Range {
  std::int64_t min = 0;
  std::int64_t max = 0;
};

struct Control {
  const char* name;
  Reading reading;
  std::optional<Range> range;
  std::string range_note;  // why there is no range
};

struct Property {
  std::uint32_t id;
  const char* name;
  Reading reading;
};

struct Format {
  std::uint32_t code;
  std::string meaning;
  std::optional<StreamProbe> probe;
  std::string problem;  // why no frame came
};

std::string sensor_type_text(std::uint32_t code) {
  switch (code) {
    case VEXCAP_FORMAT_HIRES_1080P: return "18: 1920 wide at 30 fps";
    case VEXCAP_FORMAT_HIRES_720P: return "19: 1280x720 at 30 fps";
    case VEXCAP_FORMAT_HIRES_4K: return "20: 3840 wide at 30 fps";
    case VEXCAP_FORMAT_HIRES_NONE: return "21: none";
    default: return std::to_string(code);
  }
}

std::uint64_t read_exposure(vexcap_device* device, int& result) {
  std::uint64_t exposure = 0;
  result = guarded("vexcap_get_exposure", [&] { return vexcap_get_exposure(device, &exposure); });
  return exposure;
}

// The exposure the library applies for an extreme request is the camera's bound.
std::optional<Range> exposure_range(vexcap_device* device, std::uint64_t current, std::string& note) {
  const auto applied = [&](std::int64_t request) -> std::optional<std::int64_t> {
    if (guarded("vexcap_set_exposure", [&] { return vexcap_set_exposure(device, request); }) != VEXCAP_OK)
      return std::nullopt;
    int result = VEXCAP_OK;
    const std::uint64_t value = read_exposure(device, result);
    if (result != VEXCAP_OK) return std::nullopt;
    return static_cast<std::int64_t>(value);
  };
  const std::optional<std::int64_t> max = applied(std::numeric_limits<std::int64_t>::max());
  const std::optional<std::int64_t> min = applied(std::numeric_limits<std::int64_t>::min());
  guarded("vexcap_set_exposure", [&] { return vexcap_set_exposure(device, static_cast<std::int64_t>(current)); });
  if (!max || !min) {
    note = "the camera refused the extremes";
    return std::nullopt;
  }
  return Range{*min, *max};
}

Reading reading_of(int result, std::uint64_t value, std::string text) {
  Reading reading;
  reading.result = result;
  reading.value = value;
  reading.text = std::move(text);
  return reading;
}

std::vector<Control> read_controls(vexcap_device* device) {
  const std::string kNotReported = "the library reports no range for it";
  std::vector<Control> controls;

  int result = VEXCAP_OK;
  const std::uint64_t exposure = read_exposure(device, result);
  controls.push_back({"exposure",
                      reading_of(result, exposure, std::to_string(exposure) + " (100 ns units, " +
                                                       std::to_string(exposure / 10) + " us)"),
                      std::nullopt, "no value to return to (automatic exposure may be on)"});
  if (result == VEXCAP_OK) controls.back().range = exposure_range(device, exposure, controls.back().range_note);

  std::uint32_t iso = 0;
  result = guarded("vexcap_get_iso_speed", [&] { return vexcap_get_iso_speed(device, &iso); });
  controls.push_back({"ISO speed", reading_of(result, iso, std::to_string(iso)), std::nullopt, kNotReported});

  unsigned int led = 0;
  result = guarded("vexcap_get_led_power", [&] { return vexcap_get_led_power(device, &led); });
  controls.push_back({"LED power", reading_of(result, led, std::to_string(led)), std::nullopt, kNotReported});
  return controls;
}

std::vector<Property> read_properties(vexcap_device* device) {
  std::vector<Property> properties{{VEXCAP_PROP_RGB_STATUS, "17 RGB status", Reading()},
                                   {VEXCAP_PROP_VIDEO_CONTROL_MODE, "21 video control mode", Reading()},
                                   {VEXCAP_PROP_HIRES_SENSOR_TYPE, "22 high-res sensor type", Reading()}};
  for (Property& property : properties) {
    std::uint32_t value = 0;
    property.reading.result = get_property(device, property.id, value);
    property.reading.value = value;
    property.reading.text = property.id == VEXCAP_PROP_HIRES_SENSOR_TYPE ? sensor_type_text(value)
                            : property.id == VEXCAP_PROP_RGB_STATUS && value != 0
                                ? std::to_string(value) + " (colour stream active)"
                                : std::to_string(value);
  }
  return properties;
}

// Every code the camera takes for the reader, each streamed for a moment; `found` hears of each
// as it comes.
std::vector<Format> read_formats(vexcap_device* device, const Options& options,
                                 const std::function<void(const Format&)>& found) {
  std::vector<Format> formats;
  for (std::uint32_t code = 0; code <= kLastFormatCode && !interrupted(); ++code) {
    if (set_property(device, VEXCAP_PROP_STREAM_TYPE, code) != VEXCAP_OK) continue;
    Format format{code, format_code_text(code, options.width, options.height), std::nullopt, ""};
    try {
      format.probe = probe_stream(device, 0, kSecondsPerFormat, options.frame_timeout_s);
    } catch (const ToolError& error) {
      format.problem = error.what();
    }
    if (interrupted()) break;
    found(format);
    formats.push_back(format);
  }
  return formats;
}

std::string range_text(const Control& control) {
  if (!control.range) return "range unknown: " + control.range_note;
  return "range " + std::to_string(control.range->min) + " .. " + std::to_string(control.range->max) +
         " (the library clamps to it); step not reported by the library";
}

void print_reading(const char* name, const Reading& reading) {
  if (reading.result == VEXCAP_OK) std::printf("  %-28s %s\n", name, reading.text.c_str());
  else if (means_not_supported(reading.result)) std::printf("  %-28s not supported (%s)\n", name, result_name(reading.result));
  else std::printf("  %-28s failed: %s\n", name, describe_result(reading.result).c_str());
}

JsonValue reading_json(const Reading& reading) {
  JsonValue json = JsonValue::object();
  json.set("result", reading.result);
  json.set("result_name", result_name(reading.result));
  json.set("value", reading.result == VEXCAP_OK ? JsonValue(reading.value) : JsonValue());
  return json;
}

JsonValue probe_json(const StreamProbe& probe) {
  JsonValue frames = JsonValue::object();
  frames.set("width", probe.first.width);
  frames.set("height", probe.first.height);
  frames.set("pixel_format", pixel_format_name(probe.first.pixel_format));
  frames.set("frames_per_second", probe.frames_per_second);
  return frames;
}

JsonValue to_json(const Camera& camera, const Options& options, const std::vector<Control>& controls,
                  const std::vector<Property>& properties, const std::vector<Format>& formats) {
  JsonValue document = JsonValue::object();
  document.set("name", narrow(camera.name));
  document.set("id", narrow(camera.id));
  document.set("reader", reader_name(options.reader));
  JsonValue controls_json = JsonValue::object();
  for (const Control& control : controls) {
    JsonValue json = reading_json(control.reading);
    json.set("min", control.range ? JsonValue(control.range->min) : JsonValue());
    json.set("max", control.range ? JsonValue(control.range->max) : JsonValue());
    json.set("step", JsonValue());  // the library reports none
    if (!control.range) json.set("range_note", control.range_note);
    controls_json.set(control.name, json);
  }
  document.set("controls", controls_json);
  JsonValue properties_json = JsonValue::object();
  for (const Property& property : properties) properties_json.set(std::to_string(property.id), reading_json(property.reading));
  document.set("properties", properties_json);
  JsonValue formats_json = JsonValue::array();
  for (const Format& format : formats) {
    JsonValue json = JsonValue::object();
    json.set("code", format.code);
    json.set("meaning", format.meaning);
    json.set("frames", format.probe ? probe_json(*format.probe) : JsonValue());
    if (!format.probe) json.set("problem", format.problem);
    formats_json.push(json);
  }
  document.set("formats", formats_json);
  document.set("interrupted", interrupted());
  return document;
}

void print_format(const Format& format) {
  const std::string frames = format.probe ? probe_text(*format.probe) : "no frames: " + format.problem;
  std::printf("  %2u  %-34s %s\n", format.code, format.meaning.c_str(), frames.c_str());
}

}  // namespace

int run_info(const Options& options) {
  Library library;
  const Camera camera = choose_camera(options.camera);
  const std::unique_ptr<OpenCamera> device = open_camera(camera, options.reader, options.width, options.height);
  vexcap_device* handle = device->handle();
  if (options.diagnostic_log && switch_diagnostic_log_on(handle)) announce_log_start();
  const bool text = !options.json;

  if (text) {
    std::printf("%s\n  %-28s %s\n  %-28s %s\n", narrow(camera.name.empty() ? camera.id : camera.name).c_str(), "id",
                narrow(camera.id).c_str(), "reader", reader_name(options.reader));
  }
  const std::vector<Control> controls = read_controls(handle);
  if (text) {
    std::printf("controls\n");
    for (const Control& control : controls) {
      print_reading(control.name, control.reading);
      if (control.reading.result == VEXCAP_OK) std::printf("  %-28s %s\n", "", range_text(control).c_str());
    }
  }
  const std::vector<Property> properties = read_properties(handle);
  if (text) {
    std::printf("device properties\n");
    for (const Property& property : properties) print_reading(property.name, property.reading);
    std::printf("formats (codes of device property 9 the camera takes)\n");
  }
  const std::vector<Format> formats = read_formats(handle, options, [&](const Format& format) {
    if (text) print_format(format);
  });
  if (text && formats.empty()) std::printf("  none\n");
  if (options.json) std::fputs(to_json(camera, options, controls, properties, formats).dump().c_str(), stdout);
  return 0;
}

}  // namespace vexcap::tool
