#include "common/worker_thread.h"

#include <system_error>
#include <utility>

namespace vexcap {
namespace {

// Joins the stored thread with the lock released, so that the thread can take it as it ends.
void join_outside_lock(std::thread& stored, std::unique_lock<std::mutex>& lock) {
  std::thread taken = std::move(stored);
  lock.unlock();
  taken.join();
}

}  // namespace

WorkerThread::WorkerThread(std::function<void()> work) {
  // Held while the thread is stored, so the thread finds itself there when it ends.
  std::lock_guard<std::mutex> lock(state_->mutex);
  state_->thread = std::thread([state = state_, work = std::move(work)]() mutable {
    work();
    work = nullptr;  // what the work holds goes before anyone hears that it ended
    std::lock_guard<std::mutex> ending(state->mutex);
    state->done = true;
    state->ended.notify_all();
    if (state->abandoned) state->thread.detach();  // by the thread itself, so it is not ending yet
  });
}

WorkerThread::~WorkerThread() {
  std::unique_lock<std::mutex> lock(state_->mutex);
  if (!state_->thread.joinable()) return;
  if (!state_->done) {
    state_->abandoned = true;
    return;
  }
  join_outside_lock(state_->thread, lock);
}

bool WorkerThread::join_for(std::chrono::milliseconds limit) {
  std::unique_lock<std::mutex> lock(state_->mutex);
  if (!state_->thread.joinable()) return true;
  if (!state_->ended.wait_for(lock, limit, [this] { return state_->done; })) return false;
  join_outside_lock(state_->thread, lock);
  return true;
}

void WorkerThread::join() {
  std::unique_lock<std::mutex> lock(state_->mutex);
  if (!state_->thread.joinable()) return;
  if (state_->thread.get_id() == std::this_thread::get_id())
    throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
  join_outside_lock(state_->thread, lock);
}

bool WorkerThread::is_current_thread() const {
  std::lock_guard<std::mutex> lock(state_->mutex);
  return state_->thread.get_id() == std::this_thread::get_id();
}

void run_detached(std::function<void()> work) { WorkerThread abandoned_at_once(std::move(work)); }

}  // namespace vexcap
