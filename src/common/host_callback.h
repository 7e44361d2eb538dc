// Marks a thread while it runs one of the host's callbacks. The request thread may be waiting
// for such a thread (to leave the frame handler, to release an event's lock, to end a notifier),
// so a request from there that stops, closes, registers or unregisters runs after the callback
// instead of waiting for the request thread.
#pragma once

namespace vexcap {

class HostCallbackScope {
 public:
  HostCallbackScope();
  ~HostCallbackScope();
  HostCallbackScope(const HostCallbackScope&) = delete;
  HostCallbackScope& operator=(const HostCallbackScope&) = delete;
};

// True on a thread that is inside a host callback the library called.
bool inside_host_callback();

}  // namespace vexcap
