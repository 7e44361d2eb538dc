// The RGB-stopped notification of a capture client. While the host has a callback registered, a
// worker probes the client's source group with exclusive sessions of its own, one pass at a
// time: a pass that receives a frame shows that whoever used the colour stream has let the
// camera go, and the host hears it once.
//
// Locks: the callback lock guards the callback pair between registration, switch-off and the
// worker; the worker lock guards the stop flag and the passes' wake-up events. Nothing holds
// both at once.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "common/manual_reset_event.h"
#include "common/mutex.h"
#include "common/worker_thread.h"
#include "platform/port.h"
#include "vexcap/vexcap.h"

namespace vexcap::capture {

class RgbStoppedWorker {
 public:
  // How long a pass's reader gets to deliver a frame, and how long the host waits for a worker
  // to end when it clears the callback.
  static constexpr std::chrono::milliseconds kPassWait{1000};
  static constexpr std::chrono::milliseconds kEndWait{20000};

  explicit RgbStoppedWorker(platform::Platform& platform) : platform_(platform) {}
  // Joins a worker that has ended; one ending on this very thread (it held the last reference
  // to the client) is let go.
  ~RgbStoppedWorker();
  RgbStoppedWorker(const RgbStoppedWorker&) = delete;
  RgbStoppedWorker& operator=(const RgbStoppedWorker&) = delete;

  // What a worker needs of its client: the client itself, kept alive for the worker's lifetime,
  // and the group and source kind to probe.
  struct Target {
    std::shared_ptr<const void> owner;
    std::wstring device_id;
    std::uint32_t reader_kind = 0;
  };

  // Registration: on an initialized client, stores the pair, resets the stopped event and
  // starts a worker (an earlier one runs on by itself). Nothing on an uninitialized client.
  void start(const Target& target, bool initialized, vexcap_rgb_stopped_callback callback, void* context);
  // Unregistration: on an initialized client with a callback, clears it and waits up to 20000 ms
  // for the worker to end.
  void clear_callback(bool initialized);
  // The colour stream goes off for good: every worker is told to stop, then the callback is
  // cleared as above. The stop is never taken back.
  void stop_for_good(bool initialized);

  // Signalled when a worker ends; reset by every registration.
  bool stopped_event_set() const { return stopped_event_.is_set(); }

 private:
  void run(const std::wstring& device_id, std::uint32_t reader_kind);
  // Passes until one receives a frame (true), or the stop flag or a cleared callback ends them
  // (false).
  bool probe_until_stopped(const std::wstring& device_id, std::uint32_t reader_kind);
  // A pass's wait begins and ends under the worker lock; both answer false once told to stop.
  bool begin_pass(const std::shared_ptr<ManualResetEvent>& wake);
  bool end_pass(const std::shared_ptr<ManualResetEvent>& wake);
  void wake_passes();
  bool callback_registered();

  platform::Platform& platform_;  // the passes open their own sessions on it
  std::mutex lock_;               // guards writes of the callback pair
  // Atomic: the worker reads the pair once more, without the lock, when it calls it.
  std::atomic<vexcap_rgb_stopped_callback> callback_{nullptr};
  std::atomic<void*> context_{nullptr};
  ManualResetEvent stopped_event_;

  Mutex worker_lock_;
  bool stop_ VEXCAP_GUARDED_BY(worker_lock_) = false;
  std::vector<std::shared_ptr<ManualResetEvent>> pass_wakes_
      VEXCAP_GUARDED_BY(worker_lock_);  // of the passes now waiting

  std::unique_ptr<WorkerThread> task_;  // the newest worker (request thread only)
};

}  // namespace vexcap::capture
