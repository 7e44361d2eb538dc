// Device properties through vexcap_set_dev_property / vexcap_get_dev_property on the virtual
// camera: what reaches the camera, the device's own rules and the answers the host reads.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

#include "frames/frame_rate.h"
#include "platform/virtual/known_ids.h"
#include "support/library_fixture.h"
#include "support/log_capture.h"

namespace vexcap {
namespace {

namespace vc = virtual_camera;
using namespace std::chrono_literals;

constexpr std::size_t kInfrared = 0;
constexpr std::size_t kColour = 1;

vc::FormatModel nv12(std::uint32_t width, std::uint32_t height) {
  vc::FormatModel format;
  format.width = width;
  format.height = height;
  return format;
}

int count_exposure_auto(bool enabled) {
  const auto applied = vc::records().applied_controls;
  return static_cast<int>(std::count_if(applied.begin(), applied.end(), [&](const vc::AppliedControl& c) {
    return c.kind == vc::ControlKind::ExposureAuto && c.value == (enabled ? 1 : 0);
  }));
}

class DeviceProperties : public testing::LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    scenario_ = vc::default_scenario();
    scenario_.clock = vc::ClockMode::Manual;
  }
  void TearDown() override {
    for (vexcap_device* device : opened_) EXPECT_EQ(vexcap_device_close(device), VEXCAP_OK);
    LibraryTest::TearDown();
  }
  // The colour source offers exactly these NV12 formats (the first is current).
  void colour_formats(std::vector<vc::FormatModel> formats) {
    scenario_.groups.at(0).sources.at(kColour).formats = std::move(formats);
  }
  // Starts the library on the scenario and opens it: stream mode 0 reads the colour source,
  // 1 the infrared one.
  vexcap_device* open(std::uint32_t stream_mode) {
    if (!started_) {
      vc::use_scenario(scenario_);
      EXPECT_EQ(vexcap_init(), 0);
      started_ = true;
    }
    vexcap_device* device = nullptr;
    const vexcap_open_params params{stream_mode, 640, 480};
    EXPECT_EQ(vexcap_device_open(&device, group_id().c_str(), &params), 0);
    log.resume();  // opening switched the output off
    if (device != nullptr) opened_.push_back(device);
    return device;
  }
  int close(vexcap_device* device) {
    opened_.erase(std::find(opened_.begin(), opened_.end(), device));
    return vexcap_device_close(device);
  }
  std::wstring group_id() const { return *scenario_.groups.at(0).id; }

  static int set(vexcap_device* device, std::uint32_t id, std::uint32_t value) {
    vexcap_property property{id, value};
    return vexcap_set_dev_property(device, &property);
  }
  // The result code, and the value the library wrote (or `initial` when it wrote none).
  static std::pair<int, std::uint32_t> get(vexcap_device* device, std::uint32_t id, std::uint32_t initial = 0) {
    vexcap_property property{id, initial};
    const int result = vexcap_get_dev_property(device, &property);
    return {result, property.value};
  }

  vc::Scenario scenario_;
  testing::LogCapture log;
  bool started_ = false;
  std::vector<vexcap_device*> opened_;
};

