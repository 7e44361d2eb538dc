#include "frame_intake.h"

namespace vexcap::tool {

FrameIntake::FrameIntake(std::uint64_t wanted, std::size_t capacity)
    : wanted_(wanted), capacity_(capacity) {}

FrameIntake::~FrameIntake() {
  for (vexcap_frame* frame : queue_) vexcap_return_frame(frame);
}

bool FrameIntake::callback(vexcap_frame* frame, void* context) {
  return static_cast<FrameIntake*>(context)->take(frame);
}

bool FrameIntake::take(vexcap_frame* frame) {
  const auto entered = std::chrono::steady_clock::now();
  std::unique_lock<std::mutex> lock(mutex_);
  const bool over_limit = wanted_ != 0 && accepted_ >= wanted_;
  if (over_limit || queue_.size() >= capacity_) {
    if (!over_limit) ++dropped_;
    lock.unlock();
    vexcap_return_frame(frame);
    return !over_limit;
  }
  queue_.push_back(frame);
  ++accepted_;
  const bool go_on = wanted_ == 0 || accepted_ < wanted_;
  callback_us_.push_back(
      std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - entered).count());
  arrived_.notify_one();
  return go_on;
}

vexcap_frame* FrameIntake::next(std::chrono::milliseconds wait) {
  std::unique_lock<std::mutex> lock(mutex_);
  if (!arrived_.wait_for(lock, wait, [this] { return !queue_.empty(); })) return nullptr;
  vexcap_frame* frame = queue_.front();
  queue_.pop_front();
  return frame;
}

std::uint64_t FrameIntake::accepted() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return accepted_;
}

std::uint64_t FrameIntake::dropped() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return dropped_;
}

std::vector<double> FrameIntake::callback_microseconds() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return callback_us_;
}

}  // namespace vexcap::tool
