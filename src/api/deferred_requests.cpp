#include "api/deferred_requests.h"

#include <chrono>
#include <system_error>
#include <utility>

namespace vexcap::api {

DeferredRequests::~DeferredRequests() { drain(); }

bool DeferredRequests::post(std::function<void()> request) {
  std::lock_guard<std::mutex> lock(mutex_);
  // Ended workers are joined here, so a long run keeps only the ones still working.
  workers_.remove_if([](const std::unique_ptr<WorkerThread>& worker) {
    return worker->join_for(std::chrono::milliseconds(0));
  });
  try {
    workers_.push_back(std::make_unique<WorkerThread>(std::move(request)));
  } catch (const std::system_error&) {
    return false;
  }
  return true;
}

void DeferredRequests::drain() {
  std::list<std::unique_ptr<WorkerThread>> workers;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    workers.swap(workers_);
  }
  // No limit: each request needs only the request thread, which is still running.
  for (auto& worker : workers) worker->join_for(std::chrono::hours(24 * 365));
}

}  // namespace vexcap::api
