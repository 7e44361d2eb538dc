// Every export against each class of bad input: null pointers, a device whose slot was emptied,
// a device closed by another thread while a call is in flight, numbers out of range, calls
// without a running library and calls from inside each kind of callback. Each class checks the
// codes, the log lines where there are some, that nothing was left behind (heap, threads,
// descriptors, frame records) and that a good call works afterwards.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "support/library_fixture.h"
#include "support/log_capture.h"
#include "support/process_footprint.h"

namespace vexcap {
namespace {

namespace vc = virtual_camera;
using namespace std::chrono_literals;
using testing::Footprint;
using testing::LogCapture;

using testing::default_group_id;

// Frames handed to the host, and given back; a callback that keeps one would show here.
std::atomic<int> g_frames_delivered{0};
std::atomic<int> g_frames_returned{0};

bool return_frame(vexcap_frame* frame, void*) {
  ++g_frames_delivered;
  if (vexcap_return_frame(frame) == VEXCAP_OK) ++g_frames_returned;
  return true;
}
void on_status(const wchar_t*, std::uint8_t, bool, void*) {}
void on_rgb_status(bool, void*) {}
void on_unsupported(std::uint32_t, void*) {}
void on_rgb_stopped(bool, void*) {}

// What the rows point at; the device is the one under test.
struct Args {
  vexcap_device* device = nullptr;
  vexcap_device* opened = nullptr;
  vexcap_open_params params{VEXCAP_STREAM_MODE_EXCLUSIVE, 640, 480};
  vexcap_property property{VEXCAP_PROP_HIRES_SENSOR_TYPE, 0};
  vexcap_device_callbacks callbacks{};
  vexcap_device_subscription* subscription = nullptr;
  std::uint8_t bytes[8] = {};
  std::uint32_t u32 = 0;
  std::uint64_t u64 = 0;
  unsigned int led = 0;
};

struct Row {
  const char* name;
  std::function<int(Args&)> call;
  int expected;
  std::vector<std::string> log_lines = {};  // lines the call must log
};

vexcap_device* copy_of(const vexcap_device& handle) {
  auto* copy = static_cast<vexcap_device*>(std::malloc(sizeof(vexcap_device)));
  *copy = handle;
  return copy;
}

// The 21 exports that take a device handle, with their answers on an open exclusive-mode device
// (infrared reader) of the default camera. The close goes last.
std::vector<Row> device_rows() {
  return {
      {"start_streaming", [](Args& a) { return vexcap_start_streaming(a.device, return_frame, nullptr); }, 0},
      {"stop_streaming", [](Args& a) { return vexcap_stop_streaming(a.device); }, 0},
      {"start_streaming_ex", [](Args& a) { return vexcap_start_streaming_ex(a.device, return_frame, nullptr, 0); }, 0},
      {"stop_streaming_ex", [](Args& a) { return vexcap_stop_streaming_ex(a.device, 0); }, 0},
      {"set_exposure", [](Args& a) { return vexcap_set_exposure(a.device, 20000); }, 0},
      {"set_iso_speed", [](Args& a) { return vexcap_set_iso_speed(a.device, 100); }, 0},
      {"set_led_power", [](Args& a) { return vexcap_set_led_power(a.device, 10); }, 0},
      {"get_exposure", [](Args& a) { return vexcap_get_exposure(a.device, &a.u64); }, 0},
      {"get_iso_speed", [](Args& a) { return vexcap_get_iso_speed(a.device, &a.u32); }, 0},
      {"get_led_power", [](Args& a) { return vexcap_get_led_power(a.device, &a.led); }, 0},
      {"set_dev_property", [](Args& a) {
         vexcap_property property{VEXCAP_PROP_XU_CONTROL_18, VEXCAP_XU_CONTROL_18_ONE};
         return vexcap_set_dev_property(a.device, &property);
       }, 0},
      {"get_dev_property", [](Args& a) { return vexcap_get_dev_property(a.device, &a.property); }, 0},
      {"register_excl_ctrl", [](Args& a) { return vexcap_register_for_excl_ctrl_status_event(a.device, on_status, nullptr); }, 0},
      {"unregister_excl_ctrl", [](Args& a) { return vexcap_unregister_for_excl_ctrl_status_event(a.device); }, 0},
      {"register_rgb_status", [](Args& a) { return vexcap_register_for_rgb_status_event(a.device, on_rgb_status, nullptr); }, 0},
      {"unregister_rgb_status", [](Args& a) { return vexcap_unregister_for_rgb_status_event(a.device); }, 0},
      {"register_unsupported", [](Args& a) { return vexcap_register_for_unsupported_format_status_event(a.device, on_unsupported, nullptr); }, 0},
      {"unregister_unsupported", [](Args& a) { return vexcap_unregister_for_unsupported_format_status_event(a.device); }, 0},
      {"register_rgb_stopped", [](Args& a) { return vexcap_register_for_rgb_stopped_event(a.device, on_rgb_stopped, nullptr); }, 0},
      {"unregister_rgb_stopped", [](Args& a) { return vexcap_unregister_for_rgb_stopped_event(a.device); }, 0},
      // The close frees the handle it is given: it gets a copy, so the table can run again.
      {"device_close", [](Args& a) { return vexcap_device_close(copy_of(*a.device)); }, 0},
  };
}

// The 12 exports without a device handle, with their answers on the running library.
std::vector<Row> library_rows() {
  return {
      {"get_device_capabilities",
       [](Args& a) { return vexcap_get_device_capabilities(default_group_id().c_str(), a.bytes); }, 0},
      {"get_device_locations", [](Args& a) { return vexcap_get_device_locations(L"usb#vid_f00d", a.bytes); },
       0},
      {"get_source_group_type", [](Args& a) { return vexcap_get_source_group_type(&a.u32); }, 0},
      {"get_targeted_location", [](Args& a) { return vexcap_get_targeted_location(&a.u32); }, 0},
      {"is_vidpid_used_by_device",
       [](Args&) {
         return vexcap_is_vidpid_used_by_device(default_group_id().c_str(), L"VID_F00D", L"PID_CAFE");
       },
       1},
      {"get_source_group_type_for_vid_pid",
       [](Args& a) { return vexcap_get_source_group_type_for_vid_pid(L"VID_F00D", L"PID_CAFE", &a.u32); }, 0},
      {"return_frame",
       [](Args&) {
         auto* frame = static_cast<vexcap_frame*>(std::calloc(1, sizeof(vexcap_frame)));
         frame->data = static_cast<std::uint8_t*>(std::malloc(64));
         return vexcap_return_frame(frame);
       },
       0},
      {"device callbacks",
       [](Args& a) {
         const int registered = vexcap_regiester_for_device_callbacks(&a.subscription, &a.callbacks, nullptr);
         return registered != 0 ? registered : vexcap_unregiester_device_callbacks(a.subscription);
       },
       0},
      {"init", [](Args&) { return vexcap_init(); }, 0},  // a second init is a no-op
  };
}

class BadInputMatrix : public testing::LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    g_frames_delivered = 0;
    g_frames_returned = 0;
  }
  void TearDown() override {
    EXPECT_EQ(g_frames_delivered.load(), g_frames_returned.load()) << "frame records kept";
    LibraryTest::TearDown();
  }

