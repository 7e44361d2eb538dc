// Which cameras the system has: the library's device callbacks report every present camera on
// registration and later arrivals, removals and updates; the discovery queries describe one.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "options.h"
#include "vexcap/vexcap.h"

namespace vexcap::tool {

struct DeviceEvent {
  enum class Kind { Added, Removed, Updated } kind;
  std::wstring id;
  std::wstring name;  // Added only
};

// A device-callbacks registration that collects what the library reports.
class DeviceEvents {
 public:
  DeviceEvents();   // vexcap_regiester_for_device_callbacks
  ~DeviceEvents();  // vexcap_unregiester_device_callbacks
  DeviceEvents(const DeviceEvents&) = delete;
  DeviceEvents& operator=(const DeviceEvents&) = delete;

  // Waits until `count` events have come or `limit` has passed; the events so far.
  std::vector<DeviceEvent> wait_for(std::size_t count, std::chrono::milliseconds limit);
  // The events so far once none came for `quiet` (or `limit` passed).
  std::vector<DeviceEvent> settled(std::chrono::milliseconds quiet, std::chrono::milliseconds limit);

 private:
  static int on_added(const wchar_t* id, const wchar_t* name, void* context, vexcap_device_subscription*);
  static int on_removed(const wchar_t* id, void* context, vexcap_device_subscription*);
  static int on_updated(const wchar_t* id, void* context, vexcap_device_subscription*);
  void add(DeviceEvent event);

  std::mutex mutex_;  // guards events_
  std::condition_variable changed_;
  std::vector<DeviceEvent> events_;
  vexcap_device_subscription* subscription_ = nullptr;
};

struct Camera {
  std::wstring id;
  std::wstring name;
};

// What a fresh registration reports for the cameras present, once it has settled.
std::vector<DeviceEvent> initial_events(DeviceEvents& events);
// The cameras that events added, in the order the library reported them.
std::vector<Camera> cameras_added(const std::vector<DeviceEvent>& events);

struct Capabilities {
  bool color = false;
  bool infrared = false;
  bool depth = false;
  bool other = false;
};

// "infrared, colour"
std::string kinds_text(const Capabilities& capabilities);

// vexcap_get_device_capabilities; nullopt when no camera has this id.
std::optional<Capabilities> capabilities_of(const std::wstring& camera_id);

// The camera --camera names (by id, or by its number in the list of cameras present), or the
// first present one; throws when there is none. An id is checked with a discovery query first,
// since opening an unknown id never returns.
Camera choose_camera(const CameraChoice& choice);

}  // namespace vexcap::tool
