// `list`: the cameras present as the device callbacks report them, each described by the
// discovery queries; then, with --watch, arrivals and removals as they happen.
#include <cstdio>
#include <regex>
#include <string>
#include <thread>

#include "call_watchdog.h"
#include "camera_discovery.h"
#include "commands.h"
#include "interrupt.h"
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

std::string panels_text(const std::uint8_t (&panels)[VEXCAP_PANEL_COUNT]) {
  std::string text;
  for (std::uint32_t panel = 0; panel < VEXCAP_PANEL_COUNT; ++panel)
    if (panels[panel] == 1) text += (text.empty() ? "" : ", ") + std::string(panel_name(panel));
  return text;
}

// "VID_F00D" and "PID_CAFE" of a USB instance path; empty when the id has none.
std::pair<std::wstring, std::wstring> vid_pid_of(const std::wstring& id) {
  static const std::wregex pattern(L"(VID_[0-9A-Fa-f]{4})&(PID_[0-9A-Fa-f]{4})", std::regex::icase);
  std::wsmatch match;
  if (!std::regex_search(id, match, pattern)) return {};
  return {match[1].str(), match[2].str()};
}

void describe(const Camera& camera, std::size_t number, const Options& options) {
  std::printf("[%zu] %s\n    id          %s\n", number, narrow(camera.name).c_str(), narrow(camera.id).c_str());
  const std::optional<Capabilities> capabilities = capabilities_of(camera.id);
  std::printf("    sources     %s\n", capabilities ? kinds_text(*capabilities).c_str() : "(no group with this id)");

  const auto [vid, pid] = vid_pid_of(camera.id);
  if (!vid.empty()) {
    std::uint32_t type = 0;
    const int result = guarded("vexcap_get_source_group_type_for_vid_pid", [&, &vid = vid, &pid = pid] {
      return vexcap_get_source_group_type_for_vid_pid(vid.c_str(), pid.c_str(), &type);
    });
    std::printf("    group type  %s (%s, %s)\n", result == VEXCAP_OK ? group_type_name(type) : "none",
                narrow(vid).c_str(), narrow(pid).c_str());
  }
  // Sources report locations under their own ids, which share the VID/PID text with the group.
  const std::wstring location_text = vid.empty() ? camera.id : vid + L"&" + pid;
  std::uint8_t panels[VEXCAP_PANEL_COUNT] = {};
  const int located = guarded("vexcap_get_device_locations",
                              [&] { return vexcap_get_device_locations(location_text.c_str(), panels); });
  std::printf("    locations   %s\n", located == VEXCAP_OK ? panels_text(panels).c_str() : "none reported");

  if (options.vid || options.pid) {
    const std::wstring wanted_vid = widen(options.vid.value_or("")), wanted_pid = widen(options.pid.value_or(""));
    const int used = guarded("vexcap_is_vidpid_used_by_device", [&] {
      return vexcap_is_vidpid_used_by_device(camera.id.c_str(), wanted_vid.c_str(), wanted_pid.c_str());
    });
    std::printf("    %s/%s  %s\n", options.vid.value_or("").c_str(), options.pid.value_or("").c_str(),
                used == 1 ? "in use by this camera" : "not used by this camera");
  }
}

void describe_system() {
  std::uint32_t type = 0;
  const int typed = guarded("vexcap_get_source_group_type", [&] { return vexcap_get_source_group_type(&type); });
  std::uint32_t panel = VEXCAP_PANEL_COUNT;
  guarded("vexcap_get_targeted_location", [&] { return vexcap_get_targeted_location(&panel); });
  std::printf("system: source group type %s; targeted location %s\n",
              typed == VEXCAP_OK ? group_type_name(type) : "none", panel_name(panel));
}

void watch(DeviceEvents& events, std::size_t seen, double seconds) {
  std::printf("watching for %.0f s (Ctrl-C ends)...\n", seconds);
  const auto until = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  while (std::chrono::steady_clock::now() < until && !interrupted()) {
    const std::vector<DeviceEvent> all = events.wait_for(seen + 1, std::chrono::milliseconds(200));
    for (; seen < all.size(); ++seen) {
      const DeviceEvent& event = all[seen];
      const char* what = event.kind == DeviceEvent::Kind::Added     ? "added  "
                         : event.kind == DeviceEvent::Kind::Removed ? "removed"
                                                                    : "updated";
      std::printf("%s %s%s%s\n", what, narrow(event.id).c_str(), event.name.empty() ? "" : "  ",
                  narrow(event.name).c_str());
    }
  }
}

}  // namespace

int run_list(const Options& options) {
  Library library;
  DeviceEvents events;
  const std::vector<DeviceEvent> initial = initial_events(events);
  const std::vector<Camera> cameras = cameras_added(initial);

  std::printf("%zu camera%s\n", cameras.size(), cameras.size() == 1 ? "" : "s");
  for (std::size_t i = 0; i < cameras.size(); ++i) describe(cameras[i], i + 1, options);
  describe_system();
  if (options.watch_s > 0) watch(events, initial.size(), options.watch_s);
  return 0;
}

}  // namespace vexcap::tool
