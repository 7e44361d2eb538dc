#include "platform/virtual/event_thread.h"

#include <condition_variable>
#include <deque>
#include <mutex>

namespace vexcap::virtual_camera {

struct EventThread::State {
  std::mutex mutex;  // guards queue and stop
  std::condition_variable changed;
  std::deque<std::function<void()>> queue;
  bool stop = false;

  void run() {
    std::unique_lock lock(mutex);
    for (;;) {
      changed.wait(lock, [&] { return stop || !queue.empty(); });
      if (queue.empty()) return;  // stopped and nothing left to raise
      auto event = std::move(queue.front());
      queue.pop_front();
      lock.unlock();
      try {
        event();
      } catch (...) {
        // A handler's failure stays with the handler, as the platform's event sources do.
      }
      event = nullptr;  // handlers captured by the event die here, outside the lock
      lock.lock();
    }
  }
};

EventThread::EventThread() : state_(std::make_shared<State>()) {}

EventThread::~EventThread() {
  {
    std::lock_guard lock(state_->mutex);
    state_->stop = true;
    state_->changed.notify_all();
  }
  if (!thread_.joinable()) return;
  if (thread_.get_id() == std::this_thread::get_id())
    thread_.detach();  // released by its own event: it ends as soon as that event returns
  else
    thread_.join();
}

void EventThread::post(std::function<void()> event) {
  std::lock_guard lock(state_->mutex);
  if (state_->stop) return;
  state_->queue.push_back(std::move(event));
  if (!thread_.joinable()) thread_ = std::thread([state = state_] { state->run(); });
  state_->changed.notify_all();
}

}  // namespace vexcap::virtual_camera
