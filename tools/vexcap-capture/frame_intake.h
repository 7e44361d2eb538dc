// The tool's side of the frame callback. It runs on a library thread, so it only times itself
// and queues the record; the writer takes records off the queue, writes them out and returns
// them. A full queue (the writer fell behind) returns the frame at once and counts it dropped.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <vector>

#include "vexcap/vexcap.h"

namespace vexcap::tool {

class FrameIntake {
 public:
  // `wanted` 0: no limit; after `wanted` frames the callback asks the library to stop delivery.
  FrameIntake(std::uint64_t wanted, std::size_t capacity);
  ~FrameIntake();  // returns the frames still queued
  FrameIntake(const FrameIntake&) = delete;
  FrameIntake& operator=(const FrameIntake&) = delete;

  static bool callback(vexcap_frame* frame, void* context);

  // The next frame (the caller returns it), or null when none came within `wait`.
  vexcap_frame* next(std::chrono::milliseconds wait);

  std::uint64_t accepted() const;
  std::uint64_t dropped() const;
  std::vector<double> callback_microseconds() const;

 private:
  bool take(vexcap_frame* frame);

  const std::uint64_t wanted_;
  const std::size_t capacity_;
  mutable std::mutex mutex_;  // guards everything below
  std::condition_variable arrived_;
  std::deque<vexcap_frame*> queue_;
  std::uint64_t accepted_ = 0;
  std::uint64_t dropped_ = 0;
  std::vector<double> callback_us_;
};

}  // namespace vexcap::tool
