// Frame readers on the manual clock: frames come at the format's rate, carry the documented
// pattern, and only the newest one waits to be acquired.
#include <gtest/gtest.h>

#include <cstring>

#include "platform/virtual/pixel_image.h"
#include "virtual_camera/virtual_test_support.h"

namespace vexcap::virtual_camera {
namespace {

using namespace std::chrono_literals;
using platform::Frame;
using platform::FrameReader;
using platform::PixelFormat;
using platform::SharingMode;

constexpr std::size_t kInfrared = 0;
constexpr std::size_t kColor = 1;
constexpr std::int64_t kSecond = 10'000'000;  // 100 ns units

// The documented luma of frame n at (x, y).
std::uint8_t luma(int x, int y, std::uint64_t n) { return std::uint8_t((x + 2 * y + 3 * n) % 256); }

struct Stream {
  explicit Stream(Scenario scenario, std::size_t source, SharingMode mode = SharingMode::ExclusiveControl,
                  std::optional<std::wstring> subtype = std::nullopt) {
    platform.world().use_scenario(std::move(scenario));
    capture = testing::open_session(platform, mode);
    reader = capture->create_frame_reader(capture->frame_sources().at(source), subtype);
  }
  void advance(std::int64_t ticks) { platform.world().clock()->advance(ticks); }
  std::int64_t now() { return platform.world().clock()->now(); }

