// Hosts racing the library's lifecycle through the exports only, as independent hosts do:
// vexcap_init and vexcap_exit from many threads, a close or stop asked for from inside a frame
// callback racing the host's next open or start, and a camera unplugged while host threads call
// every kind of export.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <random>
#include <thread>
#include <vector>

#include "support/busy_request_thread.h"
#include "support/library_fixture.h"
#include "support/process_footprint.h"

namespace vexcap {
namespace {

namespace vc = virtual_camera;
using namespace std::chrono_literals;
using testing::Footprint;

using testing::default_group_id;

constexpr int kThreads = 8;

// Runs `body(i)` on kThreads threads released together.
template <typename Body>
void race(Body body) {
  std::atomic<int> ready{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i)
    threads.emplace_back([&, i] {
      ++ready;
      while (ready.load() < kThreads) std::this_thread::yield();
      body(i);
    });
  for (std::thread& thread : threads) thread.join();
}

// The process's threads before the library starts; a first thread wakes ThreadSanitizer's own
// background thread, so it is in the count.
int threads_without_library() {
  std::thread([] {}).join();
  std::this_thread::sleep_for(100ms);
  return Footprint::now().threads;
}

// Threads the library ended may still be leaving /proc for a moment.
int settled_threads(int expected) {
  int threads = Footprint::now().threads;
  for (int i = 0; i < 200 && threads > expected; ++i) {
    std::this_thread::sleep_for(5ms);
    threads = Footprint::now().threads;
  }
  return threads;
}

class LifecycleRace : public testing::LibraryTest {};

TEST_F(LifecycleRace, RacingInitsStartOneRequestThread) {
  const int threads_before = threads_without_library();
  for (int round = 0; round < 200; ++round) {
    runtime().reset();
    std::atomic<int> answers_not_zero{0};
    race([&](int) { answers_not_zero += vexcap_init() != VEXCAP_OK; });
    ASSERT_EQ(answers_not_zero.load(), 0) << "round " << round;
    ASSERT_EQ(runtime().ro_initialize_calls(), 1) << "round " << round;
    if (threads_before >= 0) {
      ASSERT_EQ(settled_threads(threads_before + 1), threads_before + 1) << "round " << round;
    }
    ASSERT_EQ(vexcap_exit(), VEXCAP_OK);
    ASSERT_EQ(runtime().ro_uninitialize_calls(), 1) << "round " << round;
  }
  if (threads_before >= 0) {
    EXPECT_EQ(settled_threads(threads_before), threads_before);
  }
}

TEST_F(LifecycleRace, RacingExitsTearDownOnceAndTheOthersFindNoLibrary) {
  for (int round = 0; round < 200; ++round) {
    runtime().reset();
    ASSERT_EQ(vexcap_init(), VEXCAP_OK);
    std::atomic<int> answers_not_zero{0};
    race([&](int) { answers_not_zero += vexcap_exit() != VEXCAP_OK; });
    ASSERT_EQ(answers_not_zero.load(), 0) << "round " << round;
    ASSERT_EQ(runtime().mf_shutdown_calls(), 1) << "round " << round;
    ASSERT_EQ(runtime().ro_uninitialize_calls(), 1) << "round " << round;
  }
}

TEST_F(LifecycleRace, InitsAndExitsRacingEndInOneConsistentState) {
  const int threads_before = threads_without_library();
  runtime().reset();
  race([](int i) {
    std::mt19937 rng(static_cast<unsigned>(i));
    for (int call = 0; call < 40; ++call) {
      const int answer = rng() % 2 ? vexcap_init() : vexcap_exit();
      EXPECT_EQ(answer, VEXCAP_OK);
    }
  });
  EXPECT_EQ(vexcap_exit(), VEXCAP_OK);
  // Every start-up was shut down again, and no request thread is left.
  EXPECT_EQ(runtime().ro_initialize_calls(), runtime().ro_uninitialize_calls());
  EXPECT_EQ(runtime().mf_startup_calls(), runtime().mf_shutdown_calls());
  if (threads_before >= 0) {
    EXPECT_EQ(settled_threads(threads_before), threads_before);
  }
}

// ---- A close or stop from inside a callback, and the host's next call -----------------------

struct CallbackOrders {
  vexcap_device* device = nullptr;
  bool close = false;           // else stop
  std::atomic<int> calls{0};
};

bool act_once_from_inside(vexcap_frame* frame, void* context) {
  auto* orders = static_cast<CallbackOrders*>(context);
  vexcap_return_frame(frame);
  if (orders->calls++ == 0) {
    if (orders->close) {
      EXPECT_EQ(vexcap_device_close(orders->device), VEXCAP_OK);
    } else {
      EXPECT_EQ(vexcap_stop_streaming(orders->device), VEXCAP_OK);
    }
  }
  return true;
}

bool count_frame(vexcap_frame* frame, void* context) {
  ++*static_cast<std::atomic<int>*>(context);
  vexcap_return_frame(frame);
  return true;
}

class CallbackRequestRace : public testing::LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    start_on_default_camera();
  }
  static vexcap_device* open(std::uint32_t mode) {
    vexcap_device* device = nullptr;
    const vexcap_open_params params{mode, 640, 480};
    EXPECT_EQ(vexcap_device_open(&device, default_group_id().c_str(), &params), VEXCAP_OK);
    return device;
  }
  // Lets a frame reach the callback while the request thread is busy with a slow discovery
  // query, then runs `next` on another thread while the callback's request still waits; the
  // query ends once `next` was asked for.
  template <typename Next>
  static void frame_then(Next next) {
    testing::BusyRequestThread busy;
    vc::advance_time(34ms);  // the callback has asked and returned
    std::thread following(next);
    std::this_thread::sleep_for(2ms);  // `next` waits for the request thread too
    busy.release();
    following.join();
  }
};

