#include "platform/virtual/world.h"

#include <algorithm>
#include <new>

#include "platform/virtual/known_ids.h"

namespace vexcap::virtual_camera {

using platform::ExclusiveControlStatus;
using platform::PlatformError;
using platform::SharingMode;

platform::DeviceInformation device_information_of(const GroupModel& group) {
  platform::DeviceInformation info;
  info.id = group.id;
  info.name = group.display_name;
  info.is_enabled = group.enabled;
  info.kind = platform::DeviceInformationKind::DeviceInterface;
  return info;
}

World::World() { use_scenario(default_scenario()); }

World::~World() {
  std::lock_guard lock(mutex_);
  closing_ = true;
  released_.notify_all();
}

void World::use_scenario(Scenario scenario) {
  std::lock_guard lock(mutex_);
  for (auto& group : groups_) group->removed = true;  // objects still holding them go quiet
  groups_.clear();
  for (auto& model : scenario.groups) groups_.push_back(std::make_shared<GroupState>(GroupState{std::move(model), false}));
  clock_ = std::make_shared<Clock>(scenario.clock);
  // A new system: what released captures left lingering is gone with the old one.
  std::erase_if(sessions_, [](const SessionEntry& entry) { return entry.lingers_until.has_value(); });
}

std::shared_ptr<Clock> World::clock() {
  std::lock_guard lock(mutex_);
  return clock_;
}

std::vector<std::shared_ptr<GroupState>> World::groups() {
  std::lock_guard lock(mutex_);
  return groups_;
}

std::shared_ptr<GroupState> World::find_group(const std::wstring& id) {
  std::lock_guard lock(mutex_);
  for (auto& group : groups_)
    if (group->model.id == id) return group;
  return nullptr;
}

bool World::edit_group(const std::wstring& id, const std::function<void(GroupModel&)>& edit) {
  std::lock_guard lock(mutex_);
  for (auto& group : groups_)
    if (group->model.id == id) return edit(group->model), true;
  return false;
}

std::optional<GroupModel> World::group_model(const std::wstring& id) {
  std::lock_guard lock(mutex_);
  for (auto& group : groups_)
    if (group->model.id == id) return group->model;
  return std::nullopt;
}

// ---- Devices ---------------------------------------------------------------------------------

void World::add_group(GroupModel model) {
  std::vector<std::shared_ptr<WatcherSink>> keep;
  std::lock_guard lock(mutex_);
  auto info = device_information_of(model);
  groups_.push_back(std::make_shared<GroupState>(GroupState{std::move(model), false}));
  keep = live_watchers();
  for (auto& watcher : keep) watcher->post_added(info);
}

void World::remove_group(const std::wstring& id) {
  std::vector<std::shared_ptr<WatcherSink>> keep_watchers;
  std::vector<std::shared_ptr<SessionSink>> keep_sessions;
  std::lock_guard lock(mutex_);
  auto it = std::find_if(groups_.begin(), groups_.end(), [&](auto& g) { return g->model.id == id; });
  if (it == groups_.end()) return;
  auto group = *it;
  groups_.erase(it);
  group->removed = true;
  keep_watchers = live_watchers();
  for (auto& watcher : keep_watchers) watcher->post_removed(id);
  fail_sessions_of(group.get(), ids::kDeviceInvalidated, L"The video recording device is no longer present.",
                   keep_sessions);
}

void World::set_group_enabled(const std::wstring& id, bool enabled) {
  std::vector<std::shared_ptr<WatcherSink>> keep_watchers;
  std::vector<std::shared_ptr<SessionSink>> keep_sessions;
  std::lock_guard lock(mutex_);
  auto it = std::find_if(groups_.begin(), groups_.end(), [&](auto& g) { return g->model.id == id; });
  if (it == groups_.end() || (*it)->model.enabled == enabled) return;
  (*it)->model.enabled = enabled;
  keep_watchers = live_watchers();
  for (auto& watcher : keep_watchers) watcher->post_updated(id);
  if (!enabled)
    fail_sessions_of(it->get(), ids::kDeviceInvalidated, L"The video recording device is no longer present.",
                     keep_sessions);
}

void World::rename_group(const std::wstring& id, std::wstring display_name) {
  std::vector<std::shared_ptr<WatcherSink>> keep;
  std::lock_guard lock(mutex_);
  for (auto& group : groups_) {
    if (group->model.id != id) continue;
    group->model.display_name = std::move(display_name);
    keep = live_watchers();
    for (auto& watcher : keep) watcher->post_updated(id);
    return;
  }
}

// ---- Sessions --------------------------------------------------------------------------------

void World::end_lingering_sessions() {
  const auto now = std::chrono::steady_clock::now();
  std::erase_if(sessions_, [&](const SessionEntry& entry) { return entry.lingers_until && *entry.lingers_until <= now; });
}

std::vector<std::shared_ptr<SessionSink>> World::sessions_of(const GroupState* group, const SessionSink* except) {
  std::vector<std::shared_ptr<SessionSink>> result;
  for (auto& entry : sessions_) {
    if ((group && entry.group.get() != group) || entry.key == except) continue;
    if (auto sink = entry.sink.lock()) result.push_back(std::move(sink));
  }
  return result;
}

void World::fail_sessions_of(const GroupState* group, hresult code, const std::wstring& message,
                             std::vector<std::shared_ptr<SessionSink>>& keep) {
  keep = sessions_of(group, nullptr);
  for (auto& session : keep) session->post_failed({code, message});
}

void World::open_session(const std::shared_ptr<SessionSink>& session, const std::shared_ptr<GroupState>& group,
                         SharingMode mode) {
  std::lock_guard lock(mutex_);
  end_lingering_sessions();
  if (!camera_access_allowed_) throw PlatformError(HR_ACCESSDENIED, L"Access is denied.");
  if (group->removed || !group->model.enabled)
    throw PlatformError(ids::kDeviceInvalidated, L"The video recording device is no longer present.");
  if (mode == SharingMode::ExclusiveControl && exclusive_held_elsewhere(*group))
    throw PlatformError(ids::kHardwareInUse,
                        L"The hardware MFT failed to start streaming due to lack of hardware resources.");
  sessions_.push_back({session, session.get(), group, mode, std::nullopt});
}

void World::close_session(const SessionSink* session) {
  std::lock_guard lock(mutex_);
  auto it = std::find_if(sessions_.begin(), sessions_.end(),
                         [&](auto& e) { return e.key == session && !e.lingers_until; });
  if (it != sessions_.end()) sessions_.erase(it);
}

void World::release_session(const SessionSink* session) {
  std::lock_guard lock(mutex_);
  end_lingering_sessions();
  for (auto& entry : sessions_)
    if (entry.key == session && !entry.lingers_until) entry.lingers_until = std::chrono::steady_clock::now() + kReleaseLinger;
}

void World::set_camera_access_allowed(bool allowed) {
  std::lock_guard lock(mutex_);
  camera_access_allowed_ = allowed;
}

hresult World::other_app_open_exclusive(const std::wstring& group_id) {
  {
    std::lock_guard lock(mutex_);
    end_lingering_sessions();
    auto group = std::find_if(groups_.begin(), groups_.end(), [&](auto& g) { return g->model.id == group_id; });
    if (group == groups_.end()) return ids::kDeviceInvalidated;
    for (const auto& entry : sessions_)
      if (entry.group == *group && entry.mode == SharingMode::ExclusiveControl) return ids::kHardwareInUse;
  }
  set_held_by_other_app(group_id, true);
  return HR_OK;
}

void World::set_held_by_other_app(const std::wstring& group_id, bool held) {
  std::vector<std::shared_ptr<SessionSink>> keep;
  std::lock_guard lock(mutex_);
  auto it = std::find_if(groups_.begin(), groups_.end(), [&](auto& g) { return g->model.id == group_id; });
  if (it == groups_.end() || (*it)->held_by_other_app == held) return;
  GroupState& group = **it;
  group.held_by_other_app = held;
  const auto status = held ? ExclusiveControlStatus::SharedReadOnlyAvailable : ExclusiveControlStatus::ExclusiveControlAvailable;
  for (auto& entry : sessions_) {
    auto sink = entry.sink.lock();
    if (!sink || entry.group.get() != &group) continue;
    sink->post_exclusive_control_changed({group_id, status});
    if (held && entry.mode == SharingMode::ExclusiveControl)
      sink->post_failed({ids::kPreempted, L"The video recording device was preempted by another immersive application."});
    keep.push_back(std::move(sink));  // released after unlocking
  }
}

int World::session_count(const std::wstring& group_id, std::optional<SharingMode> mode) {
  std::lock_guard lock(mutex_);
  end_lingering_sessions();
  return int(std::count_if(sessions_.begin(), sessions_.end(), [&](const SessionEntry& e) {
    return e.group->model.id == group_id && (!mode || e.mode == *mode);
  }));
}

int World::open_session_count() {
  std::lock_guard lock(mutex_);
  end_lingering_sessions();
  return int(sessions_.size());
}

void World::raise_failed(hresult code, const std::wstring& message, const std::optional<std::wstring>& group_id) {
  std::vector<std::shared_ptr<SessionSink>> keep;
  std::lock_guard lock(mutex_);
  for (auto& entry : sessions_) {
    if (group_id && entry.group->model.id != *group_id) continue;
    if (auto sink = entry.sink.lock()) {
      sink->post_failed({code, message});
      keep.push_back(std::move(sink));
    }
  }
}

// ---- Watchers --------------------------------------------------------------------------------

std::vector<std::shared_ptr<WatcherSink>> World::live_watchers() {
  std::vector<std::shared_ptr<WatcherSink>> result;
  for (auto& [weak, key] : watchers_)
    if (auto watcher = weak.lock()) result.push_back(std::move(watcher));
  return result;
}

void World::start_watcher(const std::shared_ptr<WatcherSink>& watcher) {
  std::lock_guard lock(mutex_);
  watchers_.emplace_back(watcher, watcher.get());
  for (auto& group : groups_) watcher->post_added(device_information_of(group->model));
}

void World::stop_watcher(const WatcherSink* watcher) {
  std::lock_guard lock(mutex_);
  std::erase_if(watchers_, [&](auto& entry) { return entry.second == watcher; });
}

// ---- Faults ----------------------------------------------------------------------------------

void World::set_call_fault(PlatformCall call, CallFault fault) {
  std::lock_guard lock(mutex_);
  faults_[call] = fault;
}

void World::clear_faults() {
  std::lock_guard lock(mutex_);
  faults_.clear();
  frames_stopped_ = false;
  unsupported_frames_ = false;
  ++release_generation_;
  released_.notify_all();
}

void World::release_slow_calls() {
  std::lock_guard lock(mutex_);
  ++release_generation_;
  released_.notify_all();
}

bool World::wait_for_slow_call(std::chrono::milliseconds limit) {
  std::unique_lock lock(mutex_);
  return released_.wait_for(lock, limit, [&] { return delayed_calls_ > 0; });
}

hresult World::enter_call(PlatformCall call) {
  std::unique_lock lock(mutex_);
  auto it = faults_.find(call);
  if (it == faults_.end()) return HR_OK;
  CallFault fault = it->second;
  if (fault.delay.count() > 0) {
    auto generation = release_generation_;
    ++delayed_calls_;
    released_.notify_all();
    released_.wait_for(lock, fault.delay, [&] { return closing_ || release_generation_ != generation; });
    --delayed_calls_;
  }
  if (fault.out_of_memory) throw std::bad_alloc();
  return fault.result;
}

void World::enter_call_or_throw(PlatformCall call) {
  hresult result = enter_call(call);
  if (failed(result)) throw PlatformError(result, L"The virtual camera failed this call on demand.");
}

void World::set_frames_stopped(bool stopped) {
  std::lock_guard lock(mutex_);
  frames_stopped_ = stopped;
}

void World::set_unsupported_frames(bool unsupported) {
  std::lock_guard lock(mutex_);
  unsupported_frames_ = unsupported;
}

bool World::frames_stopped() { return frames_stopped_; }
bool World::unsupported_frames() { return unsupported_frames_; }

void World::set_recording(bool on) {
  std::lock_guard lock(mutex_);
  recording_ = on;
}

Records World::copy_records() {
  std::lock_guard lock(mutex_);
  return records_;
}

void World::clear_records() {
  std::lock_guard lock(mutex_);
  records_ = Records{};
}

}  // namespace vexcap::virtual_camera