  // Runs every row and checks its code and log lines; the log is captured from here on.
  void run_rows(const std::vector<Row>& rows, Args& args, const std::string& what) {
    for (const Row& row : rows) {
      log_.clear();
      EXPECT_EQ(row.call(args), row.expected) << what << ": " << row.name;
      for (const std::string& line : row.log_lines)
        EXPECT_TRUE(log_.contains(line)) << what << ": " << row.name << " did not log \"" << line << "\"";
    }
  }

  // Runs `pass` once, which warms caches and lazily made threads up, then twice `rounds` times,
  // and expects one of the two runs of `rounds` to leave the process holding no more than before
  // it: a leak of a call grows both, while something made once and late (the sanitizer runtime's
  // own blocks for threads, at a moment the scheduling decides) lands in one only. The slack
  // covers the per-thread caches of glibc's allocator (a few KB either way); the sanitizers' count
  // is exact, so there any leak of a call shows over the rounds.
  static void expect_nothing_left(const std::string& what, int rounds, const std::function<void()>& pass) {
    constexpr long long kSlack = 16 * 1024;
    pass();
    const Footprint before = Footprint::now();
    for (int i = 0; i < rounds; ++i) pass();
    const Footprint middle = settled(before, kSlack);
    for (int i = 0; i < rounds; ++i) pass();
    const Footprint after = settled(middle, kSlack);
    EXPECT_TRUE(middle.within(before, kSlack) || after.within(middle, kSlack))
        << what << ": before " << before.text() << ", after " << rounds << " passes " << middle.text()
        << ", after " << rounds << " more " << after.text();
  }

  // Threads the last pass ended may still be on their way out, holding their own blocks.
  static Footprint settled(const Footprint& reference, long long slack) {
    Footprint now = Footprint::now();
    for (int i = 0; i < 100 && !now.within(reference, slack); ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
      now = Footprint::now();
    }
    return now;
  }

  // The good call after bad ones: a device opens, streams a frame and closes.
  static void expect_a_good_session() {
    vexcap_device* device = open_default_camera(VEXCAP_STREAM_MODE_EXCLUSIVE);
    ASSERT_NE(device, nullptr);
    const int delivered = g_frames_delivered.load();
    ASSERT_EQ(vexcap_start_streaming_ex(device, return_frame, nullptr, VEXCAP_STREAM_SELECT_EXCLUSIVE), 0);
    vc::advance_time(34ms);
    EXPECT_GT(g_frames_delivered.load(), delivered);
    EXPECT_EQ(vexcap_device_close(device), 0);
  }

  LogCapture log_;
};

