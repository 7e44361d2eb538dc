// Device events through the exports, on the default virtual camera: exclusive-control status,
// RGB status and RGB stopped, all stored on the device's exclusive client.
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "support/library_fixture.h"

namespace vexcap {
namespace {

namespace vc = virtual_camera;
using namespace std::chrono_literals;

using testing::default_group_id;

// What one of the host's callbacks saw, on whichever thread called it.
template <typename Call>
struct Heard {
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<Call> calls;

  void add(Call call) {
    std::lock_guard<std::mutex> lock(mutex);
    calls.push_back(std::move(call));
    changed.notify_all();
  }
  std::vector<Call> wait_for(std::size_t count, std::chrono::milliseconds limit = 5s) {
    std::unique_lock<std::mutex> lock(mutex);
    changed.wait_for(lock, limit, [&] { return calls.size() >= count; });
    return calls;
  }
  std::vector<Call> now() {
    std::lock_guard<std::mutex> lock(mutex);
    return calls;
  }
};

struct StatusCall {
  std::wstring text;
  std::uint8_t status;
  bool flag;
  friend bool operator==(const StatusCall&, const StatusCall&) = default;
};
using StatusHeard = Heard<StatusCall>;
void on_status(const wchar_t* text, std::uint8_t status, bool flag, void* context) {
  static_cast<StatusHeard*>(context)->add({text, status, flag});
}

using FlagHeard = Heard<bool>;
void on_rgb_status(bool active, void* context) { static_cast<FlagHeard*>(context)->add(active); }
void on_rgb_stopped(bool stopped, void* context) { static_cast<FlagHeard*>(context)->add(stopped); }

// Face-auth GET requests the library sent (the mode's 24-byte identifier, id 35).
std::size_t face_auth_reads() {
  std::size_t reads = 0;
  for (const auto& request : vc::records().property_requests)
    if (!request.is_set && request.id.size() == 24 && request.id[16] == 35) ++reads;
  return reads;
}

bool wait_until(const std::function<bool()>& done, std::chrono::milliseconds limit = 5s) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (!done()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(5ms);
  }
  return true;
}

int exclusive_sessions() {
  return vc::session_count(default_group_id(), platform::SharingMode::ExclusiveControl);
}

class DeviceEvents : public testing::LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    vc::set_recording(true);  // what the library asked of the camera
  }
  // The infrared reader: its source carries the face-auth mode.
  void open() {
    device_ = open_default_camera(VEXCAP_STREAM_MODE_EXCLUSIVE);
    ASSERT_NE(device_, nullptr);
  }
  void TearDown() override {
    if (device_ != nullptr) vexcap_device_close(device_);
    LibraryTest::TearDown();
  }
  vexcap_device* device_ = nullptr;
};

TEST_F(DeviceEvents, UnregisteringWhatWasNeverRegisteredAnswersZero) {
  open();
  EXPECT_EQ(vexcap_unregister_for_excl_ctrl_status_event(device_), 0);
  EXPECT_EQ(vexcap_unregister_for_rgb_status_event(device_), 0);
  EXPECT_EQ(vexcap_unregister_for_rgb_stopped_event(device_), 0);
  EXPECT_EQ(vexcap_unregister_for_unsupported_format_status_event(device_), 0);
}

TEST_F(DeviceEvents, AnotherApplicationTakingTheCameraReachesTheFirstRegistration) {
  open();
  StatusHeard first;
  StatusHeard second;
  ASSERT_EQ(vexcap_register_for_excl_ctrl_status_event(device_, on_status, &first), 0);
  ASSERT_EQ(vexcap_register_for_excl_ctrl_status_event(device_, on_status, &second), 0);  // ignored

  vc::set_held_by_other_app(default_group_id(), true);
  // The platform's SharedReadOnlyAvailable (1) is passed on as 1; exclusive control is gone.
  EXPECT_EQ(first.wait_for(1), (std::vector<StatusCall>{{default_group_id(), 1, false}}));
  EXPECT_TRUE(second.now().empty());
  EXPECT_EQ(vexcap_unregister_for_excl_ctrl_status_event(device_), 0);
}

