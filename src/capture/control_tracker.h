// Remembers the camera controls the host set last and how many frames have passed since, so
// a frame reports a control only once the camera can be expected to have applied it.
//
// One per capture client. Set operations run on the request thread, the per-frame report on
// frame-arrived threads; one mutex guards everything.
#pragma once

#include <array>
#include <cstdint>
#include <mutex>

#include "common/mutex.h"

namespace vexcap::capture {

enum class TrackedControl : std::size_t { Exposure = 0, IsoSpeed = 1, LedPower = 2 };

// What one frame learns from the tracker: the remembered values and which to report.
struct ControlReport {
  std::uint64_t exposure = 0;
  std::uint32_t iso_speed = 0;
  std::uint32_t led_power = 0;
  bool report_exposure = false;
  bool report_iso_speed = false;
  bool report_led_power = false;
};

class ControlTracker {
 public:
  // Frames after a change from which a control is reported whatever its valid-now flag.
  static constexpr std::uint8_t kSettleFrames = 5;

  // A value that differs from the remembered one is stored, its counter restarts and it is
  // marked changed; the same value again leaves everything as it was.
  void store_exposure(std::uint64_t value);
  void store_iso_speed(std::uint32_t value);
  void store_led_power(std::uint32_t value);
  // Lets a control be reported before it settles (until then it waits kSettleFrames frames).
  void set_valid_now(TrackedControl control, bool valid);

  // The per-frame step: counts this frame for every changed control and says which to report.
  ControlReport next_frame();

 private:
  // Stores into the member `slot` under the lock.
  template <typename T>
  void store(T ControlTracker::*slot, T value, TrackedControl control) VEXCAP_EXCLUDES(mutex_);

  Mutex mutex_;
  std::uint64_t exposure_ VEXCAP_GUARDED_BY(mutex_) = 0;
  std::uint32_t iso_speed_ VEXCAP_GUARDED_BY(mutex_) = 0;
  std::uint32_t led_power_ VEXCAP_GUARDED_BY(mutex_) = 0;
  std::array<bool, 3> valid_now_ VEXCAP_GUARDED_BY(mutex_){};
  std::array<bool, 3> changed_ VEXCAP_GUARDED_BY(mutex_){};
  std::array<std::uint8_t, 3> counters_ VEXCAP_GUARDED_BY(mutex_){};
};

}  // namespace vexcap::capture
