// A thread of the virtual camera's own that raises events in the order they were posted, as
// the platform raises events on its worker threads. It starts with the first post and is
// joined when the owner goes.
#pragma once

#include <functional>
#include <memory>
#include <thread>

namespace vexcap::virtual_camera {

class EventThread {
 public:
  EventThread();
  ~EventThread();
  EventThread(const EventThread&) = delete;
  EventThread& operator=(const EventThread&) = delete;

  void post(std::function<void()> event);

 private:
  struct State;
  // The thread holds the state too, so an owner released by one of its own events (the thread
  // cannot join itself then and is detached) leaves the thread nothing dangling.
  std::shared_ptr<State> state_;
  std::thread thread_;
};

}  // namespace vexcap::virtual_camera
