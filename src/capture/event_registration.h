// One host callback of a client's event with its context, guarded by the event's own lock. The
// host is called with that lock held, so an unregistration waits for a call in progress.
#pragma once

#include <mutex>

#include "common/host_callback.h"

namespace vexcap::capture {

template <typename Callback>
class EventRegistration {
 public:
  // For a registration that does more under the lock than storing the pair.
  [[nodiscard]] std::unique_lock<std::mutex> hold() { return std::unique_lock<std::mutex>(mutex_); }
  bool registered(const std::unique_lock<std::mutex>&) const { return callback_ != nullptr; }
  void store(const std::unique_lock<std::mutex>&, Callback callback, void* context) {
    callback_ = callback;
    context_ = context;
  }
  void clear(const std::unique_lock<std::mutex>&) {
    callback_ = nullptr;
    context_ = nullptr;
  }

  // Calls `call(callback, context)` with the lock held, when a callback is registered.
  template <typename Call>
  void raise(Call&& call) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (callback_ == nullptr) return;
    HostCallbackScope marked;
    call(callback_, context_);
  }

 private:
  std::mutex mutex_;
  Callback callback_ = nullptr;  // guarded by mutex_
  void* context_ = nullptr;      // guarded by mutex_
};

}  // namespace vexcap::capture
