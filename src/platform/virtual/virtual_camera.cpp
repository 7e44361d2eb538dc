#include "platform/virtual/virtual_camera.h"

namespace vexcap::virtual_camera {

namespace {
World& world() { return virtual_platform().world(); }
}  // namespace

void use_scenario(Scenario scenario) { world().use_scenario(std::move(scenario)); }

void reset() {
  world().use_scenario(default_scenario());
  world().clear_faults();
  world().set_recording(false);
  world().clear_records();
  world().set_camera_access_allowed(true);
  runtime().reset();
}

VirtualRuntime& runtime() { return virtual_platform().runtime(); }

void add_group(GroupModel group) { world().add_group(std::move(group)); }
void remove_group(const std::wstring& group_id) { world().remove_group(group_id); }
void set_group_enabled(const std::wstring& group_id, bool enabled) { world().set_group_enabled(group_id, enabled); }
void rename_group(const std::wstring& group_id, std::wstring display_name) {
  world().rename_group(group_id, std::move(display_name));
}

void set_held_by_other_app(const std::wstring& group_id, bool held) { world().set_held_by_other_app(group_id, held); }
hresult other_app_open_exclusive(const std::wstring& group_id) { return world().other_app_open_exclusive(group_id); }
void set_camera_access_allowed(bool allowed) { world().set_camera_access_allowed(allowed); }

bool edit_source(const std::wstring& group_id, std::size_t index, const std::function<void(SourceModel&)>& edit) {
  bool found = false;
  world().edit_group(group_id, [&](GroupModel& group) {
    if (index >= group.sources.size()) return;
    edit(group.sources[index]);
    found = true;
  });
  return found;
}

bool edit_ks(const std::wstring& group_id, const std::function<void(KsDeviceModel&)>& edit) {
  return world().edit_group(group_id, [&](GroupModel& group) { edit(group.ks); });
}

std::optional<GroupModel> group_state(const std::wstring& group_id) { return world().group_model(group_id); }

int session_count(const std::wstring& group_id, std::optional<platform::SharingMode> mode) {
  return world().session_count(group_id, mode);
}

void advance_time(std::chrono::nanoseconds step) { world().clock()->advance(step.count() / 100); }
std::int64_t now() { return world().clock()->now(); }

void set_call_fault(PlatformCall call, CallFault fault) { world().set_call_fault(call, fault); }
void release_slow_calls() { world().release_slow_calls(); }
bool wait_for_slow_call(std::chrono::milliseconds limit) { return world().wait_for_slow_call(limit); }
void clear_faults() { world().clear_faults(); }
void raise_capture_failed(hresult code, const std::wstring& message, const std::optional<std::wstring>& group_id) {
  world().raise_failed(code, message, group_id);
}
void set_frames_stopped(bool stopped) { world().set_frames_stopped(stopped); }
void set_unsupported_frames(bool unsupported) { world().set_unsupported_frames(unsupported); }

void set_recording(bool on) { world().set_recording(on); }
Records records() { return world().copy_records(); }
void clear_records() { world().clear_records(); }

}  // namespace vexcap::virtual_camera
