// Requests a host makes from inside its callbacks that may wait for the callback's own thread
// (stops, closes, device-event registrations), and the capture-failure recoveries the
// platform's Failed event asks for: run one after another in the order they were asked for, on
// a thread of their own. A direct request waits for those asked before it, so the order holds
// across threads; vexcap_exit runs what is queued and closes the queue before the request
// thread goes.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include "common/worker_thread.h"

namespace vexcap::api {

class DeferredRequests {
 public:
  DeferredRequests() = default;
  ~DeferredRequests();
  DeferredRequests(const DeferredRequests&) = delete;
  DeferredRequests& operator=(const DeferredRequests&) = delete;

  // Queues `request`; false (nothing runs) once closed or when no thread can be started.
  bool post(std::function<void()> request);
  // Waits until every request posted before this call has finished. On the queue's own thread
  // it returns at once.
  void wait_for_earlier();
  // Runs what is queued, then refuses every later request.
  void close();

 private:
  void run_queue();

  std::mutex mutex_;
  std::condition_variable finished_one_;
  std::deque<std::function<void()>> queue_;  // guarded by mutex_
  std::uint64_t posted_ = 0;                 // guarded by mutex_
  std::uint64_t finished_ = 0;               // guarded by mutex_
  bool running_ = false;                     // a worker is taking requests; guarded by mutex_
  bool closed_ = false;                      // guarded by mutex_
  std::thread::id worker_id_;                // guarded by mutex_
  std::unique_ptr<WorkerThread> worker_;     // the current or last worker; guarded by mutex_
};

}  // namespace vexcap::api
