// Requests a host makes from inside its callbacks that may wait for the callback's own thread
// (stops, closes, device-event registrations): run after the callback, one after another in the
// order they were asked for, on a thread of their own. vexcap_exit waits for them before the
// request thread goes.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

#include "common/worker_thread.h"

namespace vexcap::api {

class DeferredRequests {
 public:
  DeferredRequests() = default;
  ~DeferredRequests();
  DeferredRequests(const DeferredRequests&) = delete;
  DeferredRequests& operator=(const DeferredRequests&) = delete;

  // Queues `request`; false (nothing runs) when no thread can be started for it.
  bool post(std::function<void()> request);
  // Waits until every posted request has finished.
  void drain();

 private:
  void run_queue();

  std::mutex mutex_;
  std::condition_variable idle_;
  std::deque<std::function<void()>> queue_;  // guarded by mutex_
  bool running_ = false;                     // a worker is taking requests; guarded by mutex_
  std::unique_ptr<WorkerThread> worker_;     // the current or last worker; guarded by mutex_
};

}  // namespace vexcap::api
