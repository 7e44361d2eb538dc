// The runtime start-up rules on a private runtime, and the shutdown test.
#include <gtest/gtest.h>

#include "api/runtime_startup.h"
#include "platform/virtual/virtual_runtime.h"
#include "support/log_capture.h"

namespace vexcap::api {
namespace {

TEST(RuntimeLifetime, ARepeatedStartShutsBothRuntimesDownFirst) {
  virtual_camera::VirtualRuntime runtime;
  RuntimeLifetime lifetime(runtime);
  ASSERT_EQ(lifetime.start(), HR_OK);
  ASSERT_EQ(lifetime.start(), HR_OK);
  EXPECT_EQ(runtime.mf_shutdown_calls(), 1);
  EXPECT_EQ(runtime.ro_uninitialize_calls(), 1);
  EXPECT_EQ(runtime.ro_initialize_calls(), 2);
  EXPECT_TRUE(lifetime.media_foundation_started());
  lifetime.shutdown();
  EXPECT_FALSE(lifetime.media_foundation_started());
  EXPECT_FALSE(lifetime.windows_runtime_initialized());
}

TEST(RuntimeLifetime, PositiveMediaFoundationResultsCountAsStarted) {
  virtual_camera::VirtualRuntime runtime;
  runtime.set_mf_startup_result(HR_FALSE);
  RuntimeLifetime lifetime(runtime);
  EXPECT_EQ(lifetime.start(), HR_OK);
  EXPECT_TRUE(lifetime.media_foundation_started());
  lifetime.shutdown();
}

// Only the shutdown query matters to the test; every other operation is out of reach.
class ReportingCapture final : public platform::Capture {
 public:
  explicit ReportingCapture(std::optional<hresult> shutdown) : shutdown_(shutdown) {}
  void initialize(const platform::CaptureSettings&) override { unused(); }
  std::vector<std::shared_ptr<platform::FrameSource>> frame_sources() override { unused(); }
  void close_frame_sources() override { unused(); }
  std::shared_ptr<platform::FrameReader> create_frame_reader(
      const std::shared_ptr<platform::FrameSource>&, const std::optional<std::wstring>&) override {
    unused();
  }
  platform::EventToken add_failed(FailedHandler) override { unused(); }
  void remove_failed(platform::EventToken) override { unused(); }
  platform::EventToken add_exclusive_control_status_changed(ExclusiveControlHandler) override {
    unused();
  }
  void remove_exclusive_control_status_changed(platform::EventToken) override { unused(); }
  std::optional<hresult> shutdown_if_supported() override {
    ++shutdown_queries;
    return shutdown_;
  }
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
}  // namespace vexcap::api
