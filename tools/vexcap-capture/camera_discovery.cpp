#include "camera_discovery.h"

#include "call_watchdog.h"
#include "tool_error.h"
#include "wide_text.h"

namespace vexcap::tool {
namespace {

// Present cameras are reported at once on registration; a real system may take a moment.
constexpr std::chrono::milliseconds kFirstCameraLimit(1500);
constexpr std::chrono::milliseconds kQuietAfterLast(250);

}  // namespace

DeviceEvents::DeviceEvents() {
  const vexcap_device_callbacks callbacks{&DeviceEvents::on_added, &DeviceEvents::on_removed,
                                          &DeviceEvents::on_updated};
  check_call("vexcap_regiester_for_device_callbacks", guarded("vexcap_regiester_for_device_callbacks", [&] {
               return vexcap_regiester_for_device_callbacks(&subscription_, &callbacks, this);
             }));
}

DeviceEvents::~DeviceEvents() {
  guarded("vexcap_unregiester_device_callbacks",
          [this] { return vexcap_unregiester_device_callbacks(subscription_); });
}

int DeviceEvents::on_added(const wchar_t* id, const wchar_t* name, void* context, vexcap_device_subscription*) {
  static_cast<DeviceEvents*>(context)->add({DeviceEvent::Kind::Added, id ? id : L"", name ? name : L""});
  return 0;
}

int DeviceEvents::on_removed(const wchar_t* id, void* context, vexcap_device_subscription*) {
  static_cast<DeviceEvents*>(context)->add({DeviceEvent::Kind::Removed, id ? id : L"", L""});
  return 0;
}

int DeviceEvents::on_updated(const wchar_t* id, void* context, vexcap_device_subscription*) {
  static_cast<DeviceEvents*>(context)->add({DeviceEvent::Kind::Updated, id ? id : L"", L""});
  return 0;
}

void DeviceEvents::add(DeviceEvent event) {
  std::lock_guard<std::mutex> lock(mutex_);
  events_.push_back(std::move(event));
  changed_.notify_all();
}

std::vector<DeviceEvent> DeviceEvents::wait_for(std::size_t count, std::chrono::milliseconds limit) {
  std::unique_lock<std::mutex> lock(mutex_);
  changed_.wait_for(lock, limit, [&] { return events_.size() >= count; });
  return events_;
}

std::vector<DeviceEvent> DeviceEvents::settled(std::chrono::milliseconds quiet,
                                               std::chrono::milliseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  std::unique_lock<std::mutex> lock(mutex_);
  for (;;) {
    const std::size_t seen = events_.size();
    const auto until = std::min(deadline, std::chrono::steady_clock::now() + quiet);
    const bool more = changed_.wait_until(lock, until, [&] { return events_.size() > seen; });
    if (!more || std::chrono::steady_clock::now() >= deadline) return events_;
  }
}

std::vector<DeviceEvent> initial_events(DeviceEvents& events) {
  if (events.wait_for(1, kFirstCameraLimit).empty()) return {};
  return events.settled(kQuietAfterLast, kFirstCameraLimit);
}

std::vector<Camera> cameras_added(const std::vector<DeviceEvent>& events) {
  std::vector<Camera> cameras;
  for (const DeviceEvent& event : events)
    if (event.kind == DeviceEvent::Kind::Added) cameras.push_back({event.id, event.name});
  return cameras;
}

std::optional<Capabilities> capabilities_of(const std::wstring& camera_id) {
  std::uint8_t flags[VEXCAP_CAPABILITY_COUNT] = {};
  const int result = guarded("vexcap_get_device_capabilities",
                             [&] { return vexcap_get_device_capabilities(camera_id.c_str(), flags); });
  if (result != VEXCAP_OK) return std::nullopt;
  return Capabilities{flags[VEXCAP_CAPABILITY_COLOR] == 1, flags[VEXCAP_CAPABILITY_INFRARED] == 1,
                      flags[VEXCAP_CAPABILITY_DEPTH] == 1, flags[VEXCAP_CAPABILITY_OTHER] == 1};
}

Camera choose_camera(const CameraChoice& choice) {
  if (!choice.id) {
    DeviceEvents events;
    const std::vector<Camera> cameras = cameras_added(initial_events(events));
    if (cameras.empty()) throw ToolError("no camera found (the library's device callbacks reported none)");
    const std::size_t number = choice.number.value_or(1);
    if (number > cameras.size()) {
      throw ToolError("--camera " + std::to_string(number) + ": " + std::to_string(cameras.size()) + " camera" +
                      (cameras.size() == 1 ? "" : "s") + " present; `vexcap-capture list` numbers them");
    }
    return cameras[number - 1];
  }
  Camera camera{widen(*choice.id), L""};
  std::uint8_t flags[VEXCAP_CAPABILITY_COUNT] = {};
  check_call("vexcap_get_device_capabilities",
             guarded("vexcap_get_device_capabilities",
                     [&] { return vexcap_get_device_capabilities(camera.id.c_str(), flags); }),
             "no camera has this id; `vexcap-capture list` shows the ids of the cameras present");
  return camera;
}

std::string kinds_text(const Capabilities& capabilities) {
  std::string text;
  const auto add = [&](bool present, const char* name) {
    if (present) text += (text.empty() ? "" : ", ") + std::string(name);
  };
  add(capabilities.infrared, "infrared");
  add(capabilities.color, "colour");
  add(capabilities.depth, "depth");
  add(capabilities.other, "other");
  return text.empty() ? "none" : text;
}

}  // namespace vexcap::tool
