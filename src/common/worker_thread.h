// A worker thread that can be waited for with a limit: one that does not end in time is
// abandoned (left to finish on its own), never killed.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace vexcap {

class WorkerThread {
 public:
  // Starts `work`; throws std::system_error when no thread can be created.
  explicit WorkerThread(std::function<void()> work);
  // Joins a thread that has ended; abandons one that is still running.
  ~WorkerThread();
  WorkerThread(const WorkerThread&) = delete;
  WorkerThread& operator=(const WorkerThread&) = delete;

  // True when the thread ended within the limit (it is then joined).
  bool join_for(std::chrono::milliseconds limit);
  // Waits for the thread without a limit; throws std::system_error when it cannot be joined.
  void join();

 private:
  struct Completion {
    std::mutex mutex;
    std::condition_variable ended;
    bool done = false;
  };
  std::shared_ptr<Completion> completion_ = std::make_shared<Completion>();
  std::thread thread_;
};

}  // namespace vexcap
