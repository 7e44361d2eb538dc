// `check`: a compliance run against any camera. Each stream mode the camera offers is opened in
// turn (two at once would compete for the camera's one exclusive session): both stream
// selectors, every format code, the controls, the device properties, the device events and
// repeated start and stop. Requests a camera or library does not serve are "not supported",
// never failures. A signal ends the run after the check in progress; the report then shows
// what ran.
#include <cstdio>
#include <string>
#include <vector>

#include "call_watchdog.h"
#include "camera_setup.h"
#include "check_report.h"
#include "commands.h"
#include "format_codes.h"
#include "interrupt.h"
#include "output_file.h"
#include "result_text.h"
#include "stream_probe.h"
#include "wide_text.h"

namespace vexcap::tool {
namespace {

Verdict from_result(int result, const std::string& call, const std::string& detail = {}) {
  if (result == VEXCAP_OK) return {Outcome::Pass, detail};
  if (means_not_supported(result)) return {Outcome::NotSupported, call + " answered " + result_name(result)};
  return {Outcome::Fail, call + " failed: " + describe_result(result)};
}

// A control read, written back unchanged and read again: the value must survive the trip.
template <typename Value, typename Get, typename Set>
Verdict round_trip(const std::string& getter, const std::string& setter, Get get, Set set) {
  Value before{};
  const int read = guarded(getter.c_str(), [&] { return get(before); });
  if (read != VEXCAP_OK) return from_result(read, getter);
  const int written = guarded(setter.c_str(), [&] { return set(before); });
  if (written != VEXCAP_OK) return from_result(written, setter);
  Value after{};
  const int reread = guarded(getter.c_str(), [&] { return get(after); });
  if (reread != VEXCAP_OK) return from_result(reread, getter);
  if (after != before)
    return {Outcome::Fail, "wrote " + std::to_string(before) + ", read back " + std::to_string(after)};
  return {Outcome::Pass, std::to_string(before) + " read, written back and read again"};
}

void check_streams(CheckReport& report, vexcap_device* device, const std::string& mode, const Options& options) {
  for (const auto& [selector, name] : {std::pair{0u, "shared"}, std::pair{VEXCAP_STREAM_SELECT_EXCLUSIVE, "exclusive"}}) {
    report.run(mode + ": " + name + " stream", [&, selector = selector] {
      const StreamProbe probe = probe_stream(device, selector, options.seconds_per_format, options.frame_timeout_s);
      if (!probe.first_problem.empty()) return Verdict{Outcome::Fail, probe.first_problem};
      return Verdict{Outcome::Pass, probe_text(probe)};
    });
  }
}

void check_format_codes(CheckReport& report, vexcap_device* device, const std::string& mode, const Options& options) {
  bool any_offered = false;
  bool any_answer = false;  // an answer other than "not served"
  for (std::uint32_t code = 0; code <= kLastFormatCode && !interrupted(); ++code) {
    const int result = set_property(device, VEXCAP_PROP_STREAM_TYPE, code);
    if (result == VEXCAP_E_INVALID_ARG) {  // outside the reader's range of codes
      any_answer = true;
      continue;
    }
    if (result != VEXCAP_OK) {
      if (!means_not_supported(result)) {
        any_answer = true;
        report.record(mode + ": format code " + std::to_string(code), from_result(result, "vexcap_set_dev_property"));
      }
      continue;
    }
    any_offered = any_answer = true;
    report.run(mode + ": format code " + std::to_string(code), [&] {
      const StreamProbe probe = probe_stream(device, 0, options.seconds_per_format, options.frame_timeout_s);
      if (!probe.first_problem.empty()) return Verdict{Outcome::Fail, probe.first_problem};
      return Verdict{Outcome::Pass, probe_text(probe)};
    });
  }
  if (!any_offered) {
    report.record(mode + ": format codes (property 9)",
                  {any_answer ? Outcome::Fail : Outcome::NotSupported,
                   any_answer ? "no code selects a format" : "every code answered VEXCAP_E_FAIL"});
  }
}

void check_controls(CheckReport& report, vexcap_device* device, const std::string& mode) {
  report.run(mode + ": exposure", [&] {
    return round_trip<std::uint64_t>("vexcap_get_exposure", "vexcap_set_exposure",
        [&](std::uint64_t& v) { return vexcap_get_exposure(device, &v); },
        [&](std::uint64_t v) { return vexcap_set_exposure(device, static_cast<std::int64_t>(v)); });
  });
  report.run(mode + ": ISO speed", [&] {
    return round_trip<std::uint32_t>("vexcap_get_iso_speed", "vexcap_set_iso_speed",
        [&](std::uint32_t& v) { return vexcap_get_iso_speed(device, &v); },
        [&](std::uint32_t v) { return vexcap_set_iso_speed(device, v); });
  });
  report.run(mode + ": LED power", [&] {
    return round_trip<unsigned int>("vexcap_get_led_power", "vexcap_set_led_power",
        [&](unsigned int& v) { return vexcap_get_led_power(device, &v); },
        [&](unsigned int v) { return vexcap_set_led_power(device, v); });
  });
}

void check_properties(CheckReport& report, vexcap_device* device, const std::string& mode, std::uint32_t reader) {
  for (std::uint32_t id : {VEXCAP_PROP_RGB_STATUS, VEXCAP_PROP_VIDEO_CONTROL_MODE, VEXCAP_PROP_HIRES_SENSOR_TYPE}) {
    report.run(mode + ": get " + property_name(id), [&] {
      std::uint32_t value = 0;
      const int result = get_property(device, id, value);
      return from_result(result, "vexcap_get_dev_property", "value " + std::to_string(value));
    });
  }
  std::vector<std::pair<std::uint32_t, std::uint32_t>> settings{{VEXCAP_PROP_LLC, VEXCAP_LLC_ON},
                                                                {VEXCAP_PROP_AUTO_EXPOSURE, VEXCAP_AUTO_EXPOSURE_ON}};
  if (reader == 1) settings.emplace_back(VEXCAP_PROP_FACE_AUTH_MODE, VEXCAP_FACE_AUTH_DISABLED);
  for (const auto& [id, value] : settings) {
    report.run(mode + ": set " + property_name(id), [&, id = id, value = value] {
      return from_result(set_property(device, id, value), "vexcap_set_dev_property", "set to " + std::to_string(value));
    });
  }
}

void on_exclusive_status(const wchar_t*, uint8_t, bool, void*) {}
void on_rgb_status(bool, void*) {}
void on_unsupported_format(uint32_t, void*) {}
void on_rgb_stopped(bool, void*) {}

void check_events(CheckReport& report, vexcap_device* device, const std::string& mode) {
  struct Event {
    const char* name;
    const char* registration;
    const char* unregistration;
    std::function<int()> subscribe;
    std::function<int()> unsubscribe;
  };
  const std::vector<Event> events{
      {"exclusive-control status event", "vexcap_register_for_excl_ctrl_status_event",
       "vexcap_unregister_for_excl_ctrl_status_event",
       [&] { return vexcap_register_for_excl_ctrl_status_event(device, on_exclusive_status, nullptr); },
       [&] { return vexcap_unregister_for_excl_ctrl_status_event(device); }},
      {"RGB status event", "vexcap_register_for_rgb_status_event", "vexcap_unregister_for_rgb_status_event",
       [&] { return vexcap_register_for_rgb_status_event(device, on_rgb_status, nullptr); },
       [&] { return vexcap_unregister_for_rgb_status_event(device); }},
      {"unsupported-format event", "vexcap_register_for_unsupported_format_status_event",
       "vexcap_unregister_for_unsupported_format_status_event",
       [&] { return vexcap_register_for_unsupported_format_status_event(device, on_unsupported_format, nullptr); },
       [&] { return vexcap_unregister_for_unsupported_format_status_event(device); }},
      {"RGB stopped event", "vexcap_register_for_rgb_stopped_event", "vexcap_unregister_for_rgb_stopped_event",
       [&] { return vexcap_register_for_rgb_stopped_event(device, on_rgb_stopped, nullptr); },
       [&] { return vexcap_unregister_for_rgb_stopped_event(device); }},
  };
  for (const Event& event : events) {
    report.run(mode + ": " + event.name, [&] {
      const int registered = guarded(event.registration, event.subscribe);
      if (registered != VEXCAP_OK) return from_result(registered, event.registration);
      return from_result(guarded(event.unregistration, event.unsubscribe), event.unregistration,
                         "registered and unregistered");
    });
  }
}

void check_start_stop(CheckReport& report, vexcap_device* device, const std::string& mode, const Options& options) {
  report.run(mode + ": start and stop " + std::to_string(options.start_stop_cycles) + " times", [&] {
    std::vector<double> first_frame_ms;
    for (unsigned cycle = 0; cycle < options.start_stop_cycles && !interrupted(); ++cycle) {
      const StreamProbe probe = probe_stream(device, 0, 0, options.frame_timeout_s);
      if (!probe.first_problem.empty()) return Verdict{Outcome::Fail, probe.first_problem};
      first_frame_ms.push_back(probe.first_frame_ms);
    }
    double slowest = 0;
    for (double ms : first_frame_ms) slowest = std::max(slowest, ms);
    char detail[96];
    std::snprintf(detail, sizeof detail, "first frame within %.0f ms every time", slowest);
    return Verdict{Outcome::Pass, detail};
  });
}

void check_stream_mode(CheckReport& report, const Camera& camera, std::uint32_t reader,
                       const Capabilities& capabilities, const Options& options) {
  if (interrupted()) return;
  const std::string mode = std::string("mode ") + std::to_string(reader) + " " + reader_name(reader);
  const bool offered = reader == 1 ? capabilities.infrared : capabilities.color;
  if (!offered) {
    report.record(mode + ": open", {Outcome::NotSupported, std::string("the camera has no ") + reader_name(reader) + " source"});
    return;
  }
  std::unique_ptr<OpenCamera> device;
  report.run(mode + ": open", [&] {
    device = open_camera(camera, reader, options.width, options.height);
    return Verdict{Outcome::Pass, ""};
  });
  if (!device) return;
  // Each open switches the library's log off again, each close silences it until the next open.
  if (options.diagnostic_log && switch_diagnostic_log_on(device->handle())) announce_log_start();
  check_streams(report, device->handle(), mode, options);
  check_format_codes(report, device->handle(), mode, options);
  check_controls(report, device->handle(), mode);
  check_properties(report, device->handle(), mode, reader);
  check_events(report, device->handle(), mode);
  check_start_stop(report, device->handle(), mode, options);
  report.record(mode + ": close", from_result(device->close(), "vexcap_device_close"));
}

void finish(const CheckReport& report, const Options& options) {
  if (options.json) std::fputs(report.json().c_str(), stdout);
  else report.print_totals();
  if (options.junit) {
    OutputFile junit{std::filesystem::path(*options.junit)};
    junit.write(report.junit_xml());
    junit.commit();
  }
}

}  // namespace

int run_check(const Options& options) {
  CheckReport report(!options.json);
  Library library;
  std::optional<Camera> camera;
  report.run("camera present", [&] {
    camera = choose_camera(options.camera);
    return Verdict{Outcome::Pass, narrow(camera->name.empty() ? camera->id : camera->name)};
  });
  if (!camera) {
    finish(report, options);
    return report.exit_code();
  }
  std::optional<Capabilities> capabilities;
  report.run("discovery: source kinds", [&] {
    capabilities = capabilities_of(camera->id);
    if (!capabilities) return Verdict{Outcome::Fail, "vexcap_get_device_capabilities found no group with the id"};
    return Verdict{Outcome::Pass, kinds_text(*capabilities)};
  });
  report.run("discovery: source group type", [&] {
    std::uint32_t type = 0;
    const int result = guarded("vexcap_get_source_group_type", [&] { return vexcap_get_source_group_type(&type); });
    return from_result(result, "vexcap_get_source_group_type", "type " + std::to_string(type));
  });
  if (capabilities) {
    check_stream_mode(report, *camera, 1, *capabilities, options);
    check_stream_mode(report, *camera, 0, *capabilities, options);
  }
  finish(report, options);
  return report.exit_code();
}

}  // namespace vexcap::tool
