#include "platform/virtual/clock.h"

#include <algorithm>

namespace vexcap::virtual_camera {

Clock::Clock(ClockMode mode) : mode_(mode) {}

std::int64_t Clock::now_locked() const {
  if (mode_ == ClockMode::Manual) return manual_now_;
  auto elapsed = std::chrono::steady_clock::now() - origin_;
  return kEpoch + std::chrono::duration_cast<std::chrono::nanoseconds>(elapsed).count() / 100;
}

std::int64_t Clock::now() const {
  std::lock_guard lock(mutex_);
  return now_locked();
}

void Clock::advance(std::int64_t ticks) {
  if (mode_ != ClockMode::Manual) return;
  std::unique_lock lock(mutex_);
  manual_now_ += std::max<std::int64_t>(ticks, 0);
  changed_.notify_all();
  changed_.wait(lock, [&] {
    return std::all_of(pacers_.begin(), pacers_.end(), [&](const Pacer* p) {
      // A stopped pacer still counts until its producer lets go of it: its last handler may
      // still be running.
      return !p->stopped_ && p->waiting_for_ > manual_now_;
    });
  });
}

Clock::Pacer::Pacer(std::shared_ptr<Clock> clock) : clock_(std::move(clock)) {
  std::lock_guard lock(clock_->mutex_);
  clock_->pacers_.push_back(this);
}

Clock::Pacer::~Pacer() {
  std::lock_guard lock(clock_->mutex_);
  auto& pacers = clock_->pacers_;
  pacers.erase(std::remove(pacers.begin(), pacers.end(), this), pacers.end());
  clock_->changed_.notify_all();
}

bool Clock::Pacer::wait_until(std::int64_t due) {
  Clock& c = *clock_;
  std::unique_lock lock(c.mutex_);
  waiting_for_ = due;
  // An advance() may be waiting for this producer to settle; in real time nobody waits, and
  // waking every other producer at every frame would only cost them a spurious wake-up.
  if (c.mode_ == ClockMode::Manual) c.changed_.notify_all();
  while (!stopped_ && c.now_locked() < due) {
    if (c.mode_ == ClockMode::Manual) {
      c.changed_.wait(lock);
    } else {
      auto wake = c.origin_ + std::chrono::nanoseconds((due - kEpoch) * 100);
      c.changed_.wait_until(lock, wake);
    }
  }
  waiting_for_ = -1;
  return !stopped_;
}

void Clock::Pacer::stop() {
  std::lock_guard lock(clock_->mutex_);
  stopped_ = true;
  clock_->changed_.notify_all();
}

}  // namespace vexcap::virtual_camera
