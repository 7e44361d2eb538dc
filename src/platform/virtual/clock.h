// Frame time. In real mode it follows the steady clock; in manual mode it stands still until a
// test advances it, and advance() returns only once every running frame producer has produced
// all frames due by the new time, so frame-rate behaviour is tested without real waiting.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/virtual/scenario.h"

namespace vexcap::virtual_camera {

class Clock {
 public:
  // Frame times start here (100 ns units), so a first frame never carries time 0.
  static constexpr std::int64_t kEpoch = 10'000'000;

  explicit Clock(ClockMode mode);
  ClockMode mode() const { return mode_; }
  std::int64_t now() const;  // 100 ns units

  // Manual mode: moves time on and waits until every pacer is waiting for a later time; a
  // stopped pacer holds it until the pacer is destroyed (its producer has ended). Never call it
  // from a frame handler. Real mode: no effect.
  void advance(std::int64_t ticks);

  // One frame producer's schedule. Created before the producer's thread starts; the clock
  // counts it as busy until it first waits.
  class Pacer {
   public:
    explicit Pacer(std::shared_ptr<Clock> clock);
    ~Pacer();
    Pacer(const Pacer&) = delete;
    Pacer& operator=(const Pacer&) = delete;
    // Blocks until the clock reaches `due`; false when stopped first.
    bool wait_until(std::int64_t due);
    void stop();  // wakes wait_until for good; callable from any thread

   private:
    friend class Clock;
    std::shared_ptr<Clock> clock_;
    bool stopped_ = false;
    std::int64_t waiting_for_ = -1;  // -1 while busy producing
  };

 private:
  std::int64_t now_locked() const;

  const ClockMode mode_;
  const std::chrono::steady_clock::time_point origin_ = std::chrono::steady_clock::now();
  mutable std::mutex mutex_;  // guards manual_now_ and pacers_ (and each pacer's fields)
  std::condition_variable changed_;
  std::int64_t manual_now_ = kEpoch;
  std::vector<Pacer*> pacers_;
};

}  // namespace vexcap::virtual_camera
