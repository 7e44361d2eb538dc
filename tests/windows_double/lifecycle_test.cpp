// The camera going away while streaming, the library stopped with devices open, and many
// open / stream / close cycles with nothing left growing.
#include "double_test.h"
#include "support/process_footprint.h"

namespace vexcap::double_tests {
namespace {

using Lifecycle = DoubleTest;

TEST_F(Lifecycle, UnplugWhileStreamingRecoversAndTheCameraStreamsAgainWhenBack) {
  vexcap_device* device = start_and_open(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(device, nullptr);
  Frames frames;
  ASSERT_EQ(vexcap_start_streaming(device, Frames::keep, &frames), VEXCAP_OK);
  next_frame();
  ASSERT_EQ(frames.count(), 1u);
  vc::remove_group(camera_id());  // the capture fails; the library recovers by itself
  for (int i = 0; i < 3; ++i) next_frame();
  EXPECT_EQ(frames.count(), 1u);

  vc::add_group(vc::default_scenario().groups.at(0));
  vexcap_stop_streaming(device);  // the recovered reader is stopped; the answer depends on timing
  EXPECT_EQ(vexcap_device_close(device), VEXCAP_OK);

  device = open(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(device, nullptr);
  frames.clear();
  ASSERT_EQ(vexcap_start_streaming(device, Frames::keep, &frames), VEXCAP_OK);
  next_frame();
  EXPECT_EQ(frames.count(), 1u);
  ASSERT_EQ(vexcap_stop_streaming(device), VEXCAP_OK);
  EXPECT_EQ(vexcap_device_close(device), VEXCAP_OK);
}

// Exit tears the devices still open down before the runtime stops: the fixture then finds no
// violation and no object of the double left alive.
TEST_F(Lifecycle, ExitWithDevicesStillOpenLeavesNothingBehind) {
  vexcap_device* infrared = start_and_open(VEXCAP_STREAM_MODE_EXCLUSIVE);
  vexcap_device* colour = open(VEXCAP_STREAM_MODE_SHARED);
  ASSERT_NE(infrared, nullptr);
  ASSERT_NE(colour, nullptr);
  Frames frames;
  ASSERT_EQ(vexcap_start_streaming(infrared, Frames::keep, &frames), VEXCAP_OK);
  next_frame();
  ASSERT_EQ(frames.count(), 1u);
  frames.clear();  // records go back before exit; a record kept past exit is the host's to drop
  EXPECT_EQ(vexcap_exit(), VEXCAP_OK);
  EXPECT_TRUE(wait_until([] { return wd::live_objects().empty(); })) << "left alive:" << live_text();
}

void cycle(Frames& frames) {
  vexcap_device* device = DoubleTest::start_and_open(VEXCAP_STREAM_MODE_EXCLUSIVE);
  ASSERT_NE(device, nullptr);
  ASSERT_EQ(vexcap_start_streaming(device, Frames::keep, &frames), VEXCAP_OK);
  next_frame();
  ASSERT_EQ(vexcap_stop_streaming(device), VEXCAP_OK);
  ASSERT_EQ(vexcap_device_close(device), VEXCAP_OK);
  ASSERT_EQ(vexcap_exit(), VEXCAP_OK);
  frames.clear();
}

TEST_F(Lifecycle, HundredOpenStreamCloseCyclesLeaveNothingGrowing) {
  Frames frames;
  for (int i = 0; i < 5; ++i) cycle(frames);  // warm-up: what the first cycles allocate for good
  ASSERT_TRUE(wait_until([] { return wd::live_objects().empty(); })) << live_text();
  const auto before = testing::Footprint::now();
  for (int i = 0; i < 100; ++i) {
    cycle(frames);
    if (HasFatalFailure()) return;
  }
  ASSERT_TRUE(wait_until([] { return wd::live_objects().empty(); })) << live_text();
  // Threads of finished operations are leaving: give them a moment.
  testing::Footprint after;
  wait_until([&] {
    after = testing::Footprint::now();
    return after.within(before, 256 * 1024, 0, 16);
  });
  EXPECT_TRUE(after.within(before, 256 * 1024, 0, 16)) << before.text() << " -> " << after.text();
}

}  // namespace
}  // namespace vexcap::double_tests
