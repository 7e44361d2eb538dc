// The camera sessions of the product adapter on the double, where the Windows camera system
// behaves as it does on real machines: a capture whose initialization failed is spent, the
// capture's Failed event arrives on a thread of its own, readers refuse formats, drivers pad
// their planes, and exclusive control is held until the capture is closed.
#include <atomic>
#include <future>

#include "double_test.h"

namespace vexcap::double_tests {
namespace {

using CameraSession = DoubleTest;

constexpr std::size_t kInfrared = 0;

bool give_back(vexcap_frame* frame, void*) {
  vexcap_return_frame(frame);
  return true;
}

// Counts the frames in the std::atomic<int> it is given, and gives each back.
bool count_frame(vexcap_frame* frame, void* context) {
  ++*static_cast<std::atomic<int>*>(context);
  vexcap_return_frame(frame);
  return true;
}

std::future<int> open_later(vexcap_device** device, std::uint32_t mode) {
  return std::async(std::launch::async, [device, mode] {
    const vexcap_open_params params{mode, 640, 480};
    return vexcap_device_open(device, camera_id().c_str(), &params);
  });
}

// Privacy settings off, then the camera held by another application: each attempt of the
// waiting open takes a new capture, so the first attempt after the cause goes succeeds.
TEST_F(CameraSession, AnOpenRefusedAtFirstSucceedsOnceTheCauseGoes) {
  ASSERT_EQ(vexcap_init(), VEXCAP_OK);
  vc::set_camera_access_allowed(false);
  vexcap_device* device = nullptr;
  std::future<int> opened = open_later(&device, VEXCAP_STREAM_MODE_EXCLUSIVE);
  EXPECT_EQ(opened.wait_for(400ms), std::future_status::timeout);  // a few refused attempts
  vc::set_camera_access_allowed(true);
  ASSERT_EQ(opened.wait_for(5s), std::future_status::ready);
  ASSERT_EQ(opened.get(), VEXCAP_OK);
  ASSERT_EQ(vexcap_device_close(device), VEXCAP_OK);

  vc::set_held_by_other_app(camera_id(), true);
  opened = open_later(&device, VEXCAP_STREAM_MODE_EXCLUSIVE);
  EXPECT_EQ(opened.wait_for(400ms), std::future_status::timeout);
  vc::set_held_by_other_app(camera_id(), false);
  ASSERT_EQ(opened.wait_for(5s), std::future_status::ready);
  ASSERT_EQ(opened.get(), VEXCAP_OK);
  EXPECT_EQ(vc::session_count(camera_id(), platform::SharingMode::ExclusiveControl), 1);
  EXPECT_EQ(vexcap_device_close(device), VEXCAP_OK);
}

// Exclusive control is the camera system's until the capture is closed, not until its last
// release: another application can take the camera the moment close answers.
TEST_F(CameraSession, CloseFreesTheCameraForAnotherApplicationAtOnce) {
  ASSERT_EQ(vexcap_init(), VEXCAP_OK);
  for (std::uint32_t mode : {VEXCAP_STREAM_MODE_EXCLUSIVE, VEXCAP_STREAM_MODE_SHARED}) {
    SCOPED_TRACE(mode);
    vexcap_device* device = open(mode);
    ASSERT_NE(device, nullptr);
    ASSERT_EQ(vexcap_start_streaming(device, give_back, nullptr), VEXCAP_OK);
    next_frame();
    ASSERT_EQ(vexcap_device_close(device), VEXCAP_OK);
    EXPECT_EQ(vc::session_count(camera_id()), 0);
    EXPECT_EQ(vc::other_app_open_exclusive(camera_id()), HR_OK);
    vc::set_held_by_other_app(camera_id(), false);
  }
}

// The infrared source cannot give NV12: its reader starts with a failed status, and the start
// says so instead of reporting a stream that never delivers.
TEST_F(CameraSession, AReaderThatDoesNotStartIsAFailedStart) {
  vc::edit_source(camera_id(), kInfrared, [](vc::SourceModel& infrared) { infrared.refuses_nv12 = true; });
  vexcap_device* device = start_and_open(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(device, nullptr);
  std::atomic<int> frames{0};
  EXPECT_EQ(vexcap_start_streaming(device, count_frame, &frames), VEXCAP_E_INVALID_STATE);
  next_frame();
  next_frame();
  EXPECT_EQ(frames.load(), 0);
  EXPECT_EQ(vexcap_device_close(device), VEXCAP_OK);
}

// The driver lays the 480 luma rows out in 512: the chroma plane starts where the bitmap's
// plane description puts it, and the record holds luma then chroma with one stride.
TEST_F(CameraSession, PaddedNv12PlanesArriveWhole) {
  vc::edit_source(camera_id(), 1, [](vc::SourceModel& colour) { colour.nv12_plane_rows_alignment = 128; });
  vexcap_device* device = start_and_open(VEXCAP_STREAM_MODE_SHARED);
  ASSERT_NE(device, nullptr);
  Frames frames;
  ASSERT_EQ(vexcap_start_streaming(device, Frames::keep, &frames), VEXCAP_OK);
  next_frame();
  ASSERT_EQ(vexcap_stop_streaming(device), VEXCAP_OK);
  ASSERT_EQ(frames.count(), 1u);
  const vexcap_frame& frame = *frames.taken()[0];
  ASSERT_EQ(frame.pixel_format, VEXCAP_PIXEL_FORMAT_NV12);
  ASSERT_EQ(frame.width, 640u);
  ASSERT_EQ(frame.height, 480u);
  ASSERT_EQ(frame.stride, 640);
  // Frame 0 of the pattern: luma x + 2y, chroma pairs (64 + i + j, 192 + i + 2j).
  for (unsigned y = 0; y < 480; y += 7)
    for (unsigned x = 0; x < 640; x += 5)
      ASSERT_EQ(frame.data[y * 640 + x], std::uint8_t(x + 2 * y)) << x << "," << y;
  const std::uint8_t* chroma = frame.data + 640 * 480;
  for (unsigned j = 0; j < 240; ++j)
    for (unsigned i = 0; i < 320; ++i) {
      ASSERT_EQ(chroma[j * 640 + 2 * i], std::uint8_t(64 + i + j)) << i << "," << j;
      ASSERT_EQ(chroma[j * 640 + 2 * i + 1], std::uint8_t(192 + i + 2 * j)) << i << "," << j;
    }
  frames.clear();
  EXPECT_EQ(vexcap_device_close(device), VEXCAP_OK);
}

std::atomic<int> g_status_calls{0};
void on_status(const wchar_t*, std::uint8_t, bool, void*) { ++g_status_calls; }

// The capture fails while the request thread is held by a slow query: the Failed handler
// returns at once (the status change raised after it on the same event thread reaches the
// host meanwhile) and the recovery runs once the request thread is free.
TEST_F(CameraSession, TheFailedEventReturnsAtOnceWhileTheRequestThreadIsBusy) {
  vexcap_device* device = start_and_open(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(device, nullptr);
  std::atomic<int> frames{0};
  ASSERT_EQ(vexcap_start_streaming(device, count_frame, &frames), VEXCAP_OK);
  g_status_calls = 0;
  ASSERT_EQ(vexcap_register_for_excl_ctrl_status_event(device, on_status, nullptr), VEXCAP_OK);

  vc::set_call_fault(vc::PlatformCall::FindAllSourceGroups, vc::CallFault{HR_OK, 10s});
  std::future<int> query = std::async(std::launch::async, [] {
    std::uint32_t type = 0;
    return vexcap_get_source_group_type(&type);
  });
  ASSERT_TRUE(vc::wait_for_slow_call(5s));
  vc::set_call_fault(vc::PlatformCall::FindAllSourceGroups, vc::CallFault{});

  vc::raise_capture_failed(hr(0xC00D3EA2), L"The device failed.", camera_id());
  vc::set_held_by_other_app(camera_id(), true);  // raised on the same event thread, after Failed
  EXPECT_TRUE(wait_until([] { return g_status_calls.load() > 0; }));
  EXPECT_EQ(query.wait_for(0s), std::future_status::timeout);  // the request thread was busy all along

  vc::set_held_by_other_app(camera_id(), false);
  vc::release_slow_calls();
  EXPECT_EQ(query.get(), VEXCAP_OK);
  // Recovered on the request thread: the stream delivers again.
  frames = 0;
  EXPECT_TRUE(wait_until([&] {
    next_frame();
    return frames.load() > 0;
  }));
  EXPECT_EQ(vexcap_device_close(device), VEXCAP_OK);
}

// The camera is pulled out and put back again and again while host threads call the exports a
// capture application uses: every call answers, nothing deadlocks or crashes, and the device
// streams again at the end.
TEST_F(CameraSession, UnplugWhileHostThreadsCallTheExportsNeitherHangsNorCrashes) {
  vexcap_device* infrared = start_and_open(VEXCAP_STREAM_MODE_EXCLUSIVE);
  vexcap_device* colour = open(VEXCAP_STREAM_MODE_SHARED);
  ASSERT_NE(infrared, nullptr);
  ASSERT_NE(colour, nullptr);
  std::atomic<bool> done{false};
  std::atomic<long> calls{0};
  auto host = [&](vexcap_device* device, int kind) {
    std::uint64_t exposure = 0;
    std::uint32_t value = 0;
    vexcap_property property{VEXCAP_PROP_DIAGNOSTIC_LOG, 0};
    for (int i = 0; !done; ++i) {
      switch ((i + kind) % 5) {
        case 0: vexcap_start_streaming(device, give_back, nullptr); break;
        case 1: vexcap_get_exposure(device, &exposure); break;
        case 2: vexcap_get_source_group_type(&value); break;
        case 3: vexcap_get_dev_property(device, &property); break;
        case 4: vexcap_stop_streaming(device); break;
      }
      ++calls;
    }
  };
  std::vector<std::future<void>> hosts;
  hosts.push_back(std::async(std::launch::async, host, infrared, 0));
  hosts.push_back(std::async(std::launch::async, host, infrared, 2));
  hosts.push_back(std::async(std::launch::async, host, colour, 4));
  for (int round = 0; round < 5; ++round) {
    next_frame();
    vc::remove_group(camera_id());
    std::this_thread::sleep_for(100ms);
    vc::add_group(vc::default_scenario().groups.at(0));
    std::this_thread::sleep_for(100ms);
  }
  done = true;
  for (auto& finished : hosts) ASSERT_EQ(finished.wait_for(30s), std::future_status::ready) << "a host call hung";
  EXPECT_GT(calls.load(), 0);
  vexcap_stop_streaming(infrared);
  vexcap_stop_streaming(colour);
  EXPECT_EQ(vexcap_device_close(infrared), VEXCAP_OK);
  EXPECT_EQ(vexcap_device_close(colour), VEXCAP_OK);

  // The camera is back: a new device streams.
  infrared = open(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(infrared, nullptr);
  Frames frames;
  ASSERT_EQ(vexcap_start_streaming(infrared, Frames::keep, &frames), VEXCAP_OK);
  next_frame();
  EXPECT_EQ(frames.count(), 1u);
  frames.clear();
  EXPECT_EQ(vexcap_device_close(infrared), VEXCAP_OK);
}

}  // namespace
}  // namespace vexcap::double_tests
