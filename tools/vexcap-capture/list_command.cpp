// `list`: the cameras present as the device callbacks report them, each described by the
// discovery queries; then, with --watch, arrivals and removals as they happen. As text, or as
// one JSON document with --json.
#include <cstdio>
#include <regex>
#include <string>
#include <thread>

#include "call_watchdog.h"
#include "camera_discovery.h"
#include "camera_setup.h"
#include "commands.h"
#include "interrupt.h"
#include "json_value.h"
#include "library_session.h"
#include "wide_text.h"

namespace vexcap::tool {
namespace {

const char* group_type_name(std::uint32_t type) {
  switch (type) {
    case VEXCAP_GROUP_TYPE_SOFTWARE: return "software device (SWD)";
    case VEXCAP_GROUP_TYPE_USB: return "USB";
    case VEXCAP_GROUP_TYPE_OTHER: return "other (neither USB nor SWD)";
    default: return "none";
  }
}

const char* panel_name(std::uint32_t panel) {
  static const char* const names[VEXCAP_PANEL_COUNT] = {"unknown", "front", "back", "top",
                                                        "bottom", "left", "right"};
  return panel < VEXCAP_PANEL_COUNT ? names[panel] : "none";
}

// "VID_F00D" and "PID_CAFE" of a USB instance path; empty when the id has none.
std::pair<std::wstring, std::wstring> vid_pid_of(const std::wstring& id) {
  static const std::wregex pattern(L"(VID_[0-9A-Fa-f]{4})&(PID_[0-9A-Fa-f]{4})", std::regex::icase);
  std::wsmatch match;
  if (!std::regex_search(id, match, pattern)) return {};
  return {match[1].str(), match[2].str()};
}

// What the discovery queries say about one camera.
struct CameraFacts {
  std::size_t number;
  Camera camera;
  std::optional<Capabilities> capabilities;
  std::string vid, pid;                       // empty when the id carries none
  std::optional<std::uint32_t> group_type;    // for the VID/PID
  std::optional<std::vector<std::string>> locations;
  std::optional<bool> uses_vid_pid;           // --vid / --pid
};

struct SystemFacts {
  std::optional<std::uint32_t> group_type;
  std::optional<std::uint32_t> targeted_panel;
};

CameraFacts look_up(const Camera& camera, std::size_t number, const Options& options) {
  CameraFacts facts{number, camera, capabilities_of(camera.id), {}, {}, {}, {}, {}};
  const auto [vid, pid] = vid_pid_of(camera.id);
  facts.vid = narrow(vid);
  facts.pid = narrow(pid);
  if (!vid.empty()) {
    std::uint32_t type = 0;
    const int result = guarded("vexcap_get_source_group_type_for_vid_pid", [&, &vid = vid, &pid = pid] {
      return vexcap_get_source_group_type_for_vid_pid(vid.c_str(), pid.c_str(), &type);
    });
    if (result == VEXCAP_OK) facts.group_type = type;
  }
  // Sources report locations under their own ids, which share the VID/PID text with the group.
  const std::wstring location_text = vid.empty() ? camera.id : vid + L"&" + pid;
  std::uint8_t panels[VEXCAP_PANEL_COUNT] = {};
  if (guarded("vexcap_get_device_locations",
              [&] { return vexcap_get_device_locations(location_text.c_str(), panels); }) == VEXCAP_OK) {
    facts.locations.emplace();
    for (std::uint32_t panel = 0; panel < VEXCAP_PANEL_COUNT; ++panel)
      if (panels[panel] == 1) facts.locations->push_back(panel_name(panel));
  }
  if (options.vid && options.pid) {
    const std::wstring wanted_vid = widen(*options.vid), wanted_pid = widen(*options.pid);
    facts.uses_vid_pid = guarded("vexcap_is_vidpid_used_by_device", [&] {
                           return vexcap_is_vidpid_used_by_device(camera.id.c_str(), wanted_vid.c_str(),
                                                                  wanted_pid.c_str());
                         }) == 1;
  }
  return facts;
}

SystemFacts look_up_system() {
  SystemFacts facts;
  std::uint32_t type = 0;
  if (guarded("vexcap_get_source_group_type", [&] { return vexcap_get_source_group_type(&type); }) == VEXCAP_OK)
    facts.group_type = type;
  std::uint32_t panel = VEXCAP_PANEL_COUNT;
  guarded("vexcap_get_targeted_location", [&] { return vexcap_get_targeted_location(&panel); });
  if (panel < VEXCAP_PANEL_COUNT) facts.targeted_panel = panel;
  return facts;
}

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : ", ") + word;
  return text;
}

void print(const CameraFacts& facts, const Options& options) {
  std::printf("[%zu] %s\n    id          %s\n", facts.number, narrow(facts.camera.name).c_str(),
              narrow(facts.camera.id).c_str());
  std::printf("    sources     %s\n",
              facts.capabilities ? kinds_text(*facts.capabilities).c_str() : "(no group with this id)");
  if (!facts.vid.empty()) {
    std::printf("    group type  %s (%s, %s)\n", facts.group_type ? group_type_name(*facts.group_type) : "none",
                facts.vid.c_str(), facts.pid.c_str());
  }
  std::printf("    locations   %s\n", facts.locations ? joined(*facts.locations).c_str() : "none reported");
  if (facts.uses_vid_pid) {
    std::printf("    %s/%s  %s\n", options.vid->c_str(), options.pid->c_str(),
                *facts.uses_vid_pid ? "in use by this camera" : "not used by this camera");
  }
}