TEST_F(CallbackRequestRace, ACloseFromACallbackNeverClosesTheDeviceOpenedAfterIt) {
  for (int round = 0; round < 100; ++round) {
    for (std::uint32_t mode : {VEXCAP_STREAM_MODE_SHARED, VEXCAP_STREAM_MODE_EXCLUSIVE}) {
      CallbackOrders orders;
      orders.close = true;
      orders.device = open(mode);
      ASSERT_NE(orders.device, nullptr);
      ASSERT_EQ(vexcap_start_streaming(orders.device, act_once_from_inside, &orders), 0);
      vexcap_device* reopened = nullptr;
      frame_then([&] { reopened = open(mode); });
      ASSERT_NE(reopened, nullptr);
      // The new device is the one open: it answers, and only its two sessions remain.
      std::atomic<int> frames{0};
      EXPECT_EQ(vexcap_start_streaming(reopened, count_frame, &frames), VEXCAP_OK) << "round " << round;
      vc::advance_time(34ms);
      EXPECT_EQ(frames.load(), 1) << "round " << round;
      EXPECT_EQ(vc::session_count(default_group_id()), 2) << "round " << round;
      EXPECT_EQ(orders.calls.load(), 1) << "the closed device went on streaming, round " << round;
      ASSERT_EQ(vexcap_device_close(reopened), VEXCAP_OK) << "round " << round;
      ASSERT_EQ(vc::session_count(default_group_id()), 0) << "round " << round;
    }
  }
}

TEST_F(CallbackRequestRace, AStopFromACallbackNeverStopsTheStreamStartedAfterIt) {
  for (std::uint32_t mode : {VEXCAP_STREAM_MODE_SHARED, VEXCAP_STREAM_MODE_EXCLUSIVE}) {
    CallbackOrders orders;
    orders.device = open(mode);
    ASSERT_NE(orders.device, nullptr);
    for (int round = 0; round < 100; ++round) {
      orders.calls = 0;
      ASSERT_EQ(vexcap_start_streaming(orders.device, act_once_from_inside, &orders), 0);
      std::atomic<int> frames{0};
      frame_then([&] { EXPECT_EQ(vexcap_start_streaming(orders.device, count_frame, &frames), VEXCAP_OK); });
      vc::advance_time(34ms);
      ASSERT_EQ(frames.load(), 1) << "the restarted stream was stopped, round " << round;
      ASSERT_EQ(vexcap_stop_streaming(orders.device), VEXCAP_OK);
    }
    EXPECT_EQ(vexcap_device_close(orders.device), VEXCAP_OK);
  }
}

