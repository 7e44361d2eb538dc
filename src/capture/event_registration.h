// One host callback of a client's event with its context, guarded by the event's own lock. The
// host is called with that lock held, so an unregistration waits for a call in progress.
#pragma once

#include <mutex>

#include "common/host_callback.h"
#include "common/mutex.h"

namespace vexcap::capture {

template <typename Callback>
class EventRegistration {
 public:
  // A registration holds the lock for all it does; the held lock is the proof the others ask for.
  [[nodiscard]] std::unique_lock<Mutex> hold() { return std::unique_lock<Mutex>(mutex_); }
  bool registered(const std::unique_lock<Mutex>&) const VEXCAP_NO_THREAD_SAFETY_ANALYSIS {
    return callback_ != nullptr;
  }
  void store(const std::unique_lock<Mutex>&, Callback callback,
             void* context) VEXCAP_NO_THREAD_SAFETY_ANALYSIS {
    callback_ = callback;
    context_ = context;
  }
  void clear(const std::unique_lock<Mutex>&) VEXCAP_NO_THREAD_SAFETY_ANALYSIS {
    callback_ = nullptr;
    context_ = nullptr;
  }

  // Calls `call(callback, context)` with the lock held, when a callback is registered.
  template <typename Call>
  void raise(Call&& call) {
    MutexLock lock(mutex_);
    if (callback_ == nullptr) return;
    HostCallbackScope marked;
    call(callback_, context_);
  }

 private:
  Mutex mutex_;
  Callback callback_ VEXCAP_GUARDED_BY(mutex_) = nullptr;
  void* context_ VEXCAP_GUARDED_BY(mutex_) = nullptr;
};

}  // namespace vexcap::capture