JsonValue to_json(const CameraFacts& facts) {
  JsonValue camera = JsonValue::object();
  camera.set("number", static_cast<std::uint64_t>(facts.number));
  camera.set("name", narrow(facts.camera.name));
  camera.set("id", narrow(facts.camera.id));
  JsonValue sources = JsonValue::array();
  if (facts.capabilities) {
    if (facts.capabilities->infrared) sources.push("infrared");
    if (facts.capabilities->color) sources.push("colour");
    if (facts.capabilities->depth) sources.push("depth");
    if (facts.capabilities->other) sources.push("other");
  }
  camera.set("sources", facts.capabilities ? sources : JsonValue());
  camera.set("vid", facts.vid.empty() ? JsonValue() : JsonValue(facts.vid));
  camera.set("pid", facts.pid.empty() ? JsonValue() : JsonValue(facts.pid));
  camera.set("group_type", facts.group_type ? JsonValue(group_type_name(*facts.group_type)) : JsonValue());
  JsonValue locations = JsonValue::array();
  if (facts.locations)
    for (const std::string& location : *facts.locations) locations.push(location);
  camera.set("locations", facts.locations ? locations : JsonValue());
  if (facts.uses_vid_pid) camera.set("uses_vid_pid", *facts.uses_vid_pid);
  return camera;
}

const char* event_name(DeviceEvent::Kind kind) {
  return kind == DeviceEvent::Kind::Added ? "added" : kind == DeviceEvent::Kind::Removed ? "removed" : "updated";
}

// Events after the first `seen`, as they come, until the time is up or a signal came.
std::vector<DeviceEvent> watch(DeviceEvents& events, std::size_t seen, double seconds, bool json) {
  if (!json) std::printf("watching for %.0f s (Ctrl-C ends)...\n", seconds);
  std::vector<DeviceEvent> later;
  const auto until = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  while (std::chrono::steady_clock::now() < until && !interrupted()) {
    const std::vector<DeviceEvent> all = events.wait_for(seen + 1, std::chrono::milliseconds(100));
    for (; seen < all.size(); ++seen) {
      const DeviceEvent& event = all[seen];
      later.push_back(event);
      if (json) continue;
      std::printf("%-7s %s%s%s\n", event_name(event.kind), narrow(event.id).c_str(), event.name.empty() ? "" : "  ",
                  narrow(event.name).c_str());
    }
  }
  return later;
}

// --log: the library logs only while a camera is open, so the list opens the first one.
std::unique_ptr<OpenCamera> open_for_log(const std::vector<Camera>& cameras) {
  if (cameras.empty()) {
    std::fprintf(stderr, "vexcap-capture: --log: no camera to open, so the library's log stays off "
                         "(it prints only while a camera is open)\n");
    return nullptr;
  }
  const std::optional<Capabilities> kinds = capabilities_of(cameras.front().id);
  const std::uint32_t reader = kinds && !kinds->infrared && kinds->color ? 0 : 1;
  std::unique_ptr<OpenCamera> device = open_camera(cameras.front(), reader, 640, 480);
  if (switch_diagnostic_log_on(device->handle())) {
    std::fprintf(stderr, "vexcap-capture: --log: opened %s so that the library logs (it prints only while "
                         "a camera is open); its lines start here\n",
                 narrow(cameras.front().name).c_str());
  }
  return device;
}

}  // namespace

int run_list(const Options& options) {
  Library library;
  DeviceEvents events;
  const std::vector<DeviceEvent> initial = initial_events(events);
  const std::vector<Camera> cameras = cameras_added(initial);
  const std::unique_ptr<OpenCamera> log_device = options.diagnostic_log ? open_for_log(cameras) : nullptr;

  std::vector<CameraFacts> facts;
  for (std::size_t i = 0; i < cameras.size() && !interrupted(); ++i) facts.push_back(look_up(cameras[i], i + 1, options));
  const SystemFacts system = look_up_system();

  if (!options.json) {
    std::printf("%zu camera%s\n", cameras.size(), cameras.size() == 1 ? "" : "s");
    for (const CameraFacts& camera : facts) print(camera, options);
    std::printf("system: source group type %s; targeted location %s\n",
                system.group_type ? group_type_name(*system.group_type) : "none",
                system.targeted_panel ? panel_name(*system.targeted_panel) : "none");
  }
  const std::vector<DeviceEvent> later =
      options.watch_s > 0 && !interrupted() ? watch(events, initial.size(), options.watch_s, options.json)
                                            : std::vector<DeviceEvent>{};
  if (options.json) {
    JsonValue document = JsonValue::object();
    JsonValue list = JsonValue::array();
    for (const CameraFacts& camera : facts) list.push(to_json(camera));
    document.set("cameras", list);
    JsonValue system_json = JsonValue::object();
    system_json.set("group_type", system.group_type ? JsonValue(group_type_name(*system.group_type)) : JsonValue());
    system_json.set("targeted_location",
                    system.targeted_panel ? JsonValue(panel_name(*system.targeted_panel)) : JsonValue());
    document.set("system", system_json);
    if (options.watch_s > 0) {
      JsonValue watched = JsonValue::array();
      for (const DeviceEvent& event : later) {
        JsonValue item = JsonValue::object();
        item.set("event", event_name(event.kind));
        item.set("id", narrow(event.id));
        if (!event.name.empty()) item.set("name", narrow(event.name));
        watched.push(item);
      }
      document.set("events", watched);
    }
    document.set("interrupted", interrupted());
    std::fputs(document.dump().c_str(), stdout);
  }
  return 0;
}

}  // namespace vexcap::tool
