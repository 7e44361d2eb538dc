// Which thread an object's operations belong to, checked by assertions in debug builds (the
// asan preset and every Debug build). The request thread's objects check that their requests
// arrive on it: a handler reached from elsewhere is a bug of the library's, so it stops the
// test run at the call instead of being refused or logged in a host's process.
#pragma once

#include <cassert>
#include <thread>

namespace vexcap {

class ThreadChecker {
 public:
  // Bound to the thread that constructs it.
  ThreadChecker() : owner_(std::this_thread::get_id()) {}
  // Bound to `owner`; a default thread id binds to none and every thread passes.
  explicit ThreadChecker(std::thread::id owner) : owner_(owner) {}

  bool on_owner_thread() const { return owner_ == std::thread::id() || owner_ == std::this_thread::get_id(); }

 private:
  std::thread::id owner_;
};

}  // namespace vexcap

#define VEXCAP_DCHECK_ON_THREAD(checker) \
  assert((checker).on_owner_thread() && "called off its owner's thread")
