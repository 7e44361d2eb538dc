// What ends or holds back delivery, through the exports: a reader that does not start.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>

#include "support/library_fixture.h"
#include "support/log_capture.h"

namespace vexcap {
namespace {

namespace vc = virtual_camera;
using namespace std::chrono_literals;

constexpr std::size_t kInfrared = 0;

class DeliveryLimits : public testing::OpenDevice {};

std::atomic<int> g_frames{0};
bool count_frame(vexcap_frame* frame, void*) {
  ++g_frames;
  vexcap_return_frame(frame);
  return true;
}

TEST_F(DeliveryLimits, AReaderThatDoesNotStartAnswersAFailureAndSaysWhy) {
  vc::Scenario scenario = vc::default_scenario();
  scenario.groups[0].sources[kInfrared].refuses_nv12 = true;  // its L8 cannot become NV12
  ASSERT_NE(open(VEXCAP_STREAM_MODE_EXCLUSIVE, scenario), nullptr);
  g_frames = 0;
  EXPECT_EQ(vexcap_start_streaming(device_, count_frame, nullptr), VEXCAP_E_INVALID_STATE);
  EXPECT_TRUE(log.contains("E: Reader did not start: OutputFormatNotSupported (3)"));
  vc::advance_time(100ms);
  EXPECT_EQ(g_frames.load(), 0);
}

}  // namespace
}  // namespace vexcap
