// The control tracker: when a set control starts being reported with the frames.
#include <gtest/gtest.h>

#include "capture/control_tracker.h"

namespace vexcap::capture {
namespace {

TEST(ControlTracker, NothingIsReportedBeforeTheFirstSet) {
  capture::ControlTracker tracker;
  tracker.set_valid_now(TrackedControl::Exposure, true);  // valid now, but never changed
  for (int frame = 0; frame < 8; ++frame) {
    const ControlReport report = tracker.next_frame();
    EXPECT_FALSE(report.report_exposure);
    EXPECT_FALSE(report.report_iso_speed);
    EXPECT_FALSE(report.report_led_power);
  }
}

TEST(ControlTracker, AChangeIsReportedFromTheFifthFrameOn) {
  capture::ControlTracker tracker;
  tracker.store_exposure(2500);
  for (int frame = 1; frame <= 4; ++frame) {
    EXPECT_FALSE(tracker.next_frame().report_exposure) << "frame " << frame;
  }
  for (int frame = 5; frame <= 300; ++frame) {  // the counter stays capped, never wraps
    const ControlReport report = tracker.next_frame();
    ASSERT_TRUE(report.report_exposure) << "frame " << frame;
    EXPECT_EQ(report.exposure, 2500u);
    EXPECT_FALSE(report.report_iso_speed);
    EXPECT_FALSE(report.report_led_power);
  }
}

TEST(ControlTracker, AValidNowControlIsReportedAtOnce) {
  capture::ControlTracker tracker;
  tracker.set_valid_now(TrackedControl::IsoSpeed, true);
  tracker.store_iso_speed(400);
  tracker.store_led_power(7);
  const ControlReport report = tracker.next_frame();
  EXPECT_TRUE(report.report_iso_speed);
  EXPECT_EQ(report.iso_speed, 400u);
  EXPECT_FALSE(report.report_led_power);
}

TEST(ControlTracker, ANewValueStartsTheCountAgain) {
  capture::ControlTracker tracker;
  tracker.store_led_power(10);
  for (int frame = 0; frame < 6; ++frame) tracker.next_frame();
  tracker.store_led_power(20);
  for (int frame = 1; frame <= 4; ++frame) EXPECT_FALSE(tracker.next_frame().report_led_power);
  const ControlReport fifth = tracker.next_frame();
  EXPECT_TRUE(fifth.report_led_power);
  EXPECT_EQ(fifth.led_power, 20u);
}

TEST(ControlTracker, SettingTheSameValueLeavesTheCountAsItWas) {
  capture::ControlTracker tracker;
  tracker.store_iso_speed(800);
  for (int frame = 0; frame < 3; ++frame) tracker.next_frame();
  tracker.store_iso_speed(800);  // no restart: two more frames reach the fifth
  EXPECT_FALSE(tracker.next_frame().report_iso_speed);
  EXPECT_TRUE(tracker.next_frame().report_iso_speed);
}

TEST(ControlTracker, StoringTheInitialValueMarksNothingChanged) {
  capture::ControlTracker tracker;
  tracker.store_exposure(0);
  for (int frame = 0; frame < 6; ++frame) EXPECT_FALSE(tracker.next_frame().report_exposure);
}

}  // namespace
}  // namespace vexcap::capture
