// A mutex the thread-safety analysis knows (std::mutex of libstdc++ carries no attributes), and
// its scoped lock. Data a Mutex guards is declared VEXCAP_GUARDED_BY it.
#pragma once

#include <mutex>

#include "common/thread_annotations.h"

namespace vexcap {

class VEXCAP_CAPABILITY("mutex") Mutex {
 public:
  void lock() VEXCAP_ACQUIRE() { mutex_.lock(); }
  void unlock() VEXCAP_RELEASE() { mutex_.unlock(); }
  bool try_lock() VEXCAP_TRY_ACQUIRE(true) { return mutex_.try_lock(); }

 private:
  std::mutex mutex_;
};

class VEXCAP_SCOPED_CAPABILITY MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) VEXCAP_ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
  ~MutexLock() VEXCAP_RELEASE() { mutex_.unlock(); }
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

 private:
  Mutex& mutex_;
};

}  // namespace vexcap
