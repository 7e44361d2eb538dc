#include "stress/host_calls.h"

#include <chrono>
#include <cstdlib>
#include <thread>
#include <functional>
#include <mutex>
#include <optional>
#include <mutex>
#include <shared_mutex>  // std::shared_lock
#include <utility>

#include "stress/timed_call.h"

namespace vexcap::stress {

namespace {

StressState* g_state = nullptr;  // the callbacks' view of the run (one run per process)

std::uint32_t pick(std::mt19937_64& rng, std::uint32_t below) {
  return static_cast<std::uint32_t>(rng() % below);
}
bool chance(std::mt19937_64& rng, std::uint32_t percent) { return pick(rng, 100) < percent; }

std::mt19937_64& callback_rng() {
  thread_local std::mt19937_64 rng(std::random_device{}());
  return rng;
}

// ---- Device slots ------------------------------------------------------------------------

// Called with the slot locked exclusively, once its device was closed.
void forget_device(DeviceSlot& slot) {
  slot.open_us.fetch_add(now_us() - slot.opened_us);
  slot.device = nullptr;
}

// ---- Frame callbacks ---------------------------------------------------------------------

void give_back(StressState& state, vexcap_frame* frame) {
  state.frames.returning(frame);
  timed_call(state, "vexcap_return_frame", {0}, [&] { return vexcap_return_frame(frame); });
}

// The context names the stream, and so the slot whose device streams.
bool on_frame(vexcap_frame* frame, void* context) {
  StressState& state = *g_state;
  state.frames.delivered(frame);
  if (frame->data == nullptr || frame->width == 0 || frame->height == 0) {
    std::fprintf(stderr, "frame without pixels\n");
    state.failed = true;
  }
  StreamTag& stream = *static_cast<StreamTag*>(context);
  stream.frames.fetch_add(1, std::memory_order_relaxed);
  DeviceSlot& slot = *stream.slot;
  std::mt19937_64& rng = callback_rng();
  const std::uint32_t roll = pick(rng, 10000);
  if (roll < 1000) {  // kept and given back later by another thread
    std::lock_guard<std::mutex> lock(state.late_mutex);
    state.late_frames.push_back(frame);
    return true;
  }
  give_back(state, frame);
  if (roll < 1050) {
    state.counters.callbacks_false.fetch_add(1);
    return false;
  }
  if (roll < 1070) {  // stop from inside the callback
    std::shared_lock<SlotLock> lock(slot.lock, std::try_to_lock);
    if (lock.owns_lock() && slot.device != nullptr) {
      state.counters.stops_in_callback.fetch_add(1);
      timed_call(state, "vexcap_stop_streaming", kMappedCodes,
                 [&] { return vexcap_stop_streaming(slot.device); });
    }
  } else if (roll < 1075) {  // close from inside the callback
    std::unique_lock<SlotLock> lock(slot.lock, std::try_to_lock);
    if (lock.owns_lock() && slot.device != nullptr) {
      state.counters.closes_in_callback.fetch_add(1);
      timed_call(state, "vexcap_device_close", kMappedCodes,
                 [&] { return vexcap_device_close(slot.device); });
      forget_device(slot);
      slot.reopen_now = true;
    }
  }
  return true;
}

// ---- Event callbacks ---------------------------------------------------------------------

// A camera that comes back is opened afresh: the devices open on it lost their sessions.
int on_device_added(const wchar_t*, const wchar_t*, void*, vexcap_device_subscription*) {
  g_state->counters.device_events.fetch_add(1);
  for (DeviceSlot& slot : g_state->slots) slot.needs_reopen = true;
  return 0;
}
int on_device_removed(const wchar_t*, void*, vexcap_device_subscription*) {
  g_state->counters.device_events.fetch_add(1);
  return 0;
}
int on_device_updated(const wchar_t*, void*, vexcap_device_subscription*) {
  g_state->counters.device_events.fetch_add(1);
  return 0;
}
const vexcap_device_callbacks kDeviceCallbacks{on_device_added, on_device_removed, on_device_updated};

void on_exclusive_status(const wchar_t*, uint8_t, bool, void*) { g_state->counters.other_events.fetch_add(1); }
void on_rgb_status(bool, void*) { g_state->counters.other_events.fetch_add(1); }
void on_unsupported_format(uint32_t, void*) { g_state->counters.other_events.fetch_add(1); }
void on_rgb_stopped(bool, void*) { g_state->counters.other_events.fetch_add(1); }

// ---- The exports -------------------------------------------------------------------------

struct HostContext {
  StressState& state;
  std::mt19937_64& rng;
  std::mutex& subscription_mutex;
  std::vector<vexcap_device_subscription*>& subscriptions;
};

// A call on a device: the slot's handle (valid), a handle whose slot holds no device (the host's
// stale copy, answered with an error), or null. Gives the slot and result of a valid handle.
template <typename Call>
std::optional<std::pair<DeviceSlot*, int>> on_device(HostContext& host, const char* name, Call call) {
  StressState& state = host.state;
  const std::uint32_t roll = pick(host.rng, 100);
  if (roll < 5) {
    timed_call(state, name, {VEXCAP_E_INVALID_ARG}, [&] { return call(nullptr); });
    return std::nullopt;
  }
  DeviceSlot& slot = state.slots[pick(host.rng, 2)];
  std::shared_lock<SlotLock> lock(slot.lock);
  if (slot.device != nullptr)
    return std::make_pair(&slot, timed_call(state, name, kMappedCodes, [&] { return call(slot.device); }));
  vexcap_device nowhere{slot.mode, 0, 0};  // no device behind it: an error, never a crash
  timed_call(state, name, kMappedCodes, [&] { return call(&nowhere); });
  return std::nullopt;
}

// A start that answers "not in a valid state" on an open device: that client's recovery
// failed (the camera was held elsewhere or gone), and only a new open brings it back.
void note_start(const std::optional<std::pair<DeviceSlot*, int>>& answer) {
  if (answer && answer->second == VEXCAP_E_INVALID_STATE) answer->first->needs_reopen = true;
}

void open_device(StressState& state, DeviceSlot& slot) {
  const vexcap_open_params params{slot.mode, 160, 120};
  vexcap_device* device = nullptr;
  if (timed_call(state, "vexcap_device_open", kMappedCodes, [&] {
        return vexcap_device_open(&device, state.group_id.c_str(), &params);
      }) == 0) {
    slot.device = device;
    slot.opened_us = now_us();
  }
}

void open_or_close(HostContext& host) {
  StressState& state = host.state;
  DeviceSlot& slot = state.slots[pick(host.rng, 2)];
  std::unique_lock<SlotLock> lock(slot.lock);
  if (slot.device == nullptr) {
    open_device(state, slot);
  } else {
    timed_call(state, "vexcap_device_close", kMappedCodes, [&] { return vexcap_device_close(slot.device); });
    forget_device(slot);
  }
}

// Right after a callback closed a device, a host opens its slot again: the close from inside
// the callback is still to run, and must close the device it was asked for, not this one.
void reopen_after_callback_close(HostContext& host) {
  StressState& state = host.state;
  for (DeviceSlot& slot : state.slots) {
    if (!slot.reopen_now.exchange(false)) continue;
    std::unique_lock<SlotLock> lock(slot.lock);
    if (slot.device != nullptr) continue;
    state.counters.reopens_after_callback_close.fetch_add(1);
    open_device(state, slot);
  }
}

// A host opens a closed device again soon, as a capture application does, and opens afresh
// a device whose client can no longer stream.
void reopen_if_closed(HostContext& host) {
  StressState& state = host.state;
  DeviceSlot& slot = state.slots[pick(host.rng, 2)];
  {
    std::shared_lock<SlotLock> look(slot.lock);
    if (slot.device != nullptr && !slot.needs_reopen.load()) return;
  }
  std::unique_lock<SlotLock> lock(slot.lock);
  if (slot.device != nullptr && slot.needs_reopen.exchange(false)) {
    state.counters.reopens.fetch_add(1);
    timed_call(state, "vexcap_device_close", kMappedCodes, [&] { return vexcap_device_close(slot.device); });
    forget_device(slot);
  }
  if (slot.device == nullptr) open_device(state, slot);
}

void discovery(HostContext& host) {
  StressState& state = host.state;
  const bool null = chance(host.rng, 5);
  const std::wstring id = chance(host.rng, 50) ? state.group_id : L"\\\\?\\USB#VID_0000";
  uint8_t bytes[8] = {};
  uint32_t value = 0;
  const std::vector<int> codes = null ? std::vector<int>{VEXCAP_E_INVALID_ARG} : kMappedCodes;
  switch (pick(host.rng, 6)) {
    case 0:
      timed_call(state, "vexcap_get_device_capabilities", codes,
                 [&] { return vexcap_get_device_capabilities(id.c_str(), null ? nullptr : bytes); });
      break;
    case 1:
      timed_call(state, "vexcap_get_device_locations", codes,
                 [&] { return vexcap_get_device_locations(null ? nullptr : L"vid_f00d", bytes); });
      break;
    case 2:
      timed_call(state, "vexcap_get_source_group_type", codes,
                 [&] { return vexcap_get_source_group_type(null ? nullptr : &value); });
      break;
    case 3:
      timed_call(state, "vexcap_get_targeted_location", codes,
                 [&] { return vexcap_get_targeted_location(null ? nullptr : &value); });
      break;
    case 4:
      timed_call(state, "vexcap_is_vidpid_used_by_device", null ? std::vector<int>{0} : std::vector<int>{0, 1},
                 [&] { return vexcap_is_vidpid_used_by_device(id.c_str(), L"VID_F00D", null ? nullptr : L"PID_CAFE"); });
      break;
    default:
      timed_call(state, "vexcap_get_source_group_type_for_vid_pid", codes, [&] {
        return vexcap_get_source_group_type_for_vid_pid(L"VID_F00D", L"PID_CAFE", null ? nullptr : &value);
      });
      break;
  }
}

void device_callbacks(HostContext& host) {
  StressState& state = host.state;
  std::lock_guard<std::mutex> lock(host.subscription_mutex);
  if (host.subscriptions.size() < 2 && chance(host.rng, 60)) {
    vexcap_device_subscription* subscription = nullptr;
    if (timed_call(state, "vexcap_regiester_for_device_callbacks", kMappedCodes, [&] {
          return vexcap_regiester_for_device_callbacks(&subscription, &kDeviceCallbacks, nullptr);
        }) == 0)
      host.subscriptions.push_back(subscription);
  } else if (!host.subscriptions.empty()) {
    vexcap_device_subscription* subscription = host.subscriptions.back();
    host.subscriptions.pop_back();
    timed_call(state, "vexcap_unregiester_device_callbacks", kMappedCodes,
               [&] { return vexcap_unregiester_device_callbacks(subscription); });
  } else {
    timed_call(state, "vexcap_unregiester_device_callbacks", {VEXCAP_E_INVALID_ARG},
               [&] { return vexcap_unregiester_device_callbacks(nullptr); });
  }
}

void streaming(HostContext& host) {
  // Starts outnumber stops, so streams run most of the time.
  const std::uint32_t roll = pick(host.rng, 100);
  const std::uint32_t which = roll < 48 ? 0 : roll < 96 ? 1 : roll < 98 ? 2 : 3;
  const std::uint32_t selector = pick(host.rng, 3);
  // The context is the stream: the slot the device sits in and the client that streams.
  auto context_of = [&](vexcap_device* device, bool exclusive) -> void* {
    if (device == nullptr) return nullptr;
    return &host.state.streams[2 * (device->stream_mode != 0 ? 1 : 0) + (exclusive ? 1 : 0)];
  };
  switch (which) {
    case 0:
      note_start(on_device(host, "vexcap_start_streaming", [&](vexcap_device* d) {
        return vexcap_start_streaming(d, on_frame, context_of(d, false));
      }));
      break;
    case 1:
      note_start(on_device(host, "vexcap_start_streaming_ex", [&](vexcap_device* d) {
        return vexcap_start_streaming_ex(d, on_frame, context_of(d, selector == VEXCAP_STREAM_SELECT_EXCLUSIVE),
                                         selector);
      }));
      break;
    case 2:
      on_device(host, "vexcap_stop_streaming", [&](vexcap_device* d) { return vexcap_stop_streaming(d); });
      break;
    default:
      on_device(host, "vexcap_stop_streaming_ex",
                [&](vexcap_device* d) { return vexcap_stop_streaming_ex(d, selector); });
      break;
  }
}

void controls(HostContext& host) {
  const bool null_out = chance(host.rng, 5);
  std::uint64_t exposure = 0;
  std::uint32_t value = 0;
  const std::int64_t wanted_exposure = static_cast<std::int64_t>(host.rng() % 400000) - 1000;
  const std::uint32_t wanted = pick(host.rng, 3) == 0 ? static_cast<std::uint32_t>(host.rng()) : pick(host.rng, 2000);
  static const std::uint32_t kProperties[] = {1, 2, 5, 9, 16, 17, 18, 19, 20, 21, 22, 0, 99};
  vexcap_property property{kProperties[pick(host.rng, 13)], wanted};
  if (property.id == 5) property.value = VEXCAP_DIAGNOSTIC_LOG_OFF;  // the log stays off: nobody reads it
  if (property.id == 18) property.id = 17;  // switching colour off for good would end the colour load
  // Registering for the RGB status waits, without limit, for face authentication to be disabled.
  if (property.id == 1) property.value = VEXCAP_FACE_AUTH_DISABLED;
  switch (pick(host.rng, 8)) {
    case 0:
      on_device(host, "vexcap_set_exposure", [&](vexcap_device* d) { return vexcap_set_exposure(d, wanted_exposure); });
      break;
    case 1:
      on_device(host, "vexcap_set_iso_speed", [&](vexcap_device* d) { return vexcap_set_iso_speed(d, wanted); });
      break;
    case 2:
      on_device(host, "vexcap_set_led_power", [&](vexcap_device* d) { return vexcap_set_led_power(d, wanted); });
      break;
    case 3:
      on_device(host, "vexcap_get_exposure",
                [&](vexcap_device* d) { return vexcap_get_exposure(d, null_out ? nullptr : &exposure); });
      break;
    case 4:
      on_device(host, "vexcap_get_iso_speed",
                [&](vexcap_device* d) { return vexcap_get_iso_speed(d, null_out ? nullptr : &value); });
      break;
    case 5:
      on_device(host, "vexcap_get_led_power", [&](vexcap_device* d) { return vexcap_get_led_power(d, &value); });
      break;
    case 6:
      on_device(host, "vexcap_set_dev_property", [&](vexcap_device* d) { return vexcap_set_dev_property(d, &property); });
      break;
    default:
      on_device(host, "vexcap_get_dev_property", [&](vexcap_device* d) { return vexcap_get_dev_property(d, &property); });
      break;
  }
}

void events(HostContext& host) {
  const bool registering = chance(host.rng, 50);
  switch (pick(host.rng, 4)) {
    case 0:
      if (registering)
        on_device(host, "vexcap_register_for_excl_ctrl_status_event", [](vexcap_device* d) {
          return vexcap_register_for_excl_ctrl_status_event(d, on_exclusive_status, nullptr);
        });
      else
        on_device(host, "vexcap_unregister_for_excl_ctrl_status_event",
                  [](vexcap_device* d) { return vexcap_unregister_for_excl_ctrl_status_event(d); });
      break;
    case 1:
      if (registering)
        on_device(host, "vexcap_register_for_rgb_status_event", [](vexcap_device* d) {
          return vexcap_register_for_rgb_status_event(d, on_rgb_status, nullptr);
        });
      else
        on_device(host, "vexcap_unregister_for_rgb_status_event",
                  [](vexcap_device* d) { return vexcap_unregister_for_rgb_status_event(d); });
      break;
    case 2:
      if (registering)
        on_device(host, "vexcap_register_for_unsupported_format_status_event", [](vexcap_device* d) {
          return vexcap_register_for_unsupported_format_status_event(d, on_unsupported_format, nullptr);
        });
      else
        on_device(host, "vexcap_unregister_for_unsupported_format_status_event",
                  [](vexcap_device* d) { return vexcap_unregister_for_unsupported_format_status_event(d); });
      break;
    default:
      if (registering)
        on_device(host, "vexcap_register_for_rgb_stopped_event", [](vexcap_device* d) {
          return vexcap_register_for_rgb_stopped_event(d, on_rgb_stopped, nullptr);
        });
      else
        on_device(host, "vexcap_unregister_for_rgb_stopped_event",
                  [](vexcap_device* d) { return vexcap_unregister_for_rgb_stopped_event(d); });
      break;
  }
}

}  // namespace

const std::vector<std::string>& export_names() {
  static const std::vector<std::string> names = {
      "vexcap_init", "vexcap_exit", "vexcap_get_device_capabilities", "vexcap_get_device_locations",
      "vexcap_get_source_group_type", "vexcap_get_targeted_location", "vexcap_is_vidpid_used_by_device",
      "vexcap_get_source_group_type_for_vid_pid", "vexcap_device_open", "vexcap_device_close",
      "vexcap_start_streaming", "vexcap_start_streaming_ex", "vexcap_stop_streaming",
      "vexcap_stop_streaming_ex", "vexcap_return_frame", "vexcap_set_exposure", "vexcap_set_iso_speed",
      "vexcap_set_led_power", "vexcap_get_exposure", "vexcap_get_iso_speed", "vexcap_get_led_power",
      "vexcap_set_dev_property", "vexcap_get_dev_property", "vexcap_regiester_for_device_callbacks",
      "vexcap_unregiester_device_callbacks", "vexcap_register_for_excl_ctrl_status_event",
      "vexcap_unregister_for_excl_ctrl_status_event", "vexcap_register_for_rgb_status_event",
      "vexcap_unregister_for_rgb_status_event", "vexcap_register_for_unsupported_format_status_event",
      "vexcap_unregister_for_unsupported_format_status_event", "vexcap_register_for_rgb_stopped_event",
      "vexcap_unregister_for_rgb_stopped_event"};
  return names;
}

void attach_callbacks(StressState& state) { g_state = &state; }

void exit_or_init(StressState& state, std::mt19937_64& rng) {
  if (chance(rng, 50)) {
    state.counters.exits.fetch_add(1);
    timed_call(state, "vexcap_exit", {0}, [] { return vexcap_exit(); });
  } else {
    state.counters.inits.fetch_add(1);
    timed_call(state, "vexcap_init", {0}, [] { return vexcap_init(); });
  }
}

void run_lifecycle_thread(StressState& state, std::uint64_t seed) {
  std::mt19937_64 rng(seed);
  while (!state.stopping.load()) {
    for (int i = 0, pause = 50 + static_cast<int>(pick(rng, 100)); i < pause && !state.stopping.load(); ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    if (state.stopping.load()) break;
    state.counters.exits.fetch_add(1);
    timed_call(state, "vexcap_exit", {0}, [] { return vexcap_exit(); });
    std::this_thread::sleep_for(std::chrono::milliseconds(pick(rng, 50)));
    state.counters.inits.fetch_add(1);
    timed_call(state, "vexcap_init", {0}, [] { return vexcap_init(); });
  }
}

void run_host_thread(StressState& state, std::uint64_t seed, std::mutex& subscription_mutex,
                     std::vector<vexcap_device_subscription*>& subscriptions) {
  std::mt19937_64 rng(seed);
  HostContext host{state, rng, subscription_mutex, subscriptions};
  while (!state.stopping.load()) {
    reopen_after_callback_close(host);
    // Opening and closing are rare enough that streams run most of the time; exits rarer still.
    const std::uint32_t roll = pick(rng, 100000);
    if (roll < 2) {
      exit_or_init(state, rng);
    } else if (roll < 20) {
      open_or_close(host);
    } else if (roll < 300) {
      reopen_if_closed(host);
    } else if (roll < 500) {
      // Started again right after any exit, as a host would; a no-op while running.
      timed_call(state, "vexcap_init", {0}, [] { return vexcap_init(); });
    } else if (roll < 1000) {
      timed_call(state, "vexcap_return_frame", {VEXCAP_E_INVALID_ARG}, [] { return vexcap_return_frame(nullptr); });
    } else if (roll < 1500) {
      device_callbacks(host);
    } else if (roll < 20000) {
      streaming(host);
    } else if (roll < 40000) {
      events(host);
    } else if (roll < 70000) {
      discovery(host);
    } else {
      controls(host);
    }
  }
}

void return_late_frames(StressState& state) {
  std::vector<vexcap_frame*> frames;
  {
    std::lock_guard<std::mutex> lock(state.late_mutex);
    frames.swap(state.late_frames);
  }
  for (vexcap_frame* frame : frames) {
    state.counters.late_returns.fetch_add(1);
    give_back(state, frame);
  }
}

}  // namespace vexcap::stress