TEST_F(DeviceProperties, UnknownIdsAreLoggedAndSucceed) {
  vexcap_device* device = open(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(device, nullptr);
  EXPECT_EQ(set(device, 7, 1), VEXCAP_OK);
  EXPECT_EQ(set(device, VEXCAP_PROP_RGB_STATUS, 1), VEXCAP_OK);  // a get-only id
  EXPECT_EQ(set(device, 0, 1), VEXCAP_OK);
  EXPECT_EQ(get(device, 3, 1234), std::make_pair(VEXCAP_OK, 1234u));
  EXPECT_EQ(log.count("E: Unsupported device property id"), 4);
  EXPECT_TRUE(log.contains("D: get_dev_property: 3"));

  vexcap_device empty_slot{0, 0, 0};
  EXPECT_EQ(set(&empty_slot, VEXCAP_PROP_LLC, VEXCAP_LLC_ON), VEXCAP_E_INVALID_STATE);
  EXPECT_EQ(get(&empty_slot, VEXCAP_PROP_HIRES_SENSOR_TYPE).first, VEXCAP_E_INVALID_STATE);
}

TEST_F(DeviceProperties, DiagnosticLogSwitchesOutputOnAndOff) {
  vexcap_device* device = open(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(device, nullptr);
  ASSERT_EQ(set(device, VEXCAP_PROP_DIAGNOSTIC_LOG, VEXCAP_DIAGNOSTIC_LOG_OFF), VEXCAP_OK);
  log.clear();
  get(device, 99);
  EXPECT_TRUE(log.lines().empty());

  ASSERT_EQ(set(device, VEXCAP_PROP_DIAGNOSTIC_LOG, VEXCAP_DIAGNOSTIC_LOG_ON), VEXCAP_OK);
  get(device, 99);
  EXPECT_TRUE(log.contains("D: get_dev_property: 99"));

  ASSERT_EQ(set(device, VEXCAP_PROP_DIAGNOSTIC_LOG, VEXCAP_DIAGNOSTIC_LOG_OFF), VEXCAP_OK);
  log.clear();
  get(device, 99);
  EXPECT_TRUE(log.lines().empty());
}

TEST_F(DeviceProperties, RgbStatusAndVideoControlModeAreReadFromTheCamera) {
  vexcap_device* device = open(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(device, nullptr);
  vc::edit_ks(group_id(), [](vc::KsDeviceModel& ks) {
    ks.rgb_status = 1;
    ks.video_control_mode = 3;
  });
  EXPECT_EQ(get(device, VEXCAP_PROP_RGB_STATUS), std::make_pair(VEXCAP_OK, 1u));
  EXPECT_EQ(get(device, VEXCAP_PROP_VIDEO_CONTROL_MODE), std::make_pair(VEXCAP_OK, 2u));  // 3 AND 2

  // A failed read answers its failure and 0, whatever the value held before.
  vc::edit_ks(group_id(), [](vc::KsDeviceModel& ks) {
    ks.faults = {{vc::ids::kVideoControl, vc::ids::kVideoControlMode, HR_FAIL},
                 {vc::ids::kUnit1, vc::ids::kUnit1RgbStatus, HR_FAIL}};
  });
  EXPECT_EQ(get(device, VEXCAP_PROP_VIDEO_CONTROL_MODE, 77), std::make_pair(VEXCAP_E_FAIL, 0u));
  EXPECT_EQ(get(device, VEXCAP_PROP_RGB_STATUS, 77), std::make_pair(VEXCAP_E_FAIL, 0u));
}

TEST_F(DeviceProperties, Control18GetsTheByteItsValueNames) {
  vexcap_device* device = open(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(device, nullptr);
  const auto control18 = [&] { return vc::group_state(group_id())->ks.control18; };
  vc::clear_records();
  EXPECT_EQ(set(device, VEXCAP_PROP_XU_CONTROL_18, VEXCAP_XU_CONTROL_18_ONE), VEXCAP_OK);
  EXPECT_EQ(control18(), 1);
  EXPECT_EQ(set(device, VEXCAP_PROP_XU_CONTROL_18, VEXCAP_XU_CONTROL_18_TWO), VEXCAP_OK);
  EXPECT_EQ(control18(), 2);
  EXPECT_EQ(set(device, VEXCAP_PROP_XU_CONTROL_18, 7), VEXCAP_OK);
  EXPECT_EQ(control18(), 0);

  std::vector<int> written;
  for (const vc::KsRequest& request : vc::records().ks_requests) {
    if (request.set == vc::ids::kUnit1 && request.id == vc::ids::kUnit1Control18 &&
        (request.flags & vc::ids::kPropSet) != 0) {
      ASSERT_EQ(request.data_size, 1u);
      written.push_back(request.data_in.at(0));
    }
  }
  EXPECT_EQ(written, (std::vector<int>{1, 2, 0}));
}

TEST_F(DeviceProperties, HiresSensorTypePrefers1080pAndIs21WithoutHighResolutions) {
  colour_formats({nv12(640, 480), nv12(1280, 720), nv12(1920, 1080)});
  vexcap_device* colour = open(VEXCAP_STREAM_MODE_SHARED);
  ASSERT_NE(colour, nullptr);
  EXPECT_EQ(get(colour, VEXCAP_PROP_HIRES_SENSOR_TYPE), std::make_pair(VEXCAP_OK, VEXCAP_FORMAT_HIRES_1080P));

  vexcap_device* infrared = open(VEXCAP_STREAM_MODE_EXCLUSIVE);  // its codes are 0..9
  ASSERT_NE(infrared, nullptr);
  EXPECT_EQ(get(infrared, VEXCAP_PROP_HIRES_SENSOR_TYPE), std::make_pair(VEXCAP_OK, VEXCAP_FORMAT_HIRES_NONE));
  EXPECT_TRUE(log.contains("D: No suppoted hires sensor type"));
}

TEST_F(DeviceProperties, Missing1080pStreamTypeIsRetriedAs720p) {
  colour_formats({nv12(640, 480), nv12(1280, 720)});
  vexcap_device* device = open(VEXCAP_STREAM_MODE_SHARED);
  ASSERT_NE(device, nullptr);
  vc::clear_records();
  EXPECT_EQ(set(device, VEXCAP_PROP_STREAM_TYPE_APPLY, VEXCAP_FORMAT_HIRES_1080P), VEXCAP_OK);
  const auto changes = vc::records().format_changes;
  ASSERT_EQ(changes.size(), 1u);
  EXPECT_EQ(changes[0].format.width, 1280u);
  EXPECT_EQ(changes[0].format.height, 720u);

  // Only the applying stream type retries: the plain one reports the missing format.
  EXPECT_EQ(set(device, VEXCAP_PROP_STREAM_TYPE, VEXCAP_FORMAT_HIRES_1080P), VEXCAP_E_FAIL);
}

TEST_F(DeviceProperties, StreamTypeSwitchesTheTorchOffOnCamerasWithoutTheVendorUnit) {
  scenario_.groups.at(0).ks.nodes.pop_back();  // unit 1 goes; the foreign unit stays
  scenario_.groups.at(0).sources.at(kInfrared).torch->enabled = true;
  vexcap_device* device = open(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(device, nullptr);
  const auto torch_enabled = [&] {
    return vc::group_state(group_id())->sources.at(kInfrared).torch->enabled;
  };
  EXPECT_EQ(set(device, VEXCAP_PROP_STREAM_TYPE, 10), VEXCAP_E_INVALID_ARG);  // refused: torch stays on
  EXPECT_TRUE(torch_enabled());
  EXPECT_EQ(set(device, VEXCAP_PROP_STREAM_TYPE, 2), VEXCAP_OK);
  EXPECT_FALSE(torch_enabled());
}

// Frames delivered to the host, counted.
struct Counter {
  std::atomic<int> frames{0};
  static bool receive(vexcap_frame* frame, void* context) {
    ++static_cast<Counter*>(context)->frames;
    vexcap_return_frame(frame);
    return true;
  }
};

TEST_F(DeviceProperties, FrameRateCodeWithoutAFormatLimitsTheSharedStream) {
  colour_formats({nv12(640, 480), nv12(1280, 720)});  // codes 11 and 19 only, 30 fps
  vexcap_device* device = open(VEXCAP_STREAM_MODE_SHARED);
  ASSERT_NE(device, nullptr);
  // Code 14 (15 fps) has no format: the colour format falls back to code 11 and the shared
  // client keeps at most 16.5 frames a second.
  vc::clear_records();
  ASSERT_EQ(set(device, VEXCAP_PROP_STREAM_TYPE_APPLY, 14), VEXCAP_OK);
  ASSERT_EQ(vc::records().format_changes.size(), 1u);
  EXPECT_EQ(vc::records().format_changes[0].format.height, 480u);

  // Start after the process-wide last accepted frame, so the first frame here passes.
  const std::int64_t behind = frames::last_accepted_frame_time() * 10 - vc::now();
  vc::advance_time(10s + std::chrono::nanoseconds(std::max<std::int64_t>(behind, 0) * 100));
  Counter counter;
  ASSERT_EQ(vexcap_start_streaming(device, &Counter::receive, &counter), VEXCAP_OK);
  for (int i = 0; i < 6; ++i) vc::advance_time(34ms);
  EXPECT_EQ(counter.frames.load(), 3);  // every second frame of 30

  // A code that is no frame rate is refused and lifts the limit; so does a format found.
  EXPECT_EQ(set(device, VEXCAP_PROP_STREAM_TYPE_APPLY, 9), VEXCAP_E_NO_INTERFACE);
  for (int i = 0; i < 6; ++i) vc::advance_time(34ms);
  EXPECT_EQ(counter.frames.load(), 9);
  ASSERT_EQ(set(device, VEXCAP_PROP_STREAM_TYPE_APPLY, 14), VEXCAP_OK);
  ASSERT_EQ(set(device, VEXCAP_PROP_STREAM_TYPE_APPLY, 19), VEXCAP_OK);
  for (int i = 0; i < 6; ++i) vc::advance_time(34ms);
  EXPECT_EQ(counter.frames.load(), 15);
  EXPECT_EQ(vexcap_stop_streaming(device), VEXCAP_OK);
}

TEST_F(DeviceProperties, SourceWithoutFormatsIsReportedByAWorker) {
  vexcap_device* device = open(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(device, nullptr);
  struct Reports {
    std::mutex lock;
    std::vector<std::uint32_t> statuses;
  } reports;
  ASSERT_EQ(vexcap_register_for_unsupported_format_status_event(
                device,
                [](std::uint32_t status, void* context) {
                  auto* seen = static_cast<Reports*>(context);
                  std::lock_guard<std::mutex> guard(seen->lock);
                  seen->statuses.push_back(status);
                },
                &reports),
            VEXCAP_OK);
  vc::edit_source(group_id(), kInfrared, [](vc::SourceModel& s) { s.formats.clear(); });

  EXPECT_EQ(set(device, VEXCAP_PROP_STREAM_TYPE, 2), VEXCAP_E_FAIL);  // the plain 16, no report
  EXPECT_EQ(set(device, VEXCAP_PROP_STREAM_TYPE_APPLY, 2), VEXCAP_OK);
  ASSERT_EQ(close(device), VEXCAP_OK);  // joins the worker
  EXPECT_EQ(reports.statuses, (std::vector<std::uint32_t>{1}));
}

TEST_F(DeviceProperties, AutoExposureOffRunsOnTheDeviceAndOnATemporaryDevice) {
  scenario_.groups.at(0).sources.at(kInfrared).exposure->auto_enabled = true;
  vexcap_device* device = open(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(device, nullptr);
  vc::clear_records();
  EXPECT_EQ(set(device, VEXCAP_PROP_AUTO_EXPOSURE, VEXCAP_AUTO_EXPOSURE_OFF), VEXCAP_OK);
  EXPECT_EQ(count_exposure_auto(false), 2);
  EXPECT_FALSE(vc::group_state(group_id())->sources.at(kInfrared).exposure->auto_enabled);
  // The temporary device is closed again.
  EXPECT_EQ(vc::session_count(group_id(), platform::SharingMode::ExclusiveControl), 1);
  EXPECT_EQ(vc::session_count(group_id(), platform::SharingMode::SharedReadOnly), 1);

  EXPECT_EQ(set(device, VEXCAP_PROP_AUTO_EXPOSURE, VEXCAP_AUTO_EXPOSURE_ON), VEXCAP_OK);
  EXPECT_EQ(count_exposure_auto(true), 1);  // on: the device's client alone
}

TEST_F(DeviceProperties, TheHostGetsTheTemporaryDevicesAnswer) {
  vexcap_device* device = open(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(device, nullptr);
  vc::clear_records();
  // Hold the temporary device's initialization until the device's own client has switched
  // automatic exposure off, then make the camera refuse the temporary device's request.
  vc::set_call_fault(vc::PlatformCall::Initialize, {HR_OK, 30s});
  std::atomic<int> result{1};
  std::thread host([&] { result = set(device, VEXCAP_PROP_AUTO_EXPOSURE, VEXCAP_AUTO_EXPOSURE_OFF); });
  const bool held = vc::wait_for_slow_call(10s);
  const auto deadline = std::chrono::steady_clock::now() + 10s;
  while (count_exposure_auto(false) == 0 && std::chrono::steady_clock::now() < deadline)
    std::this_thread::sleep_for(1ms);
  vc::set_call_fault(vc::PlatformCall::SetControl, {HR_ACCESSDENIED});
  vc::set_call_fault(vc::PlatformCall::Initialize, {});
  vc::release_slow_calls();
  host.join();

  EXPECT_TRUE(held);
  EXPECT_EQ(count_exposure_auto(false), 1);  // the device's own client
  EXPECT_EQ(result.load(), VEXCAP_E_ACCESS_DENIED);
}

std::atomic<int> rgb_stopped_calls{0};
void count_rgb_stopped(bool, void*) { ++rgb_stopped_calls; }

TEST_F(DeviceProperties, ColourOffReturnsWithoutACallbackWhileTheRgbStoppedWorkerWaits) {
  scenario_.clock = vc::ClockMode::Manual;  // the worker's own reader never gets a frame
  vexcap_device* device = open(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(device, nullptr);
  rgb_stopped_calls = 0;
  ASSERT_EQ(vexcap_register_for_rgb_stopped_event(device, count_rgb_stopped, nullptr), VEXCAP_OK);
  const auto worker_waits = [&] { return vc::session_count(group_id(), platform::SharingMode::ExclusiveControl) == 2; };
  const auto deadline = std::chrono::steady_clock::now() + 10s;
  while (!worker_waits() && std::chrono::steady_clock::now() < deadline) std::this_thread::sleep_for(1ms);
  ASSERT_TRUE(worker_waits());

  const auto began = std::chrono::steady_clock::now();
  EXPECT_EQ(set(device, VEXCAP_PROP_RGB_OFF, 0), VEXCAP_OK);
  EXPECT_LT(std::chrono::steady_clock::now() - began, 20s);
  EXPECT_EQ(rgb_stopped_calls.load(), 0);
  EXPECT_EQ(vc::session_count(group_id(), platform::SharingMode::ExclusiveControl), 1);  // the worker's went
  // Both clients are off for good: neither selector streams.
  EXPECT_NE(vexcap_start_streaming(device, [](vexcap_frame*, void*) { return true; }, nullptr), VEXCAP_OK);
}

}  // namespace
}  // namespace vexcap
