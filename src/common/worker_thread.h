// A worker thread that can be waited for with a limit: one that does not end in time is
// abandoned (left to finish on its own), never killed.
//
// No thread is ever detached by another thread: an abandoned worker detaches itself once its
// work is done. Detaching a thread from outside while it may be ending corrupts the thread
// records of MinGW-w64's winpthreads (version 10 hands one record out twice: a later thread
// then starts with another's work, or with none and crashes).
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
  // Joins a thread that has ended; abandons one that is still running (also when this runs on
  // the worker itself).
  ~WorkerThread();
  WorkerThread(const WorkerThread&) = delete;
  WorkerThread& operator=(const WorkerThread&) = delete;

  // True when the thread ended within the limit (it is then joined).
  bool join_for(std::chrono::milliseconds limit);
  // Waits for the thread without a limit; throws std::system_error when it cannot be joined
  // (on the worker itself).
  void join();
  bool is_current_thread() const;

 private:
  struct State {
    std::mutex mutex;  // guards everything below
    std::condition_variable ended;
    bool done = false;
    bool abandoned = false;
    std::thread thread;
  };
  std::shared_ptr<State> state_ = std::make_shared<State>();
};

// Runs `work` on a thread of its own that nobody waits for.
void run_detached(std::function<void()> work);

}  // namespace vexcap
