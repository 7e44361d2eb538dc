// The virtual camera system: the live scenario, capture sessions and their sharing rules,
// device watchers, faults on demand and the records of what was asked. Every platform object
// of the virtual camera holds the World it came from, so it stays valid as long as they do.
//
// Locking: World::mutex() guards all live state (groups, sources, KS devices, sessions,
// watchers, faults, records). It is never held while a handler of the library runs: events
// are posted to the event threads of sessions and watchers. Lock order: World -> Clock,
// World -> EventThread.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/port.h"
#include "platform/virtual/clock.h"
#include "platform/virtual/records.h"
#include "platform/virtual/scenario.h"

namespace vexcap::virtual_camera {

// Platform calls whose result and duration a test can choose.
enum class PlatformCall {
  FindAllSourceGroups,
  Initialize,
  CreateFrameReader,
  StartReader,
  SetFormat,
  GetProperty,
  SetProperty,
  SetControl,
  EnumDeviceSources,
  CreateDeviceSource,
  KsProperty,
  StartWatcher,
};

struct CallFault {
  hresult result = HR_OK;                 // a failure is thrown (or returned) after the delay
  std::chrono::milliseconds delay{0};     // real time; release_slow_calls() cuts it short
  bool out_of_memory = false;             // the call throws std::bad_alloc after the delay
};

// The live state of one source group. Removed groups stay valid for the objects that hold them.
struct GroupState {
  GroupModel model;
  bool removed = false;
  bool held_by_other_app = false;  // another application has exclusive control
};

// What a capture session hears from the system; called with the World lock held, so it only posts.
class SessionSink {
 public:
  virtual ~SessionSink() = default;
  virtual void post_exclusive_control_changed(const platform::ExclusiveControlChange& change) = 0;
  virtual void post_failed(const platform::CaptureFailure& failure) = 0;
};

class WatcherSink {
 public:
  virtual ~WatcherSink() = default;
  virtual void post_added(const platform::DeviceInformation& info) = 0;
  virtual void post_removed(const std::wstring& id) = 0;
  virtual void post_updated(const std::wstring& id) = 0;
};

class World {
 public:
  World();
  ~World();

  std::mutex& mutex() { return mutex_; }

  // ---- Scenario ----
  void use_scenario(Scenario scenario);
  std::shared_ptr<Clock> clock();
  std::vector<std::shared_ptr<GroupState>> groups();  // present groups, scenario order
  std::shared_ptr<GroupState> find_group(const std::wstring& id);
  // Changes a present group's live state in place, without events; false when no such group.
  // `edit` runs under the World lock and must not call back into the virtual camera.
  bool edit_group(const std::wstring& id, const std::function<void(GroupModel&)>& edit);
  std::optional<GroupModel> group_model(const std::wstring& id);

  // ---- Devices coming, going and changing (watchers hear of it) ----
  void add_group(GroupModel group);
  void remove_group(const std::wstring& id);
  void set_group_enabled(const std::wstring& id, bool enabled);
  void rename_group(const std::wstring& id, std::wstring display_name);

  // ---- Sessions ----
  // Registers an initialized session; throws PlatformError when the camera privacy setting
  // denies access or the sharing rules refuse it.
  void open_session(const std::shared_ptr<SessionSink>& session, const std::shared_ptr<GroupState>& group,
                    platform::SharingMode mode);
  // Ends a session at once (MediaCapture closed or shut down).
  void close_session(const SessionSink* session);
  // A capture released without being closed: its session lingers for kReleaseLinger, as the
  // platform tears an unclosed pipeline down on its own threads some time later.
  void release_session(const SessionSink* session);
  static constexpr std::chrono::milliseconds kReleaseLinger{200};
  // The camera privacy setting: while off, every session's initialization is denied.
  void set_camera_access_allowed(bool allowed);
  // Another application asks for exclusive control: refused with 0xC00D3704 while a session of
  // this process holds it (a lingering one included), else granted as set_held_by_other_app.
  hresult other_app_open_exclusive(const std::wstring& group_id);
  // Exclusive control belongs to an application: this process's sessions share it, so only
  // another application can hold it against them. Caller holds mutex().
  bool exclusive_held_elsewhere(const GroupState& group) const { return group.held_by_other_app; }
  // Another application takes exclusive control (this process's exclusive sessions are
  // preempted and fail) or gives it back; the group's sessions hear the status change.
  void set_held_by_other_app(const std::wstring& group_id, bool held);
  int session_count(const std::wstring& group_id, std::optional<platform::SharingMode> mode);
  int open_session_count();  // of every group, lingering ones included
  void raise_failed(hresult code, const std::wstring& message, const std::optional<std::wstring>& group_id);

  // ---- Watchers ----
  // Registers and posts Added for every present group, in order, before any later event.
  void start_watcher(const std::shared_ptr<WatcherSink>& watcher);
  void stop_watcher(const WatcherSink* watcher);

  // ---- Faults ----
  void set_call_fault(PlatformCall call, CallFault fault);
  void clear_faults();
  void release_slow_calls();
  // Waits (at most `limit`) until some call is held by its delay; true when one is.
  bool wait_for_slow_call(std::chrono::milliseconds limit);
  // Waits out the call's delay and returns its chosen result. Caller does not hold mutex().
  hresult enter_call(PlatformCall call);
  // As enter_call, throwing PlatformError with `message` on a failure.
  void enter_call_or_throw(PlatformCall call);
  void set_frames_stopped(bool stopped);
  void set_unsupported_frames(bool unsupported);
  bool frames_stopped();       // caller holds mutex()
  bool unsupported_frames();   // caller holds mutex()

  // ---- Records ----
  // Requests are recorded only while a test asks for them (off by default).
  void set_recording(bool on);
  // Runs `add` on the records when recording; caller holds mutex().
  template <typename Add>
  void record(Add add) {
    if (recording_) add(records_);
  }
  Records copy_records();
  void clear_records();

 private:
  struct SessionEntry {
    std::weak_ptr<SessionSink> sink;
    const SessionSink* key;
    std::shared_ptr<GroupState> group;
    platform::SharingMode mode;
    std::optional<std::chrono::steady_clock::time_point> lingers_until;  // set once released
  };

  void end_lingering_sessions();  // caller holds mutex_

  // Sessions of a group, other than `except`, kept alive in `keep` (released after unlocking).
  std::vector<std::shared_ptr<SessionSink>> sessions_of(const GroupState* group, const SessionSink* except);
  std::vector<std::shared_ptr<WatcherSink>> live_watchers();
  void fail_sessions_of(const GroupState* group, hresult code, const std::wstring& message,
                        std::vector<std::shared_ptr<SessionSink>>& keep);

  std::mutex mutex_;
  std::condition_variable released_;  // wakes delayed calls on release_slow_calls
  std::uint64_t release_generation_ = 0;
  int delayed_calls_ = 0;
  std::shared_ptr<Clock> clock_;
  std::vector<std::shared_ptr<GroupState>> groups_;
  std::vector<SessionEntry> sessions_;
  std::vector<std::pair<std::weak_ptr<WatcherSink>, const WatcherSink*>> watchers_;
  std::map<PlatformCall, CallFault> faults_;
  bool frames_stopped_ = false;
  bool unsupported_frames_ = false;
  bool closing_ = false;
  bool camera_access_allowed_ = true;
  bool recording_ = false;
  Records records_;
};

platform::DeviceInformation device_information_of(const GroupModel& group);

}  // namespace vexcap::virtual_camera
