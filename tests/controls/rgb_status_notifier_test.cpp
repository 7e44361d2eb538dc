#include "controls/rgb_status_registration.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "controls/fakes/fake_device_platform.h"
#include "support/log_capture.h"

namespace vexcap::controls {
namespace {

using namespace std::chrono_literals;
using platform::Guid;
using testing::KsReply;

const Guid kDevSpecific{0x941C7AC0, 0xC559, 0x11D0, {0x8A, 0x2B, 0x00, 0xA0, 0xC9, 0x25, 0x5A, 0xC1}};
const Guid kVideoProcessing{0xDFF229E5, 0xF70F, 0x11D0, {0xB9, 0x17, 0x00, 0xA0, 0xC9, 0x22, 0x31, 0x96}};
const Guid kUnit1{0x26B8105A, 0x0713, 0x4870, {0x97, 0x9D, 0xDA, 0x79, 0x44, 0x4B, 0xB6, 0x8E}};
constexpr std::uint32_t kGetTopology = 0x10000001;

// What the host's callback saw.
struct Reports {
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<bool> seen;

  static void callback(bool active, void* context) {
    auto* self = static_cast<Reports*>(context);
    std::lock_guard<std::mutex> guard(self->mutex);
    self->seen.push_back(active);
    self->changed.notify_all();
  }
  bool wait_for_count(std::size_t count) {
    std::unique_lock<std::mutex> guard(mutex);
    return changed.wait_for(guard, 3s, [&] { return seen.size() >= count; });
  }
  std::vector<bool> snapshot() {
    std::lock_guard<std::mutex> guard(mutex);
    return seen;
  }
};

class RgbStatusNotifierTest : public ::testing::Test {
 protected:
  RgbStatusNotifierTest() {
    platform.source->topology->nodes = {kVideoProcessing, kDevSpecific};
    ks().answer(kUnit1, 0, kGetTopology, 1,
                KsReply{0, {0x5A, 0x10, 0xB8, 0x26, 0x13, 0x07, 0x70, 0x48}, 8});
    set_status(0);
  }
  testing::FakeKsControl& ks() { return *platform.source->control; }
  void set_status(std::uint8_t status) {
    ks().answer(kUnit1, 15, kGetTopology, 1, KsReply{0, {status}, 1});
  }
  void load() { ASSERT_EQ(xu.load(platform, 0), HR_OK); }

  testing::FakeDevicePlatform platform;
  testing::LogCapture log;
  Reports reports;
  ExtensionUnit xu;  // last: its notifier stops before the reports go
};

TEST_F(RgbStatusNotifierTest, ReportsAChangeOnceAndStopsAfterUnregistering) {
  load();
  ASSERT_EQ(register_rgb_status_notifier(&xu, true, false, nullptr, &Reports::callback, &reports),
            HR_OK);
  std::this_thread::sleep_for(250ms);
  EXPECT_TRUE(reports.snapshot().empty());  // no change yet

  set_status(1);
  ASSERT_TRUE(reports.wait_for_count(1));
  std::this_thread::sleep_for(350ms);  // several more polls at the same status
  EXPECT_EQ(reports.snapshot(), std::vector<bool>{true});

  set_status(0);
  ASSERT_TRUE(reports.wait_for_count(2));
  EXPECT_EQ(reports.snapshot(), (std::vector<bool>{true, false}));

  unregister_rgb_status_notifier(&xu);
  set_status(1);
  std::this_thread::sleep_for(300ms);
  EXPECT_EQ(reports.snapshot().size(), 2u);
}

TEST_F(RgbStatusNotifierTest, NothingIsRegisteredWithoutAnInitializedClientAndUnit) {
  load();
  EXPECT_EQ(register_rgb_status_notifier(nullptr, true, false, nullptr, &Reports::callback, &reports),
            HR_OK);
  EXPECT_EQ(register_rgb_status_notifier(&xu, false, false, nullptr, &Reports::callback, &reports),
            HR_OK);
  ks().clear();
  set_status(1);
  std::this_thread::sleep_for(250ms);
  EXPECT_TRUE(ks().requests().empty());  // nobody polls
  EXPECT_TRUE(reports.snapshot().empty());
}

TEST_F(RgbStatusNotifierTest, RegistrationWaitsForAQuietCamera) {
  load();
  set_status(1);
  std::atomic<bool> registered{false};
  std::thread request_thread([&] {
    register_rgb_status_notifier(&xu, true, false, nullptr, &Reports::callback, &reports);
    registered = true;
  });
  std::this_thread::sleep_for(450ms);
  EXPECT_FALSE(registered);
  set_status(0);
  request_thread.join();
  EXPECT_TRUE(registered);
  std::this_thread::sleep_for(250ms);
  EXPECT_TRUE(reports.snapshot().empty());  // started from status 0: nothing to report
}

TEST_F(RgbStatusNotifierTest, AnInfraredRegistrationWaitsForTheDisabledFaceAuthMode) {
  load();
  // Capability offers the disabled mode (0x1); flags show 0x2 twice, then 0x1.
  int reads = 0;
  auto read_face_auth = [&](std::uint8_t* buffer) {
    ++reads;
    std::fill(buffer, buffer + 40, 0);
    buffer[16] = reads < 3 ? 0x02 : 0x01;
    buffer[24] = 0x03;
    return HR_OK;
  };
  EXPECT_EQ(register_rgb_status_notifier(&xu, true, true, read_face_auth, &Reports::callback,
                                         &reports),
            HR_OK);
  EXPECT_EQ(reads, 3);

  // A camera without the disabled mode is not waited for; neither is a colour source.
  reads = 0;
  auto no_disabled_mode = [&](std::uint8_t* buffer) {
    ++reads;
    std::fill(buffer, buffer + 40, 0);
    buffer[16] = 0x02;
    buffer[24] = 0x02;
    return HR_OK;
  };
  EXPECT_EQ(register_rgb_status_notifier(&xu, true, true, no_disabled_mode, &Reports::callback,
                                         &reports),
            HR_OK);
  EXPECT_EQ(reads, 1);
  EXPECT_EQ(register_rgb_status_notifier(&xu, true, false, read_face_auth, &Reports::callback,
                                         &reports),
            HR_OK);
  EXPECT_EQ(reads, 1);
}

TEST_F(RgbStatusNotifierTest, ASecondRegistrationKeepsTheFirstCallback) {
  load();
  Reports second;
  ASSERT_EQ(register_rgb_status_notifier(&xu, true, false, nullptr, &Reports::callback, &reports),
            HR_OK);
  ASSERT_EQ(register_rgb_status_notifier(&xu, true, false, nullptr, &Reports::callback, &second),
            HR_OK);
  set_status(2);
  ASSERT_TRUE(reports.wait_for_count(1));
  std::this_thread::sleep_for(250ms);
  EXPECT_EQ(reports.snapshot(), std::vector<bool>{true});  // once: the status is shared
  EXPECT_TRUE(second.snapshot().empty());
  // Destruction of the unit stops both polling threads.
}

}  // namespace
}  // namespace vexcap::controls
