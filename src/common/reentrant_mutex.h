// A mutex its holder may lock again (as many times as it unlocks).
//
// std::recursive_mutex would do on paper, but with MinGW's POSIX threads it allocates its
// native lock on first use and libstdc++ never destroys it: every one that is locked leaks.
// This one is built from a plain mutex and a condition variable, which free what they hold.
#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

namespace vexcap {

class ReentrantMutex {
 public:
  void lock() {
    const std::thread::id me = std::this_thread::get_id();
    std::unique_lock<std::mutex> guard(mutex_);
    if (depth_ > 0 && owner_ == me) {
      ++depth_;
      return;
    }
    released_.wait(guard, [this] { return depth_ == 0; });
    owner_ = me;
    depth_ = 1;
  }

  void unlock() {
    std::lock_guard<std::mutex> guard(mutex_);
    if (--depth_ > 0) return;
    owner_ = std::thread::id();
    released_.notify_one();
  }

 private:
  std::mutex mutex_;
  std::condition_variable released_;
  std::thread::id owner_;  // guarded by mutex_
  unsigned depth_ = 0;     // guarded by mutex_
};

}  // namespace vexcap
