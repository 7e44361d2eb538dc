#include "capture/control_tracker.h"

namespace vexcap::capture {

namespace {

constexpr std::size_t index_of(TrackedControl control) { return static_cast<std::size_t>(control); }

}  // namespace

template <typename T>
void ControlTracker::store(T ControlTracker::*slot, T value, TrackedControl control) {
  MutexLock lock(mutex_);
  if (this->*slot == value) return;
  this->*slot = value;
  counters_[index_of(control)] = 0;
  changed_[index_of(control)] = true;
}

void ControlTracker::store_exposure(std::uint64_t value) {
  store(&ControlTracker::exposure_, value, TrackedControl::Exposure);
}

void ControlTracker::store_iso_speed(std::uint32_t value) {
  store(&ControlTracker::iso_speed_, value, TrackedControl::IsoSpeed);
}

void ControlTracker::store_led_power(std::uint32_t value) {
  store(&ControlTracker::led_power_, value, TrackedControl::LedPower);
}

void ControlTracker::set_valid_now(TrackedControl control, bool valid) {
  MutexLock lock(mutex_);
  valid_now_[index_of(control)] = valid;
}

ControlReport ControlTracker::next_frame() {
  std::array<bool, 3> report{};
  ControlReport result;
  MutexLock lock(mutex_);
  result.exposure = exposure_;
  result.iso_speed = iso_speed_;
  result.led_power = led_power_;
  const std::array<bool, 3> valid_now = valid_now_;
  for (std::size_t i = 0; i < report.size(); ++i) {
    // Never reported while not set since the client was created.
    if (!changed_[i]) continue;
    if (++counters_[i] >= kSettleFrames) {
      counters_[i] = kSettleFrames;
      report[i] = true;
    } else {
      report[i] = valid_now[i];
    }
  }
  result.report_exposure = report[0];
  result.report_iso_speed = report[1];
  result.report_led_power = report[2];
  return result;
}

}  // namespace vexcap::capture