// Null in each pointer argument is refused before any request: nothing reaches the request
// thread, so nothing is logged.
TEST_F(BadInputMatrix, NullPointers) {
  ASSERT_EQ(vexcap_init(), 0);
  vexcap_device device{};
  // clang-format off
  const std::vector<Row> rows = {
      {"capabilities/id", [](Args& a) { return vexcap_get_device_capabilities(nullptr, a.bytes); }, VEXCAP_E_INVALID_ARG},
      {"capabilities/out", [](Args&) { return vexcap_get_device_capabilities(L"id", nullptr); }, VEXCAP_E_INVALID_ARG},
      {"locations/id", [](Args& a) { return vexcap_get_device_locations(nullptr, a.bytes); }, VEXCAP_E_INVALID_ARG},
      {"locations/out", [](Args&) { return vexcap_get_device_locations(L"id", nullptr); }, VEXCAP_E_INVALID_ARG},
      {"group type", [](Args&) { return vexcap_get_source_group_type(nullptr); }, VEXCAP_E_INVALID_ARG},
      {"targeted", [](Args&) { return vexcap_get_targeted_location(nullptr); }, VEXCAP_E_INVALID_ARG},
      {"vidpid/group", [](Args&) { return vexcap_is_vidpid_used_by_device(nullptr, L"v", L"p"); }, 0},
      {"vidpid/vid", [](Args&) { return vexcap_is_vidpid_used_by_device(L"g", nullptr, L"p"); }, 0},
      {"vidpid/pid", [](Args&) { return vexcap_is_vidpid_used_by_device(L"g", L"v", nullptr); }, 0},
      {"type vid/pid/vid", [](Args& a) { return vexcap_get_source_group_type_for_vid_pid(nullptr, L"p", &a.u32); }, VEXCAP_E_INVALID_ARG},
      {"type vid/pid/pid", [](Args& a) { return vexcap_get_source_group_type_for_vid_pid(L"v", nullptr, &a.u32); }, VEXCAP_E_INVALID_ARG},
      {"type vid/pid/out", [](Args&) { return vexcap_get_source_group_type_for_vid_pid(L"v", L"p", nullptr); }, VEXCAP_E_INVALID_ARG},
      {"open/out", [](Args& a) { return vexcap_device_open(nullptr, L"id", &a.params); }, VEXCAP_E_INVALID_ARG},
      {"open/id", [](Args& a) { return vexcap_device_open(&a.opened, nullptr, &a.params); }, VEXCAP_E_INVALID_ARG},
      // Not checked by the interface's rule, but read by the request: refused like the others.
      {"open/params", [](Args& a) { return vexcap_device_open(&a.opened, L"id", nullptr); }, VEXCAP_E_INVALID_ARG},
      {"close", [](Args&) { return vexcap_device_close(nullptr); }, VEXCAP_E_INVALID_ARG},
      {"start", [](Args&) { return vexcap_start_streaming(nullptr, return_frame, nullptr); }, VEXCAP_E_INVALID_ARG},
      {"start ex", [](Args&) { return vexcap_start_streaming_ex(nullptr, return_frame, nullptr, 1); }, VEXCAP_E_INVALID_ARG},
      {"stop", [](Args&) { return vexcap_stop_streaming(nullptr); }, VEXCAP_E_INVALID_ARG},
      {"stop ex", [](Args&) { return vexcap_stop_streaming_ex(nullptr, 1); }, VEXCAP_E_INVALID_ARG},
      {"return frame", [](Args&) { return vexcap_return_frame(nullptr); }, VEXCAP_E_INVALID_ARG},
      {"set exposure", [](Args&) { return vexcap_set_exposure(nullptr, 1); }, VEXCAP_E_INVALID_ARG},
      {"set iso", [](Args&) { return vexcap_set_iso_speed(nullptr, 1); }, VEXCAP_E_INVALID_ARG},
      {"set led", [](Args&) { return vexcap_set_led_power(nullptr, 1); }, VEXCAP_E_INVALID_ARG},
      {"get exposure/dev", [](Args& a) { return vexcap_get_exposure(nullptr, &a.u64); }, VEXCAP_E_INVALID_ARG},
      {"get exposure/out", [&](Args&) { return vexcap_get_exposure(&device, nullptr); }, VEXCAP_E_INVALID_ARG},
      {"get iso/dev", [](Args& a) { return vexcap_get_iso_speed(nullptr, &a.u32); }, VEXCAP_E_INVALID_ARG},
      {"get iso/out", [&](Args&) { return vexcap_get_iso_speed(&device, nullptr); }, VEXCAP_E_INVALID_ARG},
      {"get led/dev", [](Args& a) { return vexcap_get_led_power(nullptr, &a.led); }, VEXCAP_E_INVALID_ARG},
      {"set property/dev", [](Args& a) { return vexcap_set_dev_property(nullptr, &a.property); }, VEXCAP_E_INVALID_ARG},
      {"set property/record", [&](Args&) { return vexcap_set_dev_property(&device, nullptr); }, VEXCAP_E_INVALID_ARG},
      {"get property/dev", [](Args& a) { return vexcap_get_dev_property(nullptr, &a.property); }, VEXCAP_E_INVALID_ARG},
      {"get property/record", [&](Args&) { return vexcap_get_dev_property(&device, nullptr); }, VEXCAP_E_INVALID_ARG},
      {"device callbacks/out", [](Args& a) { return vexcap_regiester_for_device_callbacks(nullptr, &a.callbacks, nullptr); }, VEXCAP_E_INVALID_ARG},
      {"device callbacks off", [](Args&) { return vexcap_unregiester_device_callbacks(nullptr); }, VEXCAP_E_INVALID_ARG},
      {"excl", [](Args&) { return vexcap_register_for_excl_ctrl_status_event(nullptr, on_status, nullptr); }, VEXCAP_E_INVALID_ARG},
      {"excl off", [](Args&) { return vexcap_unregister_for_excl_ctrl_status_event(nullptr); }, VEXCAP_E_INVALID_ARG},
      {"rgb status", [](Args&) { return vexcap_register_for_rgb_status_event(nullptr, on_rgb_status, nullptr); }, VEXCAP_E_INVALID_ARG},
      {"rgb status off", [](Args&) { return vexcap_unregister_for_rgb_status_event(nullptr); }, VEXCAP_E_INVALID_ARG},
      {"unsupported", [](Args&) { return vexcap_register_for_unsupported_format_status_event(nullptr, on_unsupported, nullptr); }, VEXCAP_E_INVALID_ARG},
      {"unsupported off", [](Args&) { return vexcap_unregister_for_unsupported_format_status_event(nullptr); }, VEXCAP_E_INVALID_ARG},
      {"rgb stopped", [](Args&) { return vexcap_register_for_rgb_stopped_event(nullptr, on_rgb_stopped, nullptr); }, VEXCAP_E_INVALID_ARG},
      {"rgb stopped off", [](Args&) { return vexcap_unregister_for_rgb_stopped_event(nullptr); }, VEXCAP_E_INVALID_ARG},
  };
  // clang-format on
  Args args;
  expect_nothing_left("null pointers", 200, [&] { run_rows(rows, args, "null"); });
  EXPECT_TRUE(log_.lines().empty()) << log_.lines().front();
  EXPECT_EQ(args.opened, nullptr);
  EXPECT_EQ(args.subscription, nullptr);
  expect_a_good_session();
}