TEST_F(DeviceEvents, ExclusiveControlRegistrationWaitsForFaceAuthOnlyWhenTheStatusReadsTwo) {
  open();
  vc::edit_source(default_group_id(), 0, [](vc::SourceModel& source) {
    source.exclusive_status_override = 1;
    source.face_auth->flags = 0x2;  // not the disabled mode, which the camera offers
  });
  vc::clear_records();
  StatusHeard heard;
  ASSERT_EQ(vexcap_register_for_excl_ctrl_status_event(device_, on_status, &heard), 0);
  EXPECT_EQ(face_auth_reads(), 0u);
  ASSERT_EQ(vexcap_unregister_for_excl_ctrl_status_event(device_), 0);

  vc::edit_source(default_group_id(), 0,
                  [](vc::SourceModel& source) { source.exclusive_status_override = 2; });
  auto registration = std::async(std::launch::async, [&] {
    return vexcap_register_for_excl_ctrl_status_event(device_, on_status, &heard);
  });
  EXPECT_EQ(registration.wait_for(450ms), std::future_status::timeout);
  vc::edit_source(default_group_id(), 0, [](vc::SourceModel& source) { source.face_auth->flags = 0x1; });
  EXPECT_EQ(registration.get(), 0);
  EXPECT_GE(face_auth_reads(), 3u);  // read every 200 ms until the mode settled
}

TEST_F(DeviceEvents, RgbStatusRegistrationWaitsForAQuietCameraThenReportsChanges) {
  open();
  vc::edit_ks(default_group_id(), [](vc::KsDeviceModel& ks) { ks.rgb_status = 1; });
  FlagHeard heard;
  auto registration = std::async(std::launch::async, [&] {
    return vexcap_register_for_rgb_status_event(device_, on_rgb_status, &heard);
  });
  EXPECT_EQ(registration.wait_for(450ms), std::future_status::timeout);
  vc::edit_ks(default_group_id(), [](vc::KsDeviceModel& ks) { ks.rgb_status = 0; });
  ASSERT_EQ(registration.get(), 0);
  EXPECT_TRUE(heard.now().empty());  // it starts from status 0
  FlagHeard second;
  ASSERT_EQ(vexcap_register_for_rgb_status_event(device_, on_rgb_status, &second), 0);  // ignored

  vc::edit_ks(default_group_id(), [](vc::KsDeviceModel& ks) { ks.rgb_status = 3; });
  EXPECT_EQ(heard.wait_for(1), std::vector<bool>{true});
  std::this_thread::sleep_for(250ms);  // more polls at the same status
  EXPECT_EQ(heard.now(), std::vector<bool>{true});
  EXPECT_TRUE(second.now().empty());
  EXPECT_EQ(vexcap_unregister_for_rgb_status_event(device_), 0);
  vc::edit_ks(default_group_id(), [](vc::KsDeviceModel& ks) { ks.rgb_status = 0; });
  std::this_thread::sleep_for(250ms);
  EXPECT_EQ(heard.now(), std::vector<bool>{true});
}

// The worker's own exclusive session comes and goes beside the exclusive client's.
TEST_F(DeviceEvents, RgbStoppedIsHeardOnceAfterAPassWhoseOwnReaderGotAFrame) {
  open();  // manual clock: the worker's reader sees frames only when time moves
  FlagHeard heard;
  ASSERT_EQ(vexcap_register_for_rgb_stopped_event(device_, on_rgb_stopped, &heard), 0);
  ASSERT_TRUE(wait_until([] { return exclusive_sessions() == 2; }));
  std::this_thread::sleep_for(1200ms);  // a whole pass without frames
  EXPECT_TRUE(heard.now().empty());

  ASSERT_TRUE(wait_until([&] {
    vc::advance_time(100ms);
    return !heard.now().empty();
  }));
  ASSERT_TRUE(wait_until([] { return exclusive_sessions() == 1; }));  // the worker ended
  vc::advance_time(1s);
  EXPECT_EQ(heard.now(), std::vector<bool>{true});
}

TEST_F(DeviceEvents, UnregisteringOrClosingEndsTheRgbStoppedWorkerWithoutACall) {
  open();
  FlagHeard heard;
  ASSERT_EQ(vexcap_register_for_rgb_stopped_event(device_, on_rgb_stopped, &heard), 0);
  ASSERT_TRUE(wait_until([] { return exclusive_sessions() == 2; }));
  EXPECT_EQ(vexcap_unregister_for_rgb_stopped_event(device_), 0);
  EXPECT_EQ(exclusive_sessions(), 1);  // the worker's session went before the answer

  ASSERT_EQ(vexcap_register_for_rgb_stopped_event(device_, on_rgb_stopped, &heard), 0);
  ASSERT_TRUE(wait_until([] { return exclusive_sessions() == 2; }));
  EXPECT_EQ(vexcap_device_close(device_), 0);
  device_ = nullptr;
  EXPECT_EQ(vc::session_count(default_group_id()), 0);
  vc::advance_time(1s);
  EXPECT_TRUE(heard.now().empty());
}

}  // namespace
}  // namespace vexcap
