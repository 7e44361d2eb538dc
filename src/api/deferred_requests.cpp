#include "api/deferred_requests.h"

#include <system_error>
#include <utility>

#include "log/log.h"

namespace vexcap::api {

DeferredRequests::~DeferredRequests() { close(); }

bool DeferredRequests::post(std::function<void()> request) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (closed_) return false;
  queue_.push_back(std::move(request));
  ++posted_;
  if (running_) return true;  // the worker takes it after the ones before it
  try {
    // The last worker has left its loop (running_ is clear), so this join is short.
    if (worker_) worker_->join();
    worker_ = std::make_unique<WorkerThread>([this] { run_queue(); });
  } catch (const std::system_error&) {
    queue_.pop_back();
    --posted_;
    return false;
  }
  running_ = true;
  return true;
}

void DeferredRequests::run_queue() {
  std::unique_lock<std::mutex> lock(mutex_);
  worker_id_ = std::this_thread::get_id();
  while (!queue_.empty()) {
    std::function<void()> request = std::move(queue_.front());
    queue_.pop_front();
    lock.unlock();
    try {
      request();
    } catch (const std::exception& error) {
      VXLOG('E', "Deferred request failed: %s", error.what());
    }
    request = nullptr;
    lock.lock();
    ++finished_;
    finished_one_.notify_all();
  }
  running_ = false;
  worker_id_ = std::thread::id();
  finished_one_.notify_all();
}

void DeferredRequests::wait_for_earlier() {
  std::unique_lock<std::mutex> lock(mutex_);
  if (running_ && worker_id_ == std::this_thread::get_id()) return;
  const std::uint64_t ticket = posted_;
  // No limit: each request needs only the request thread, which is still running.
  finished_one_.wait(lock, [&] { return finished_ >= ticket; });
}

void DeferredRequests::close() {
  std::unique_lock<std::mutex> lock(mutex_);
  closed_ = true;
  if (running_ && worker_id_ == std::this_thread::get_id()) return;
  finished_one_.wait(lock, [this] { return !running_; });
  if (worker_) worker_->join();
  worker_.reset();
}

}  // namespace vexcap::api