// A handle whose slot holds no device any more (its device was closed): every request answers
// "not a valid state", the close "failed" (and still frees the handle it was given). The same
// holds once every device is closed, and the discovery queries keep answering.
TEST_F(BadInputMatrix, ClosedDevices) {
  Args exclusive, shared, other_mode;
  exclusive.device = open_default_camera(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(exclusive.device, nullptr);
  const vexcap_open_params params{VEXCAP_STREAM_MODE_SHARED, 640, 480};
  ASSERT_EQ(vexcap_device_open(&shared.device, default_group_id().c_str(), &params), 0);
  const vexcap_device exclusive_handle = *exclusive.device;
  const vexcap_device shared_handle = *shared.device;
  ASSERT_EQ(vexcap_device_close(exclusive.device), 0);
  ASSERT_EQ(vexcap_device_close(shared.device), 0);
  exclusive.device = copy_of(exclusive_handle);
  shared.device = copy_of(shared_handle);
  other_mode.device = copy_of(vexcap_device{3, 0, 0});  // any non-zero mode names the exclusive slot
  log_.resume();

  std::vector<Row> rows = device_rows();
  for (Row& row : rows) row.expected = VEXCAP_E_INVALID_STATE;
  rows.back().expected = VEXCAP_E_FAIL;  // the close of an empty slot
  expect_nothing_left("closed devices", 100, [&] {
    run_rows(rows, exclusive, "exclusive slot");
    run_rows(rows, shared, "shared slot");
    run_rows(rows, other_mode, "mode 3");
    run_rows(library_rows(), shared, "no device open");
  });
  EXPECT_EQ(vc::session_count(default_group_id()), 0);
  std::free(exclusive.device);
  std::free(shared.device);
  std::free(other_mode.device);
  expect_a_good_session();
}

// Before vexcap_init and after vexcap_exit there is no request thread: requests answer "not a
// valid state" (a choice of this library: nothing documents an answer there), the boolean
// query 0; returning a frame and the device callbacks need no request thread and work.
TEST_F(BadInputMatrix, NoLibrary) {
  std::vector<Row> rows = device_rows();
  for (Row& row : rows) row.expected = VEXCAP_E_INVALID_STATE;
  std::vector<Row> library = library_rows();
  library.pop_back();  // init is the good call below
  for (Row& row : library) {
    const std::string name = row.name;
    if (name == "is_vidpid_used_by_device") row.expected = 0;
    else if (name != "return_frame" && name != "device callbacks") row.expected = VEXCAP_E_INVALID_STATE;
  }
  library.push_back(
      {"device_open",
       [](Args& a) { return vexcap_device_open(&a.opened, default_group_id().c_str(), &a.params); },
       VEXCAP_E_INVALID_STATE});
  library.push_back({"exit", [](Args&) { return vexcap_exit(); }, 0});

  vexcap_device handle{VEXCAP_STREAM_MODE_EXCLUSIVE, 0, 0};
  Args args;
  args.device = &handle;
  expect_nothing_left("before init", 100, [&] {
    run_rows(rows, args, "before init");
    run_rows(library, args, "before init");
  });
  EXPECT_EQ(args.opened, nullptr);
  EXPECT_TRUE(log_.lines().empty());

  expect_a_good_session();
  ASSERT_EQ(vexcap_exit(), 0);
  run_rows(rows, args, "after exit");
  run_rows(library, args, "after exit");
  expect_a_good_session();
}

// Numbers out of range: clamped, refused with the documented code or ignored with a log line.
TEST_F(BadInputMatrix, OutOfRangeNumbers) {
  Args args;
  args.device = open_default_camera(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(args.device, nullptr);
  log_.resume();
  const vc::ExposureModel exposure = *vc::default_scenario().groups[0].sources[0].exposure;
  auto set_property = [](std::uint32_t id, std::uint32_t value) {
    return [id, value](Args& a) {
      vexcap_property property{id, value};
      return vexcap_set_dev_property(a.device, &property);
    };
  };
  // clang-format off
  const std::vector<Row> rows = {
      {"exposure above max", [&](Args& a) {
         const int result = vexcap_set_exposure(a.device, INT64_MAX);
         EXPECT_EQ(vexcap_get_exposure(a.device, &a.u64), 0);
         EXPECT_EQ(a.u64, static_cast<std::uint64_t>(exposure.max));
         return result;
       }, 0},
      {"exposure below min", [&](Args& a) {
         const int result = vexcap_set_exposure(a.device, INT64_MIN);
         EXPECT_EQ(vexcap_get_exposure(a.device, &a.u64), 0);
         EXPECT_EQ(a.u64, static_cast<std::uint64_t>(exposure.min));
         return result;
       }, 0},
      // Passed to the unit's gain unchanged; the camera refuses it and no ISO control takes over.
      {"iso speed 2^32-1", [](Args& a) { return vexcap_set_iso_speed(a.device, UINT32_MAX); }, VEXCAP_E_INVALID_ARG},
      {"led power 2^32-1", [](Args& a) { return vexcap_set_led_power(a.device, UINT32_MAX); }, 0},
      // Started twice: the second start replaces the first one's frame handler (the heap shows).
      {"start selector 2^32-1, twice", [](Args& a) {
         const int first = vexcap_start_streaming_ex(a.device, return_frame, nullptr, UINT32_MAX);
         return first != 0 ? first : vexcap_start_streaming_ex(a.device, return_frame, nullptr, UINT32_MAX);
       }, 0},
      {"stop selector 2^32-1", [](Args& a) { return vexcap_stop_streaming_ex(a.device, UINT32_MAX); }, 0},
      {"set property id 0", set_property(0, 1), 0, {"E: Unsupported device property id"}},
      {"set property id 7", set_property(7, 1), 0, {"E: Unsupported device property id"}},
      {"set property id 17 (get only)", set_property(VEXCAP_PROP_RGB_STATUS, 1), 0, {"E: Unsupported device property id"}},
      {"set property id 21", set_property(21, 1), 0, {"E: Unsupported device property id"}},
      {"set property id 2^32-1", set_property(UINT32_MAX, 1), 0, {"E: Unsupported device property id"}},
      {"get property id 3", [](Args& a) {
         vexcap_property property{3, 1234};
         const int result = vexcap_get_dev_property(a.device, &property);
         EXPECT_EQ(property.value, 1234u);
         return result;
       }, 0, {"D: get_dev_property: 3", "E: Unsupported device property id"}},
      {"get property id 2^32-1", [](Args& a) {
         vexcap_property property{UINT32_MAX, 1234};
         const int result = vexcap_get_dev_property(a.device, &property);
         EXPECT_EQ(property.value, 1234u);
         return result;
       }, 0, {"D: get_dev_property: -1", "E: Unsupported device property id"}},
      {"face-auth mode 0", set_property(VEXCAP_PROP_FACE_AUTH_MODE, 0), -5, {"I: header version: 0x1"}},
      {"LLC 1", set_property(VEXCAP_PROP_LLC, 1), -5, {"I: payload: 0x1"}},
      {"stream type 10 (infrared)", set_property(VEXCAP_PROP_STREAM_TYPE, 10), VEXCAP_E_INVALID_ARG},
      {"stream type 2^32-1", set_property(VEXCAP_PROP_STREAM_TYPE, UINT32_MAX), VEXCAP_E_INVALID_ARG},
      {"stream type applied 2^32-1", set_property(VEXCAP_PROP_STREAM_TYPE_APPLY, UINT32_MAX), VEXCAP_E_INVALID_ARG},
      {"control 18 value 7", set_property(VEXCAP_PROP_XU_CONTROL_18, 7), 0},
      {"capabilities of an empty id", [](Args& a) { return vexcap_get_device_capabilities(L"", a.bytes); }, VEXCAP_E_FAIL},
      {"capabilities of a 4096-character id", [](Args& a) {
         return vexcap_get_device_capabilities(std::wstring(4096, L'U').c_str(), a.bytes);
       }, VEXCAP_E_FAIL},
      {"locations of a 4096-character id", [](Args& a) {
         return vexcap_get_device_locations(std::wstring(4096, L'u').c_str(), a.bytes);
       }, VEXCAP_E_FAIL},
      {"vid/pid of 4096 characters", [](Args& a) {
         const std::wstring text(4096, L'V');
         return vexcap_get_source_group_type_for_vid_pid(text.c_str(), text.c_str(), &a.u32);
       }, VEXCAP_E_FAIL},
  };
  // clang-format on
  expect_nothing_left("out of range", 200, [&] { run_rows(rows, args, "out of range"); });

  // Open parameters at the ends of their ranges (a mode naming a source kind the camera lacks
  // retries without end, as documented, so it has no row).
  vexcap_device* wide = nullptr;
  const vexcap_open_params params{VEXCAP_STREAM_MODE_SHARED, 0xFFFF, 0xFFFF};
  EXPECT_EQ(vexcap_device_open(&wide, default_group_id().c_str(), &params), 0);
  EXPECT_EQ(vexcap_device_close(wide), 0);
  EXPECT_EQ(vexcap_device_close(args.device), 0);
  expect_a_good_session();
}

// A call held inside the camera while another thread closes its device: the close waits for
// the call in flight, which answers as usual; afterwards the slot is empty.
TEST_F(BadInputMatrix, DeviceClosedByAnotherThreadMidCall) {
  struct HeldRow {
    const char* name;
    vc::PlatformCall held;
    std::uint32_t mode;  // the colour reader (0) has no torch: its LED is read from the unit
    std::function<int(vexcap_device*)> call;
  };
  auto property = [](std::uint32_t id, std::uint32_t value, bool set) {
    return [id, value, set](vexcap_device* device) {
      vexcap_property record{id, value};
      return set ? vexcap_set_dev_property(device, &record) : vexcap_get_dev_property(device, &record);
    };
  };
  const std::vector<HeldRow> rows = {
      {"start_streaming", vc::PlatformCall::StartReader, 1, [](vexcap_device* d) { return vexcap_start_streaming(d, return_frame, nullptr); }},
      {"start_streaming_ex", vc::PlatformCall::StartReader, 1, [](vexcap_device* d) { return vexcap_start_streaming_ex(d, return_frame, nullptr, 1); }},
      {"set_exposure", vc::PlatformCall::SetControl, 1, [](vexcap_device* d) { return vexcap_set_exposure(d, 20000); }},
      {"set_iso_speed", vc::PlatformCall::KsProperty, 1, [](vexcap_device* d) { return vexcap_set_iso_speed(d, 100); }},
      {"set_led_power", vc::PlatformCall::KsProperty, 1, [](vexcap_device* d) { return vexcap_set_led_power(d, 10); }},
      {"get_iso_speed", vc::PlatformCall::KsProperty, 1, [](vexcap_device* d) { std::uint32_t v; return vexcap_get_iso_speed(d, &v); }},
      {"get_led_power", vc::PlatformCall::KsProperty, 0, [](vexcap_device* d) { unsigned v; return vexcap_get_led_power(d, &v); }},
      {"set_dev_property LLC", vc::PlatformCall::GetProperty, 1, property(VEXCAP_PROP_LLC, VEXCAP_LLC_ON, true)},
      {"set_dev_property control 18", vc::PlatformCall::KsProperty, 1, property(VEXCAP_PROP_XU_CONTROL_18, 0, true)},
      {"get_dev_property RGB status", vc::PlatformCall::KsProperty, 1, property(VEXCAP_PROP_RGB_STATUS, 0, false)},
      {"register_rgb_status", vc::PlatformCall::KsProperty, 1, [](vexcap_device* d) { return vexcap_register_for_rgb_status_event(d, on_rgb_status, nullptr); }},
      {"get_source_group_type", vc::PlatformCall::FindAllSourceGroups, 1, [](vexcap_device*) { std::uint32_t v; return vexcap_get_source_group_type(&v); }},
  };
  ASSERT_EQ(vexcap_init(), 0);
  expect_nothing_left("closed mid-call", 1, [&] {
    for (const HeldRow& row : rows) {
      vexcap_device* device = open_default_camera(row.mode);
      ASSERT_NE(device, nullptr);
      const vexcap_device handle = *device;
      vc::set_call_fault(row.held, vc::CallFault{HR_OK, 10s});
      auto call = std::async(std::launch::async, [&] { return row.call(device); });
      ASSERT_TRUE(vc::wait_for_slow_call(5s)) << row.name;
      auto close = std::async(std::launch::async, [&] { return vexcap_device_close(device); });
      EXPECT_EQ(close.wait_for(50ms), std::future_status::timeout) << row.name << ": the close did not wait";
      vc::release_slow_calls();
      vc::clear_faults();
      EXPECT_EQ(call.get(), 0) << row.name;
      EXPECT_EQ(close.get(), 0) << row.name;
      EXPECT_EQ(vc::session_count(default_group_id()), 0) << row.name;
      if (row.held == vc::PlatformCall::FindAllSourceGroups) continue;  // needs no device
      vexcap_device* stale = copy_of(handle);
      EXPECT_EQ(row.call(stale), VEXCAP_E_INVALID_STATE) << row.name << " after the close";
      std::free(stale);
    }
  });
  expect_a_good_session();
}

// What a callback saw when it called exports from inside: one answer per row.
struct Inside {
  Args args;
  std::vector<Row> rows;
  std::mutex mutex;
  std::vector<int> answers;  // guarded by mutex
  std::atomic<bool> started{false};
  std::atomic<bool> done{false};

  void run_once() {
    if (started.exchange(true)) return;
    std::vector<int> seen;
    for (const Row& row : rows) seen.push_back(row.call(args));
    std::lock_guard<std::mutex> lock(mutex);
    answers = seen;
    done = true;
  }
  bool wait(std::chrono::milliseconds limit, const std::function<void()>& step = [] {}) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!done.load() && std::chrono::steady_clock::now() < deadline) {
      step();
      std::this_thread::sleep_for(5ms);
    }
    return done.load();
  }
  void expect_answers(const std::string& where) {
    std::lock_guard<std::mutex> lock(mutex);
    ASSERT_EQ(answers.size(), rows.size()) << where;
    for (std::size_t i = 0; i < rows.size(); ++i)
      EXPECT_EQ(answers[i], rows[i].expected) << where << ": " << rows[i].name;
  }
};

