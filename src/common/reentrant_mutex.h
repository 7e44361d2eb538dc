// A mutex its holder may lock again (as many times as it unlocks). Waiting threads get it in
// the order they asked for it, so requests run in the order their callers came.
//
// std::recursive_mutex would do on paper, but with MinGW's POSIX threads it allocates its
// native lock on first use and libstdc++ never destroys it: every one that is locked leaks.
// This one is built from a plain mutex and a condition variable, which free what they hold.
#pragma once

#include <condition_variable>
#include <cstdint>
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
    const std::uint64_t ticket = next_ticket_++;
    released_.wait(guard, [&] { return depth_ == 0 && serving_ == ticket; });
    owner_ = me;
    depth_ = 1;
  }

  void unlock() {
    std::lock_guard<std::mutex> guard(mutex_);
    if (--depth_ > 0) return;
    owner_ = std::thread::id();
    ++serving_;
    released_.notify_all();  // the next ticket's holder, whichever waiter that is
  }

 private:
  std::mutex mutex_;
  std::condition_variable released_;
  std::thread::id owner_;  // guarded by mutex_
  unsigned depth_ = 0;     // guarded by mutex_
  std::uint64_t next_ticket_ = 0;  // guarded by mutex_: the turn the next waiter takes
  std::uint64_t serving_ = 0;      // guarded by mutex_: the turn that may hold the lock
};

}  // namespace vexcap