  VirtualPlatform platform;
  std::shared_ptr<platform::Capture> capture;
  std::shared_ptr<FrameReader> reader;
};

TEST(VirtualFrameReader, FramesComeAtTheFormatRateWithExactTimes) {
  Stream s(testing::manual_default(), kInfrared);
  std::vector<std::int64_t> times;  // handlers run on the reader's thread, advance waits for them
  s.reader->add_frame_arrived([&](FrameReader& sender) {
    times.push_back(sender.try_acquire_latest_frame()->system_relative_time());
    return HR_OK;
  });
  std::int64_t start = s.now();
  ASSERT_EQ(s.reader->start(), platform::ReaderStartStatus::Success);
  s.advance(kSecond / 30 - 1);
  EXPECT_TRUE(times.empty());
  s.advance(1);
  ASSERT_EQ(times.size(), 1u);
  s.advance(kSecond);
  ASSERT_EQ(times.size(), 31u);
  for (std::size_t k = 0; k < times.size(); ++k)
    EXPECT_EQ(times[k], start + std::int64_t((k + 1) * kSecond / 30)) << "frame " << k;
}

TEST(VirtualFrameReader, ANewFormatChangesTheRateFromTheNextFrame) {
  Stream s(testing::manual_default(), kInfrared);
  std::size_t frames = 0;
  s.reader->add_frame_arrived([&](FrameReader&) { return ++frames, HR_OK; });
  s.reader->start();
  s.advance(kSecond);
  EXPECT_EQ(frames, 30u);
  auto source = s.capture->frame_sources().at(kInfrared);
  source->set_format(source->supported_formats().at(1));  // L8 640x480 @15
  s.advance(kSecond);
  // The next frame (due at 31/30 s) is the first with the new format and restarts the
  // schedule: 14 more fit before 2 s at 15 a second.
  EXPECT_EQ(frames, 30u + 1u + 14u);
}

TEST(VirtualFrameReader, OnlyTheNewestFrameWaitsAndIsTakenOnce) {
  Stream s(testing::manual_default(), kInfrared);
  s.reader->start();
  EXPECT_EQ(s.reader->try_acquire_latest_frame(), nullptr);
  s.advance(kSecond / 10);  // three frames: 0, 1, 2
  auto frame = s.reader->try_acquire_latest_frame();
  ASSERT_NE(frame, nullptr);
  auto locked = frame->software_bitmap()->lock_for_read();
  EXPECT_EQ(locked->data()[0], luma(0, 0, 2));
  EXPECT_EQ(s.reader->try_acquire_latest_frame(), nullptr);
}

TEST(VirtualFrameReader, BufferedModeKeepsFramesInOrder) {
  Stream s(testing::manual_default(), kInfrared);
  s.reader->set_acquisition_mode(platform::AcquisitionMode::Buffered);
  s.reader->start();
  s.advance(kSecond / 10);
  for (std::uint64_t n = 0; n < 3; ++n) {
    auto frame = s.reader->try_acquire_latest_frame();
    ASSERT_NE(frame, nullptr);
    EXPECT_EQ(frame->software_bitmap()->lock_for_read()->data()[0], luma(0, 0, n));
  }
  EXPECT_EQ(s.reader->try_acquire_latest_frame(), nullptr);
}

TEST(VirtualFrameReader, StoppedFramesFaultKeepsTheReaderRunningWithoutFrames) {
  Stream s(testing::manual_default(), kInfrared);
  int calls = 0;
  s.reader->add_frame_arrived([&](FrameReader&) { return ++calls, HR_OK; });
  s.reader->start();
  s.platform.world().set_frames_stopped(true);
  s.advance(kSecond);
  EXPECT_EQ(calls, 0);
  s.platform.world().set_frames_stopped(false);
  s.advance(kSecond / 10);
  EXPECT_EQ(calls, 3);
}

TEST(VirtualFrameReader, PaddedNv12FramesDescribeTheirPlanes) {
  Scenario scenario = testing::manual_default();
  scenario.groups[0].sources[kColor].stride_padding = 64;
  Stream s(scenario, kColor);
  s.reader->start();
  s.advance(kSecond / 30);
  auto locked = s.reader->try_acquire_latest_frame()->software_bitmap()->lock_for_read();
  ASSERT_EQ(locked->plane_count(), 2);
  EXPECT_EQ(locked->plane(0).stride, 704);
  EXPECT_EQ(locked->plane(1).start_index, 704 * 480);
  EXPECT_EQ(locked->capacity(), 704u * 480u * 3u / 2u);
  const std::uint8_t* d = locked->data();
  EXPECT_EQ(d[1 * 704 + 5], luma(5, 1, 0));
  EXPECT_EQ(d[1 * 704 + 640], 0);  // padding
  // Chroma of block (i, j) = (3, 2): U = 64 + i + j, V = 192 + i + 2j.
  EXPECT_EQ(d[704 * 480 + 2 * 704 + 6], 64 + 3 + 2);
  EXPECT_EQ(d[704 * 480 + 2 * 704 + 7], 192 + 3 + 4);
}

TEST(VirtualFrameReader, Rgb24FramesAreBufferOnly) {
  Scenario scenario = testing::manual_default();
  scenario.groups[0].sources[kColor].current_format = 6;  // RGB24 640x480
  Stream s(scenario, kColor);
  s.reader->start();
  s.advance(kSecond / 30 * 2 + 1);
  auto frame = s.reader->try_acquire_latest_frame();  // frame 1
  EXPECT_EQ(frame->software_bitmap(), nullptr);
  EXPECT_EQ(frame->format()->subtype(), L"RGB24");
  auto buffer = frame->buffer();
  ASSERT_NE(buffer, nullptr);
  EXPECT_EQ(buffer->length(), 640u * 480u * 3u);
  const std::uint8_t* p = buffer->byte_access().data + (7 * 640 + 9) * 3;
  EXPECT_EQ(p[0], 9 + 1);              // R = x + n
  EXPECT_EQ(p[1], 7 + 2);              // G = y + 2n
  EXPECT_EQ(p[2], 9 + 7 + 3);          // B = x + y + 3n
  auto bgra = frame->bitmap_from_buffer();
  ASSERT_NE(bgra, nullptr);
  EXPECT_EQ(bgra->pixel_format(), PixelFormat::Bgra8);
  const std::uint8_t* q = bgra->lock_for_read()->data() + (7 * 640 + 9) * 4;
  EXPECT_EQ((std::vector<int>{q[0], q[1], q[2], q[3]}), (std::vector<int>{9 + 7 + 3, 7 + 2, 9 + 1, 255}));
}

TEST(VirtualFrameReader, Nv12ReaderConvertsYuy2Frames) {
  Scenario scenario = testing::manual_default();
  scenario.groups[0].sources[kColor].current_format = 3;  // YUY2 640x480
  Stream s(scenario, kColor, SharingMode::ExclusiveControl, L"NV12");
  s.reader->start();
  s.advance(kSecond / 30);
  auto frame = s.reader->try_acquire_latest_frame();
  EXPECT_EQ(frame->format()->subtype(), L"NV12");
  auto locked = frame->software_bitmap()->lock_for_read();
  const std::uint8_t* d = locked->data();
  EXPECT_EQ(d[5 * 640 + 11], luma(11, 5, 0));
  // Block (i, j) averages the YUY2 pair values of rows 2j and 2j + 1, rounding half up:
  // U rows give 64+i+2j and 64+i+2j+1, V rows 192+i+4j and 192+i+4j+2.
  int i = 4, j = 3;
  EXPECT_EQ(d[640 * 480 + j * 640 + 2 * i], (64 + i + 2 * j + 64 + i + 2 * j + 1 + 1) / 2);
  EXPECT_EQ(d[640 * 480 + j * 640 + 2 * i + 1], 192 + i + 4 * j + 1);
}

TEST(VirtualFrameReader, RemovedDeviceEndsFramesAndDisconnectsTheReader) {
  Stream s(testing::manual_default(), kInfrared);
  int calls = 0;
  s.reader->add_frame_arrived([&](FrameReader&) { return ++calls, HR_OK; });
  s.reader->start();
  s.platform.world().remove_group(testing::default_group_id());
  s.advance(kSecond);
  EXPECT_EQ(calls, 0);
  for (auto call : {+[](FrameReader& r) { r.stop(); }, +[](FrameReader& r) { r.start(); }}) {
    try {
      call(*s.reader);
      ADD_FAILURE() << "a call on a removed camera's reader succeeded";
    } catch (const platform::PlatformError& error) {
      EXPECT_EQ(error.code(), HR_DISCONNECTED);
    }
  }
  s.reader->close();  // closing still works
}

TEST(VirtualFrameReader, DisabledDeviceStartsWithDeviceNotAvailable) {
  Stream s(testing::manual_default(), kInfrared);
  s.platform.world().set_group_enabled(testing::default_group_id(), false);
  EXPECT_EQ(s.reader->start(), platform::ReaderStartStatus::DeviceNotAvailable);
}

// 1080 rows laid out in 1088: the chroma plane starts where plane 1 says, not at 1080 rows.
TEST(VirtualFrameReader, Nv12PlanesMayBeLaidOutOverMoreRowsThanTheFrameHas) {
  Scenario scenario = testing::manual_default();
  scenario.groups[0].sources[kColor].current_format = 2;  // NV12 1920x1080, padded to 16 rows
  ASSERT_EQ(scenario.groups[0].sources[kColor].nv12_plane_rows_alignment, 16u);
  Stream s(scenario, kColor, SharingMode::ExclusiveControl, L"NV12");
  s.reader->start();
  s.advance(kSecond / 30);
  auto locked = s.reader->try_acquire_latest_frame()->software_bitmap()->lock_for_read();
  ASSERT_EQ(locked->plane_count(), 2);
  EXPECT_EQ(locked->plane(0).stride, 1920);
  EXPECT_EQ(locked->plane(1).start_index, 1920 * 1088);
  EXPECT_EQ(locked->plane(1).stride, 1920);
  EXPECT_EQ(locked->capacity(), 1920u * (1088u + 540u));
  const std::uint8_t* d = locked->data();
  EXPECT_EQ(d[1079 * 1920 + 7], luma(7, 1079, 0));
  for (int row = 1080; row < 1088; ++row) EXPECT_EQ(d[row * 1920 + 100], 0) << row;
  // Block (i, j) = (5, 539): U = 64 + i + j, V = 192 + i + 2j (mod 256).
  EXPECT_EQ(d[1920 * 1088 + 539 * 1920 + 10], (64 + 5 + 539) % 256);
  EXPECT_EQ(d[1920 * 1088 + 539 * 1920 + 11], (192 + 5 + 2 * 539) % 256);

  // Heights that are multiples of 16 keep the plain layout.
  EXPECT_EQ(pattern_image(PixelFormat::Nv12, 640, 480, 0, 0, 16).planes()[1].start_index, 640 * 480);
}

TEST(VirtualFrameReader, AGreySourceMayRefuseAnNv12Reader) {
  Scenario scenario = testing::manual_default();
  scenario.groups[0].sources[kInfrared].refuses_nv12 = true;
  Stream nv12(scenario, kInfrared, SharingMode::ExclusiveControl, L"NV12");
  EXPECT_EQ(nv12.reader->start(), platform::ReaderStartStatus::OutputFormatNotSupported);
  Stream plain(scenario, kInfrared);
  EXPECT_EQ(plain.reader->start(), platform::ReaderStartStatus::Success);
}

TEST(VirtualFrameReader, AReaderStoppedAndReleasedFromItsOwnHandlerEndsCleanly) {
  Stream s(testing::manual_default(), kInfrared);
  int calls = 0;
  s.reader->add_frame_arrived([&](FrameReader& sender) {
    ++calls;
    sender.stop();
    s.reader.reset();  // the last reference goes on the reader's own thread
    return HR_OK;
  });
  s.reader->start();
  s.advance(kSecond);
  EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace vexcap::virtual_camera
