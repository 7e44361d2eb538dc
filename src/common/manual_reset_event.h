// A manual-reset event: stays signalled until reset, wakes every waiter.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace vexcap {

class ManualResetEvent {
 public:
  void set() {
    std::lock_guard<std::mutex> lock(mutex_);
    signalled_ = true;
    changed_.notify_all();
  }
  void reset() {
    std::lock_guard<std::mutex> lock(mutex_);
    signalled_ = false;
  }
  bool is_set() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return signalled_;
  }
  // True when signalled within the limit.
  bool wait_for(std::chrono::milliseconds limit) const {
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_for(lock, limit, [this] { return signalled_; });
  }

 private:
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  bool signalled_ = false;
};

}  // namespace vexcap
