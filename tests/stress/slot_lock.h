// The lock a device slot's users share and its open and close take alone.
//
// std::shared_mutex would do on paper, but MinGW's is winpthreads' rwlock, which under Wine let
// a writer in beside readers blocked in an export: the harness closed devices while other host
// threads were still passing their handles, and the library wrote into freed handles. This one
// is built from a plain mutex and a condition variable. Writers go first: a waiting writer
// keeps new readers out, so opens and closes happen while streams run.
#pragma once

#include <condition_variable>
#include <mutex>

namespace vexcap::stress {

class SlotLock {
 public:
  void lock() {
    std::unique_lock<std::mutex> guard(mutex_);
    ++writers_waiting_;
    changed_.wait(guard, [this] { return !writer_ && readers_ == 0; });
    --writers_waiting_;
    writer_ = true;
  }
  bool try_lock() {
    std::lock_guard<std::mutex> guard(mutex_);
    if (writer_ || readers_ > 0) return false;
    writer_ = true;
    return true;
  }
  void unlock() {
    {
      std::lock_guard<std::mutex> guard(mutex_);
      writer_ = false;
    }
    changed_.notify_all();
  }

  void lock_shared() {
    std::unique_lock<std::mutex> guard(mutex_);
    changed_.wait(guard, [this] { return !writer_ && writers_waiting_ == 0; });
    ++readers_;
  }
  bool try_lock_shared() {
    std::lock_guard<std::mutex> guard(mutex_);
    if (writer_ || writers_waiting_ > 0) return false;
    ++readers_;
    return true;
  }
  void unlock_shared() {
    bool last;
    {
      std::lock_guard<std::mutex> guard(mutex_);
      last = --readers_ == 0;
    }
    if (last) changed_.notify_all();
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool writer_ = false;       // guarded by mutex_
  int readers_ = 0;           // guarded by mutex_
  int writers_waiting_ = 0;   // guarded by mutex_
};

}  // namespace vexcap::stress