bool run_inside_frame_callback(vexcap_frame* frame, void* context) {
  return_frame(frame, nullptr);
  static_cast<Inside*>(context)->run_once();
  return true;
}

// From inside a frame callback every export answers as it does outside; the stop, the close
// and the device events answer at once and take effect after the callback.
TEST_F(BadInputMatrix, CallsFromInsideAFrameCallback) {
  Inside inside;
  inside.args.device = open_default_camera(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(inside.args.device, nullptr);
  inside.rows = library_rows();
  inside.rows.push_back({"device_open (other slot)", [](Args& a) {
                           const vexcap_open_params params{VEXCAP_STREAM_MODE_SHARED, 640, 480};
                           const int opened =
                               vexcap_device_open(&a.opened, default_group_id().c_str(), &params);
                           return opened != 0 ? opened : vexcap_device_close(a.opened);
                         }, 0});
  for (Row& row : device_rows()) inside.rows.push_back(row);  // the close goes last
  ASSERT_EQ(vexcap_start_streaming_ex(inside.args.device, run_inside_frame_callback, &inside,
                                      VEXCAP_STREAM_SELECT_EXCLUSIVE), 0);
  EXPECT_TRUE(inside.wait(20s, [] { vc::advance_time(34ms); }));
  inside.expect_answers("inside a frame callback");
  for (int i = 0; i < 400 && vc::session_count(default_group_id()) != 0; ++i)
    std::this_thread::sleep_for(5ms);
  EXPECT_EQ(vc::session_count(default_group_id()), 0);  // the close from inside took effect
  std::free(inside.args.device);                // the close was given a copy
  expect_a_good_session();
}

// The device callbacks run on the watcher's thread: from inside the arrival of the camera the
// host opens it, streams, closes it and ends its own subscription.
TEST_F(BadInputMatrix, CallsFromInsideADeviceCallback) {
  ASSERT_EQ(vexcap_init(), 0);
  Inside inside;
  inside.rows = {
      {"device_open",
       [](Args& a) { return vexcap_device_open(&a.device, default_group_id().c_str(), &a.params); }, 0},
      {"start_streaming", [](Args& a) { return vexcap_start_streaming(a.device, return_frame, nullptr); }, 0},
      {"get_iso_speed", [](Args& a) { return vexcap_get_iso_speed(a.device, &a.u32); }, 0},
      {"device_close", [](Args& a) { return vexcap_device_close(a.device); }, 0},
      {"unregiester_device_callbacks (its own)",
       [](Args& a) { return vexcap_unregiester_device_callbacks(a.subscription); }, 0},
  };
  inside.args.callbacks.added = [](const wchar_t* id, const wchar_t*, void* context, vexcap_device_subscription* subscription) {
    auto* self = static_cast<Inside*>(context);
    if (id != default_group_id()) return 0;
    self->args.subscription = subscription;
    self->run_once();
    return 0;
  };
  Args outside;
  ASSERT_EQ(vexcap_regiester_for_device_callbacks(&outside.subscription, &inside.args.callbacks, &inside), 0);
  ASSERT_TRUE(inside.wait(20s));
  inside.expect_answers("inside a device callback");
  EXPECT_EQ(inside.args.subscription, outside.subscription);
  EXPECT_EQ(vc::session_count(default_group_id()), 0);
  expect_a_good_session();
}

void excl_ctrl_inside(const wchar_t*, std::uint8_t, bool, void* context) { static_cast<Inside*>(context)->run_once(); }
void rgb_status_inside(bool, void* context) { static_cast<Inside*>(context)->run_once(); }
void unsupported_inside(std::uint32_t, void* context) { static_cast<Inside*>(context)->run_once(); }
void rgb_stopped_inside(bool, void* context) { static_cast<Inside*>(context)->run_once(); }

// From inside each device event the host calls a request, registers or unregisters device
// events (this one included) and closes the device: the event's lock, its notifier thread or its
// worker would wait for the callback, so those answer at once and take effect after it.
TEST_F(BadInputMatrix, CallsFromInsideDeviceEvents) {
  struct EventRow {
    const char* name;
    std::function<int(vexcap_device*, Inside*)> register_event;
    std::function<void()> raise;  // makes the camera fire it, repeatedly if need be
    std::vector<Row> rows;
  };
  const Row get_iso{"get_iso_speed", [](Args& a) { return vexcap_get_iso_speed(a.device, &a.u32); }, 0};
  const Row get_rgb{"get_dev_property", [](Args& a) {
                      vexcap_property property{VEXCAP_PROP_RGB_STATUS, 0};
                      return vexcap_get_dev_property(a.device, &property);
                    }, 0};
  auto unregister = [](const char* name, int (*call)(vexcap_device*)) {
    return Row{name, [call](Args& a) { return call(a.device); }, 0};
  };
  const std::vector<EventRow> events = {
      {"exclusive-control status",
       [](vexcap_device* d, Inside* i) {
         return vexcap_register_for_excl_ctrl_status_event(d, excl_ctrl_inside, i);
       },
       [] { vc::set_held_by_other_app(default_group_id(), true); },
       {get_rgb, unregister("unregister_rgb_status", vexcap_unregister_for_rgb_status_event),
        unregister("unregister_excl_ctrl", vexcap_unregister_for_excl_ctrl_status_event)}},
      {"RGB status",
       [](vexcap_device* d, Inside* i) {
         return vexcap_register_for_rgb_status_event(d, rgb_status_inside, i);
       },
       [] { vc::edit_ks(default_group_id(), [](vc::KsDeviceModel& ks) { ks.rgb_status = 1; }); },
       {get_iso,
        {"register_rgb_status again",
         [](Args& a) { return vexcap_register_for_rgb_status_event(a.device, on_rgb_status, nullptr); }, 0},
        unregister("unregister_rgb_status", vexcap_unregister_for_rgb_status_event)}},
      {"unsupported format",
       [](vexcap_device* d, Inside* i) {
         const int registered = vexcap_register_for_unsupported_format_status_event(d, unsupported_inside, i);
         return registered != 0 ? registered : vexcap_start_streaming(d, return_frame, nullptr);
       },
       [] {
         vc::set_unsupported_frames(true);
         vc::advance_time(34ms);
       },
       {get_iso,
        {"register_unsupported again",
         [](Args& a) {
           return vexcap_register_for_unsupported_format_status_event(a.device, on_unsupported, nullptr);
         },
         0},
        unregister("unregister_unsupported", vexcap_unregister_for_unsupported_format_status_event),
        unregister("stop_streaming", vexcap_stop_streaming)}},
      {"RGB stopped",
       [](vexcap_device* d, Inside* i) {
         return vexcap_register_for_rgb_stopped_event(d, rgb_stopped_inside, i);
       },
       [] { vc::advance_time(100ms); },
       {get_iso,
        unregister("unregister_rgb_stopped", vexcap_unregister_for_rgb_stopped_event),
        {"device_close", [](Args& a) { return vexcap_device_close(copy_of(*a.device)); }, 0}}},
  };
  for (const EventRow& event : events) {
    Inside inside;
    inside.rows = event.rows;
    inside.args.device = open_default_camera(VEXCAP_STREAM_MODE_EXCLUSIVE);
    ASSERT_NE(inside.args.device, nullptr);
    ASSERT_EQ(event.register_event(inside.args.device, &inside), 0) << event.name;
    const auto started = std::chrono::steady_clock::now();
    EXPECT_TRUE(inside.wait(30s, event.raise)) << event.name;
    inside.expect_answers(event.name);
    EXPECT_LT(std::chrono::steady_clock::now() - started, 10s) << event.name << ": a call waited";
    vc::clear_faults();
    vc::set_held_by_other_app(default_group_id(), false);
    vc::edit_ks(default_group_id(), [](vc::KsDeviceModel& ks) { ks.rgb_status = 0; });
    const bool closed_inside = inside.rows.back().name == std::string("device_close");
    for (int i = 0; closed_inside && i < 400 && vc::session_count(default_group_id()) != 0; ++i)
      std::this_thread::sleep_for(5ms);
    EXPECT_EQ(vexcap_device_close(inside.args.device), closed_inside ? VEXCAP_E_FAIL : VEXCAP_OK) << event.name;
    ASSERT_EQ(vexcap_exit(), 0) << event.name;  // nothing left that waits for a callback
  }
  expect_a_good_session();
}

}  // namespace
}  // namespace vexcap
