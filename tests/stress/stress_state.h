// What the stress harness's threads share: the two device slots, the frame ledger, the call
// latencies and the counters the final table prints.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <random>
#include <set>
#include "stress/slot_lock.h"
#include <string>
#include <vector>

#include "vexcap/vexcap.h"

namespace vexcap::stress {

using Clock = std::chrono::steady_clock;

// One host device per stream-mode class (0, non-zero), as the library keeps them. Calls that use
// the handle hold the lock shared; open and close hold it exclusively, so no call ever sees a
// freed handle (that would be the host's bug, not the library's).
struct DeviceSlot {
  SlotLock lock;
  vexcap_device* device = nullptr;  // guarded by lock
  std::int64_t opened_us = 0;       // guarded by lock: when device was opened
  std::uint32_t mode = 0;
  std::atomic<std::int64_t> open_us{0};  // time a device sat in the slot, closed periods summed
  // The host opens the device afresh: a start found a client that cannot stream (its recovery
  // failed), or the camera came back after a removal.
  std::atomic<bool> needs_reopen{false};
  // A callback closed the device: a host thread opens the slot again right away, racing the
  // close that runs after the callback.
  std::atomic<bool> reopen_now{false};
};

// One of the four streams (each slot's shared and exclusive client); the frame callback's
// context, so frames are counted where they came from.
struct StreamTag {
  DeviceSlot* slot = nullptr;
  const char* name = "";
  std::atomic<std::uint64_t> frames{0};
};

// Faults of one kind: how many, and how long they lasted in all.
struct FaultKind {
  const char* name;
  std::atomic<std::uint64_t> count{0};
  std::atomic<std::int64_t> active_us{0};
};

// Every record the library hands over, until it is given back exactly once.
class FrameLedger {
 public:
  void delivered(vexcap_frame* frame);
  void returning(vexcap_frame* frame);  // before vexcap_return_frame
  std::size_t outstanding() const;
  std::uint64_t delivered_count() const { return delivered_.load(); }
  std::uint64_t returned_count() const { return returned_.load(); }
  std::uint64_t double_returns() const { return double_returns_.load(); }

 private:
  mutable std::mutex mutex_;
  std::set<vexcap_frame*> outstanding_;
  std::atomic<std::uint64_t> delivered_{0};
  std::atomic<std::uint64_t> returned_{0};
  std::atomic<std::uint64_t> double_returns_{0};
};

// Per export: calls, the longest one, and any result outside its documented set.
struct ExportStats {
  std::atomic<std::uint64_t> calls{0};
  std::atomic<std::int64_t> longest_us{0};
  std::atomic<std::uint64_t> undocumented{0};
};

struct Counters {
  std::atomic<std::uint64_t> faults{0};
  std::atomic<std::uint64_t> callbacks_false{0};
  std::atomic<std::uint64_t> late_returns{0};
  std::atomic<std::uint64_t> stops_in_callback{0};
  std::atomic<std::uint64_t> closes_in_callback{0};
  std::atomic<std::uint64_t> reopens{0};  // devices opened afresh (see DeviceSlot::needs_reopen)
  std::atomic<std::uint64_t> reopens_after_callback_close{0};
  std::atomic<std::uint64_t> exits{0};  // vexcap_exit from host threads, racing the others
  std::atomic<std::uint64_t> inits{0};
  std::atomic<std::uint64_t> device_events{0};
  std::atomic<std::uint64_t> other_events{0};
};

// A call in flight on one host (or callback) thread, for the watchdog.
struct CallInFlight {
  std::atomic<const char*> name{nullptr};
  std::atomic<std::int64_t> started_us{0};
  std::atomic<std::uint64_t> thread{0};  // pthread_t of the caller
};

struct StressState {
  std::wstring group_id;
  std::array<DeviceSlot, 2> slots;  // [0]: mode 0, [1]: non-zero modes
  // [2 * slot + 0]: the slot's shared client, [2 * slot + 1]: its exclusive client.
  std::array<StreamTag, 4> streams;
  std::array<FaultKind, 7> fault_kinds{{{"capture failed"}, {"removal"}, {"exclusive control lost"},
                                        {"frames stopped"}, {"undecodable frames"}, {"slow call"},
                                        {"failing call"}}};
  FrameLedger frames;
  Counters counters;
  std::map<std::string, ExportStats> exports;  // filled before the threads start
  std::atomic<bool> stopping{false};
  std::atomic<bool> failed{false};
  std::atomic<bool> finished{false};  // after the last vexcap_exit: the watchdog ends
  // Calls in flight on any thread: host threads, callbacks, the shutdown.
  std::vector<CallInFlight> in_flight = std::vector<CallInFlight>(128);

  // Late returns: records a callback keeps and another thread gives back later.
  std::mutex late_mutex;
  std::vector<vexcap_frame*> late_frames;
};

std::int64_t now_us();

}  // namespace vexcap::stress
