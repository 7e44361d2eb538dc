// A capture client's device events outside a device: the exclusive-control status as the host
// hears it, and switching the colour stream off while the RGB-stopped worker probes.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <thread>
#include <tuple>
#include <vector>

#include "capture/capture_client.h"
#include "platform/virtual/virtual_camera.h"
#include "support/library_fixture.h"
#include "support/log_capture.h"

namespace vexcap::capture {
namespace {

namespace vc = virtual_camera;
using namespace std::chrono_literals;

using testing::default_group_id;

int exclusive_sessions() {
  return vc::session_count(default_group_id(), platform::SharingMode::ExclusiveControl);
}

bool wait_until(const std::function<bool()>& done) {
  const auto deadline = std::chrono::steady_clock::now() + 5s;
  while (!done()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(5ms);
  }
  return true;
}

struct StatusCalls {
  std::mutex mutex;
  std::vector<std::tuple<std::wstring, std::uint8_t, bool>> calls;
  static void on_status(const wchar_t* text, std::uint8_t status, bool flag, void* context) {
    auto* self = static_cast<StatusCalls*>(context);
    std::lock_guard<std::mutex> lock(self->mutex);
    self->calls.emplace_back(text, status, flag);
  }
  std::size_t size() {
    std::lock_guard<std::mutex> lock(mutex);
    return calls.size();
  }
};

std::atomic<int> rgb_stopped_calls{0};
void on_rgb_stopped(bool, void*) { ++rgb_stopped_calls; }

class ClientEvents : public ::testing::Test {
 protected:
  void SetUp() override {
    vc::reset();
    vc::Scenario scenario = vc::default_scenario();
    scenario.clock = vc::ClockMode::Manual;  // the worker's reader never sees a frame
    vc::use_scenario(scenario);
    client_ = CaptureClient::create(platform::current(),
                                    1);  // no failure notifier: a failure is not recovered here
    log_.resume();
    ASSERT_EQ(client_->initialize(default_group_id(), 1, 0, 0), HR_OK);
  }
  void TearDown() override {
    client_.reset();
    vc::reset();
  }
  testing::LogCapture log_;
  std::shared_ptr<CaptureClient> client_;
};

TEST_F(ClientEvents, TheHostHearsThePlatformStatusWithTheEventsText) {
  StatusCalls heard;
  ASSERT_EQ(client_->register_exclusive_control_status(&StatusCalls::on_status, &heard), HR_OK);
  vc::set_held_by_other_app(default_group_id(), true);
  ASSERT_TRUE(wait_until([&] { return heard.size() == 1; }));
  vc::set_held_by_other_app(default_group_id(), false);
  ASSERT_TRUE(wait_until([&] { return heard.size() == 2; }));
  // SharedReadOnlyAvailable (1) stays 1; ExclusiveControlAvailable (0) becomes 3, flagged.
  EXPECT_EQ(heard.calls[0], std::make_tuple(default_group_id(), std::uint8_t{1}, false));
  EXPECT_EQ(heard.calls[1], std::make_tuple(default_group_id(), std::uint8_t{3}, true));

  EXPECT_EQ(client_->unregister_exclusive_control_status(), HR_OK);
  vc::set_held_by_other_app(default_group_id(), true);
  std::this_thread::sleep_for(50ms);
  EXPECT_EQ(heard.size(), 2u);
}

TEST_F(ClientEvents, SwitchingTheColourStreamOffEndsTheWaitingWorkerAndStreaming) {
  rgb_stopped_calls = 0;
  StatusCalls heard;
  ASSERT_EQ(client_->register_exclusive_control_status(&StatusCalls::on_status, &heard), HR_OK);
  ASSERT_EQ(client_->register_rgb_stopped(on_rgb_stopped, nullptr), HR_OK);
  ASSERT_TRUE(wait_until([] { return exclusive_sessions() == 2; }));  // the worker's pass waits

  const auto began = std::chrono::steady_clock::now();
  EXPECT_EQ(client_->switch_colour_stream_off(), HR_OK);
  EXPECT_LT(std::chrono::steady_clock::now() - began, 20s);
  EXPECT_TRUE(client_->rgb_stopped_event_set());  // the worker saw the stop and ended
  EXPECT_EQ(exclusive_sessions(), 1);
  EXPECT_EQ(rgb_stopped_calls.load(), 0);

  // Nothing streams any more; clear leaves the session as it is.
  EXPECT_EQ(client_->start_streaming(nullptr, nullptr), HR_INVALID_STATE);
  EXPECT_EQ(client_->enable_stream_type(2, 0), HR_INVALID_STATE);
  EXPECT_EQ(client_->clear(), HR_OK);
  EXPECT_EQ(exclusive_sessions(), 1);
  // The exclusive-control subscription went with it.
  vc::set_held_by_other_app(default_group_id(), true);
  std::this_thread::sleep_for(50ms);
  EXPECT_EQ(heard.size(), 0u);
  // A later registration starts no worker: the stop stays.
  ASSERT_EQ(client_->register_rgb_stopped(on_rgb_stopped, nullptr), HR_OK);
  EXPECT_TRUE(wait_until([&] { return client_->rgb_stopped_event_set(); }));
}

TEST_F(ClientEvents, SwitchingOffWithoutAnRgbStoppedCallbackWaitsForNothing) {
  EXPECT_EQ(client_->switch_colour_stream_off(), HR_OK);
  EXPECT_FALSE(client_->rgb_stopped_event_set());  // no worker ever ran
  EXPECT_TRUE(client_->rgb_disabled());
}

TEST_F(ClientEvents, AnUninitializedClientRegistersNoRgbStoppedWorker) {
  auto idle = CaptureClient::create(platform::current(), 1);
  ASSERT_EQ(idle->register_rgb_stopped(on_rgb_stopped, nullptr), HR_OK);
  std::this_thread::sleep_for(50ms);
  EXPECT_EQ(exclusive_sessions(), 1);  // only the initialized client's
}

}  // namespace
}  // namespace vexcap::capture