// ---- Unplugged while host threads call every kind of export ---------------------------------

bool keep_streaming(vexcap_frame* frame, void*) {
  vexcap_return_frame(frame);
  return true;
}

void call_anything(vexcap_device* device, std::mt19937& rng) {
  std::uint64_t exposure = 0;
  std::uint32_t value = 0;
  vexcap_property property{VEXCAP_PROP_HIRES_SENSOR_TYPE, 0};
  std::uint8_t bytes[VEXCAP_PANEL_COUNT] = {};
  switch (rng() % 12) {
    case 0: vexcap_start_streaming(device, keep_streaming, nullptr); break;
    case 1: vexcap_start_streaming_ex(device, keep_streaming, nullptr, VEXCAP_STREAM_SELECT_EXCLUSIVE); break;
    case 2: vexcap_stop_streaming(device); break;
    case 3: vexcap_stop_streaming_ex(device, VEXCAP_STREAM_SELECT_EXCLUSIVE); break;
    case 4: vexcap_set_exposure(device, 20000); break;
    case 5: vexcap_get_exposure(device, &exposure); break;
    case 6: vexcap_get_led_power(device, &value); break;
    case 7: vexcap_get_dev_property(device, &property); break;
    case 8: vexcap_register_for_excl_ctrl_status_event(device, [](const wchar_t*, std::uint8_t, bool, void*) {}, nullptr); break;
    case 9: vexcap_unregister_for_excl_ctrl_status_event(device); break;
    case 10: vexcap_get_device_locations(L"vid_f00d", bytes); break;
    default: vexcap_get_source_group_type(&value); break;
  }
}

TEST(UnplugRace, HostThreadsCallingEveryExportNeitherDeadlockNorCrash) {
  vc::reset();
  vc::use_scenario(vc::default_scenario());  // real time: frames keep coming
  ASSERT_EQ(vexcap_init(), VEXCAP_OK);
  for (int round = 0; round < 10; ++round) {
    vexcap_device* device = nullptr;
    const vexcap_open_params params{VEXCAP_STREAM_MODE_EXCLUSIVE, 640, 480};
    ASSERT_EQ(vexcap_device_open(&device, default_group_id().c_str(), &params), VEXCAP_OK);
    std::atomic<bool> stop{false};
    std::vector<std::future<void>> hosts;
    for (int i = 0; i < 4; ++i)
      hosts.push_back(std::async(std::launch::async, [&, i] {
        std::mt19937 rng(static_cast<unsigned>(round * 10 + i));
        while (!stop.load()) call_anything(device, rng);
      }));
    std::this_thread::sleep_for(20ms);
    vc::raise_capture_failed(hr(0xC00D3EA2), L"The device failed.", default_group_id());
    vc::remove_group(default_group_id());
    std::this_thread::sleep_for(30ms);
    vc::add_group(vc::default_scenario().groups.at(0));
    std::this_thread::sleep_for(20ms);
    stop = true;
    for (std::future<void>& host : hosts) {
      if (host.wait_for(30s) != std::future_status::ready) {
        std::fprintf(stderr, "host threads deadlocked in round %d\n", round);
        std::abort();  // nothing would end the test otherwise
      }
    }
    EXPECT_EQ(vexcap_device_close(device), VEXCAP_OK);
    EXPECT_EQ(vc::session_count(default_group_id()), 0);
  }
  EXPECT_EQ(vexcap_exit(), VEXCAP_OK);
  vc::reset();
}

}  // namespace
}  // namespace vexcap
