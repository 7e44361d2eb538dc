// Helpers for the virtual camera's own tests: a private platform per test, sessions on it,
// and a collector for events raised on the camera's threads.
#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/virtual/scenario.h"
#include "platform/virtual/virtual_platform.h"

namespace vexcap::virtual_camera::testing {

// Events raised on another thread, waited for with a short limit (they normally come at once).
template <typename T>
class Collected {
 public:
  void add(T value) {
    std::lock_guard lock(mutex_);
    values_.push_back(std::move(value));
    changed_.notify_all();
  }
  // The values once at least `count` have come, or as many as came within the limit.
  std::vector<T> wait_for(std::size_t count, std::chrono::milliseconds limit = std::chrono::seconds(5)) {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, limit, [&] { return values_.size() >= count; });
    return values_;
  }
  std::vector<T> now() {
    std::lock_guard lock(mutex_);
    return values_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<T> values_;
};

inline Scenario manual_default() {
  Scenario scenario = default_scenario();
  scenario.clock = ClockMode::Manual;
  return scenario;
}

inline std::shared_ptr<platform::Capture> open_session(VirtualPlatform& platform, platform::SharingMode mode,
                                                       std::size_t group_index = 0) {
  auto capture = platform.create_capture();
  platform::CaptureSettings settings;
  settings.source_group = platform.find_all_source_groups().at(group_index);
  settings.sharing_mode = mode;
  capture->initialize(settings);
  return capture;
}

inline std::wstring default_group_id() { return *default_scenario().groups[0].id; }

}  // namespace vexcap::virtual_camera::testing
