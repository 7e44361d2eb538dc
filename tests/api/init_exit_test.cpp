// vexcap_init / vexcap_exit and the runtime start-up they drive, on the virtual runtime.
#include <gtest/gtest.h>

#include <string>

#include "api/context.h"
#include "common/hresult.h"
#include "support/library_fixture.h"
#include "support/log_capture.h"

namespace vexcap {
namespace {

using testing::LibraryTest;
using testing::LogCapture;

class InitAndExit : public LibraryTest {};

bool contains_prefix(const std::vector<std::string>& lines, const std::string& prefix) {
  for (const auto& line : lines)
    if (line.rfind(prefix, 0) == 0) return true;
  return false;
}

TEST_F(InitAndExit, SecondInitIsANoOpAndExitShutsBothRuntimesDown) {
  EXPECT_EQ(vexcap_init(), 0);
  EXPECT_EQ(vexcap_init(), 0);
  EXPECT_EQ(runtime().ro_initialize_calls(), 1);
  EXPECT_EQ(runtime().mf_startup_calls(), 1);
  EXPECT_EQ(vexcap_exit(), 0);
  EXPECT_EQ(runtime().mf_shutdown_calls(), 1);
  EXPECT_EQ(runtime().ro_uninitialize_calls(), 1);
  EXPECT_EQ(api::current_context(), nullptr);
}

TEST_F(InitAndExit, ExitWithoutInitAnswersZero) {
  EXPECT_EQ(vexcap_exit(), 0);
  EXPECT_EQ(vexcap_exit(), 0);
  EXPECT_EQ(runtime().mf_shutdown_calls(), 0);
}

TEST_F(InitAndExit, EveryExitLogsTheFailedPostedExitAndStillAnswersZero) {
  LogCapture log;
  ASSERT_EQ(vexcap_init(), 0);
  EXPECT_EQ(vexcap_exit(), 0);
  EXPECT_TRUE(contains_prefix(log.lines(), "W: Failed posting exit message to the window thread: "));
}

TEST_F(InitAndExit, InitAndExitCanRepeat) {
  for (int i = 0; i < 3; ++i) {
    ASSERT_EQ(vexcap_init(), 0);
    ASSERT_EQ(vexcap_exit(), 0);
  }
  EXPECT_EQ(runtime().ro_initialize_calls(), 3);
  EXPECT_EQ(runtime().ro_uninitialize_calls(), 3);
}

TEST_F(InitAndExit, PositiveStartUpResultsCountAsStartedAndAreShutDown) {
  struct Case {
    hresult ro_initialize, mf_startup;
  };
  for (const Case& c : {Case{HR_CHANGED_MODE, HR_OK}, Case{HR_FALSE, HR_OK}, Case{HR_OK, HR_FALSE}}) {
    runtime().reset();
    runtime().set_ro_initialize_result(c.ro_initialize);
    runtime().set_mf_startup_result(c.mf_startup);
    EXPECT_EQ(vexcap_init(), 0);
    EXPECT_EQ(runtime().mf_startup_calls(), 1);
    EXPECT_EQ(vexcap_exit(), 0);
    EXPECT_EQ(runtime().mf_shutdown_calls(), 1);
    EXPECT_EQ(runtime().ro_uninitialize_calls(), 1);  // even after RPC_E_CHANGED_MODE
  }
}

TEST_F(InitAndExit, RefusedRuntimeTearsTheLibraryDown) {
  LogCapture log;
  runtime().set_ro_initialize_result(HR_ACCESSDENIED);
  EXPECT_EQ(vexcap_init(), VEXCAP_E_ACCESS_DENIED);
  EXPECT_EQ(api::current_context(), nullptr);
  EXPECT_EQ(runtime().mf_startup_calls(), 0);
  EXPECT_EQ(runtime().ro_uninitialize_calls(), 0);
  EXPECT_TRUE(log.contains("E: Failed initializing Windows Foundation: 80070005"));
  EXPECT_TRUE(log.contains("E: Failed initializing the VexCap: 80070005"));

  runtime().set_ro_initialize_result(HR_OK);
  EXPECT_EQ(vexcap_init(), 0);  // a later start-up works
}

TEST_F(InitAndExit, MediaFoundationFailureShutsTheWindowsRuntimeDownAgain) {
  LogCapture log;
  runtime().set_mf_startup_result(HR_FAIL);
  EXPECT_EQ(vexcap_init(), VEXCAP_E_FAIL);
  EXPECT_EQ(api::current_context(), nullptr);
  EXPECT_EQ(runtime().ro_uninitialize_calls(), 1);
  EXPECT_EQ(runtime().mf_shutdown_calls(), 0);
  EXPECT_TRUE(log.contains("E: Failed initializing Media Foundation: 80004005"));
}

TEST_F(InitAndExit, FailedMediaFoundationShutdownIsTriedAgainByTheNextStartUp) {
  LogCapture log;
  ASSERT_EQ(vexcap_init(), 0);
  runtime().set_mf_shutdown_result(HR_FAIL);
  EXPECT_EQ(vexcap_exit(), 0);
  EXPECT_TRUE(log.contains("E: Failed shutting down MF: 80004005"));
  runtime().set_mf_shutdown_result(HR_OK);
  ASSERT_EQ(vexcap_init(), 0);
  EXPECT_EQ(runtime().mf_shutdown_calls(), 2);  // the start-up shut the old one down first
  EXPECT_EQ(runtime().mf_startup_calls(), 2);
}

// The start-up result reaches the host through the result-code table.
TEST_F(InitAndExit, StartUpResultsAreMappedLikeEveryRequest) {
  struct Case {
    std::uint32_t ro_result;
    int code;
    bool stays_up;
  };
  const Case cases[] = {
      {0x8007139F, -2, false}, {0x80070005, -4, false}, {0x80070057, -5, false},
      {0x80004002, -6, false}, {0x800705B4, -1, false}, {0x80004005, -1, false},
      {0x000005B4, -3, true},  // the bare time-out: positive, so the library stays up
      {0x00000002, -1, true},
  };
  for (const Case& c : cases) {
    runtime().reset();
    runtime().set_ro_initialize_result(static_cast<hresult>(c.ro_result));
    EXPECT_EQ(vexcap_init(), c.code) << std::hex << c.ro_result;
    EXPECT_EQ(api::current_context() != nullptr, c.stays_up) << std::hex << c.ro_result;
    EXPECT_EQ(vexcap_exit(), 0);
  }
}

TEST_F(InitAndExit, RequestThreadThatCannotStartGivesTheRawFailure) {
  LogCapture log;
  api::set_request_thread_starter_for_testing([](api::RequestHandlerFactory) { return nullptr; });
  EXPECT_EQ(vexcap_init(), static_cast<int>(0x80004005));
  api::set_request_thread_starter_for_testing(nullptr);
  EXPECT_EQ(api::current_context(), nullptr);
  EXPECT_TRUE(log.contains("E: Failed initializing the VXC thread"));
  EXPECT_EQ(runtime().ro_initialize_calls(), 0);
  EXPECT_EQ(vexcap_init(), 0);
}

}  // namespace
}  // namespace vexcap
