// Choosing and steering the process's virtual camera. This header exists only in builds with
// the virtual platform: a host program or test picks a scenario before vexcap_init, changes
// devices, drives time and injects faults while the library runs, and inspects what the
// library asked of the camera. See docs/virtual-camera.md.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "platform/virtual/camera_api.h"
#include "platform/virtual/records.h"
#include "platform/virtual/scenario.h"
#include "platform/virtual/virtual_platform.h"
#include "platform/virtual/world.h"

namespace vexcap::virtual_camera {

// ---- Scenario ----
VEXCAP_VIRTUAL_CAMERA_API void use_scenario(Scenario scenario);  // replaces every device; call before opening any
// Default scenario, no faults, no records, runtime results S_OK and its counters 0.
VEXCAP_VIRTUAL_CAMERA_API void reset();
VEXCAP_VIRTUAL_CAMERA_API VirtualRuntime& runtime();

// ---- Devices while running (device watchers hear of these) ----
VEXCAP_VIRTUAL_CAMERA_API void add_group(GroupModel group);
VEXCAP_VIRTUAL_CAMERA_API void remove_group(const std::wstring& group_id);  // open sessions on it fail
VEXCAP_VIRTUAL_CAMERA_API void set_group_enabled(const std::wstring& group_id, bool enabled);  // disabling fails sessions
VEXCAP_VIRTUAL_CAMERA_API void rename_group(const std::wstring& group_id, std::wstring display_name);
// Another application takes exclusive control of a group (this process's exclusive sessions are
// preempted and new ones refused) or gives it back; every session hears the status change.
VEXCAP_VIRTUAL_CAMERA_API void set_held_by_other_app(const std::wstring& group_id, bool held);

// ---- Live state (no events): edit or read a present group's sources and driver state ----
VEXCAP_VIRTUAL_CAMERA_API bool edit_source(const std::wstring& group_id, std::size_t index, const std::function<void(SourceModel&)>& edit);
VEXCAP_VIRTUAL_CAMERA_API bool edit_ks(const std::wstring& group_id, const std::function<void(KsDeviceModel&)>& edit);
VEXCAP_VIRTUAL_CAMERA_API std::optional<GroupModel> group_state(const std::wstring& group_id);
// Sessions initialized on a group, of one sharing mode or of any.
VEXCAP_VIRTUAL_CAMERA_API int session_count(const std::wstring& group_id, std::optional<platform::SharingMode> mode = std::nullopt);

// ---- Time (ClockMode::Manual) ----
// Moves frame time on and returns once every running reader has raised the frames now due.
VEXCAP_VIRTUAL_CAMERA_API void advance_time(std::chrono::nanoseconds step);
VEXCAP_VIRTUAL_CAMERA_API std::int64_t now();  // frame time, 100 ns units

// ---- Faults ----
VEXCAP_VIRTUAL_CAMERA_API void set_call_fault(PlatformCall call, CallFault fault);
VEXCAP_VIRTUAL_CAMERA_API void release_slow_calls();  // ends every delay now running
VEXCAP_VIRTUAL_CAMERA_API bool wait_for_slow_call(std::chrono::milliseconds limit);  // true once a call is being delayed
VEXCAP_VIRTUAL_CAMERA_API void clear_faults();
VEXCAP_VIRTUAL_CAMERA_API void raise_capture_failed(hresult code, const std::wstring& message = L"The capture device failed.",
                          const std::optional<std::wstring>& group_id = std::nullopt);
VEXCAP_VIRTUAL_CAMERA_API void set_frames_stopped(bool stopped);          // readers keep running but produce nothing
VEXCAP_VIRTUAL_CAMERA_API void set_unsupported_frames(bool unsupported);  // frames arrive as undecodable buffers

// ---- Records ----
VEXCAP_VIRTUAL_CAMERA_API Records records();
VEXCAP_VIRTUAL_CAMERA_API void clear_records();

}  // namespace vexcap::virtual_camera
