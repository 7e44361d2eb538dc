// Tests of the product DLL on the Windows double: the library is reached only through its 33
// exports; the camera behind the double is steered through the double's control functions
// (the virtual camera's, exported from VexcapWindowsDouble.dll). Every test ends with the
// library stopped, no violation recorded and no object of the double left alive.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/virtual/virtual_camera.h"
#include "platform/windows_double/double_control.h"
#include "vexcap/vexcap.h"

namespace vexcap::double_tests {

namespace vc = virtual_camera;
namespace wd = windows_double;
using namespace std::chrono_literals;

inline const std::wstring& camera_id() {
  static const std::wstring id = *vc::default_scenario().groups.at(0).id;
  return id;
}

// Polls `done` every 10 ms for at most `limit`.
inline bool wait_until(const std::function<bool()>& done, std::chrono::milliseconds limit = 5000ms) {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (!done()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(10ms);
  }
  return true;
}

inline std::string joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const auto& line : lines) text += "\n  " + line;
  return text;
}

// Objects the double still holds for the product, by class; empty when none.
inline std::string live_text() {
  std::string text;
  for (const auto& [name, count] : wd::live_objects()) text += " " + name + "=" + std::to_string(count);
  return text;
}

class DoubleTest : public ::testing::Test {
 protected:
  void SetUp() override {
    vc::reset();
    vc::Scenario scenario = vc::default_scenario();
    scenario.clock = vc::ClockMode::Manual;
    vc::use_scenario(scenario);
    wd::clear_violations();
    wd::clear_factory_requests();
  }
  void TearDown() override {
    vexcap_exit();
    EXPECT_TRUE(wd::violations().empty()) << joined(wd::violations());
    // Operations finish on threads of their own: what they hold goes a moment later.
    EXPECT_TRUE(wait_until([] { return wd::live_objects().empty(); })) << "left alive:" << live_text();
    wd::clear_violations();
    vc::reset();
  }

 public:
  // Starts the library and opens the default camera; null (with a failure) when that fails.
  static vexcap_device* start_and_open(std::uint32_t stream_mode) {
    EXPECT_EQ(vexcap_init(), VEXCAP_OK);
    return open(stream_mode);
  }
  static vexcap_device* open(std::uint32_t stream_mode) {
    vexcap_device* device = nullptr;
    const vexcap_open_params params{stream_mode, 640, 480};
    EXPECT_EQ(vexcap_device_open(&device, camera_id().c_str(), &params), VEXCAP_OK);
    return device;
  }
};

// Frame records a stream delivered, kept until the test returns them.
class Frames {
 public:
  ~Frames() { clear(); }
  static bool keep(vexcap_frame* frame, void* context) {
    auto* self = static_cast<Frames*>(context);
    std::lock_guard lock(self->mutex_);
    self->frames_.push_back(frame);
    return true;
  }
  std::size_t count() {
    std::lock_guard lock(mutex_);
    return frames_.size();
  }
  std::vector<vexcap_frame*> taken() {
    std::lock_guard lock(mutex_);
    return frames_;
  }
  void clear() {
    std::lock_guard lock(mutex_);
    for (vexcap_frame* frame : frames_) vexcap_return_frame(frame);
    frames_.clear();
  }

 private:
  std::mutex mutex_;
  std::vector<vexcap_frame*> frames_;
};

// One frame period of the default formats (30 per second) and a little more.
inline void next_frame() { vc::advance_time(34ms); }

}  // namespace vexcap::double_tests
