// The shutdown test a capture failure runs before the session is replaced; the virtual
// camera's sessions always support it, so the other answer is tried here.
#include <gtest/gtest.h>

#include "capture/shutdown_test.h"
#include "support/log_capture.h"

namespace vexcap::capture {
namespace {

// Only the shutdown query matters to the test; every other operation is out of reach.
class ReportingCapture final : public platform::Capture {
 public:
  explicit ReportingCapture(std::optional<hresult> shutdown) : shutdown_(shutdown) {}
  void initialize(const platform::CaptureSettings&) override { unused(); }
  std::vector<std::shared_ptr<platform::FrameSource>> frame_sources() override { unused(); }
  void close_frame_sources() override { unused(); }
  std::shared_ptr<platform::FrameReader> create_frame_reader(const std::shared_ptr<platform::FrameSource>&,
                                                             const std::optional<std::wstring>&) override {
    unused();
  }
  platform::EventToken add_failed(FailedHandler) override { unused(); }
  void remove_failed(platform::EventToken) override { unused(); }
  platform::EventToken add_exclusive_control_status_changed(ExclusiveControlHandler) override { unused(); }
  void remove_exclusive_control_status_changed(platform::EventToken) override { unused(); }
  std::optional<hresult> shutdown_if_supported() override {
    ++shutdown_queries;
    return shutdown_;
  }
  void close() override { unused(); }
  int shutdown_queries = 0;

 private:
  [[noreturn]] static void unused() { throw platform::PlatformError(HR_UNEXPECTED, L"unused"); }
  std::optional<hresult> shutdown_;
};

TEST(ShutdownTest, AnObjectWithoutTheInterfaceIsNotAShutdown) {
  testing::LogCapture log;
  ReportingCapture capture(std::nullopt);
  EXPECT_EQ(run_shutdown_test(capture), 0);
  EXPECT_EQ(log.lines(), std::vector<std::string>{"I: Not a shutdown\n"});
}

TEST(ShutdownTest, AShutdownAnswersItsOwnResult) {
  testing::LogCapture log;
  ReportingCapture capture(HR_MF_NOT_FOUND);
  EXPECT_EQ(run_shutdown_test(capture), HR_MF_NOT_FOUND);
  EXPECT_EQ(capture.shutdown_queries, 1);
  EXPECT_EQ(log.lines(), std::vector<std::string>{"I: Yes a shutdown\n"});
}

}  // namespace
}  // namespace vexcap::capture
