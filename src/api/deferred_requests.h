// Requests a host makes from inside its frame callback that stop or close a reader: run on a
// thread of their own, since the request thread waits for the callback's thread to leave the
// frame handler. vexcap_exit waits for them before the request thread goes.
#pragma once

#include <functional>
#include <list>
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

  // Runs `request` on a new thread; false (nothing runs) when no thread can be started.
  bool post(std::function<void()> request);
  // Waits until every posted request has finished.
  void drain();

 private:
  std::mutex mutex_;
  std::list<std::unique_ptr<WorkerThread>> workers_;  // guarded by mutex_
};

}  // namespace vexcap::api
