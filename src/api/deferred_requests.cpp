#include "api/deferred_requests.h"

#include <chrono>
#include <system_error>
#include <utility>

namespace vexcap::api {

DeferredRequests::~DeferredRequests() { drain(); }

bool DeferredRequests::post(std::function<void()> request) {
  std::lock_guard<std::mutex> lock(mutex_);
  queue_.push_back(std::move(request));
  if (running_) return true;  // the worker takes it after the ones before it
  try {
    // The last worker has left its loop (running_ is clear), so this join is short.
    if (worker_) worker_->join();
    worker_ = std::make_unique<WorkerThread>([this] { run_queue(); });
  } catch (const std::system_error&) {
    queue_.pop_back();
    return false;
  }
  running_ = true;
  return true;
}

void DeferredRequests::run_queue() {
  std::unique_lock<std::mutex> lock(mutex_);
  while (!queue_.empty()) {
    std::function<void()> request = std::move(queue_.front());
    queue_.pop_front();
    lock.unlock();
    request();
    request = nullptr;
    lock.lock();
  }
  running_ = false;
  idle_.notify_all();
}

void DeferredRequests::drain() {
  std::unique_lock<std::mutex> lock(mutex_);
  // No limit: each request needs only the request thread, which is still running.
  idle_.wait(lock, [this] { return !running_; });
  if (worker_) worker_->join();
  worker_.reset();
}

}  // namespace vexcap::api
