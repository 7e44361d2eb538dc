#include "common/worker_thread.h"

#include <utility>

namespace vexcap {

WorkerThread::WorkerThread(std::function<void()> work)
    : thread_([completion = completion_, work = std::move(work)] {
        work();
        std::lock_guard<std::mutex> lock(completion->mutex);
        completion->done = true;
        completion->ended.notify_all();
      }) {}

WorkerThread::~WorkerThread() {
  if (!thread_.joinable()) return;
  if (!join_for(std::chrono::milliseconds(0))) thread_.detach();
}

bool WorkerThread::join_for(std::chrono::milliseconds limit) {
  if (!thread_.joinable()) return true;
  {
    std::unique_lock<std::mutex> lock(completion_->mutex);
    if (!completion_->ended.wait_for(lock, limit, [this] { return completion_->done; })) return false;
  }
  thread_.join();
  return true;
}

void WorkerThread::join() {
  if (thread_.joinable()) thread_.join();
}

}  // namespace vexcap
