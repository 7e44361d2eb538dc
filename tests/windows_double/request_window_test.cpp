// The request thread keeps answering its window while a request waits on the platform: a
// thread that sends it an ordinary message is not held up, and a request sent straight to the
// window does not run inside the waiting one.
#include <windows.h>

#include <future>

#include "double_test.h"

namespace vexcap::double_tests {
namespace {

using RequestWindow = DoubleTest;

HWND request_window() { return FindWindowW(L"VXDCTWindow", nullptr); }

// True when the window answered an ordinary message within a second.
bool answers(HWND window) {
  DWORD_PTR result = 0;
  return SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_BLOCK, 1000, &result) != 0;
}

constexpr UINT kExitRequest = 1024;  // the request vexcap_exit sends

// FindAllAsync, waited for on the request thread, held for a while by the camera.
TEST_F(RequestWindow, AnOperationWaitedForAnswersMessagesButRunsNoSecondRequest) {
  ASSERT_EQ(vexcap_init(), VEXCAP_OK);
  const HWND window = request_window();
  ASSERT_NE(window, nullptr);
  vc::set_call_fault(vc::PlatformCall::FindAllSourceGroups, {HR_OK, 3000ms});
  auto query = std::async(std::launch::async, [] {
    std::uint32_t type = 0;
    return std::make_pair(vexcap_get_source_group_type(&type), type);
  });
  ASSERT_TRUE(vc::wait_for_slow_call(5000ms));
  EXPECT_TRUE(answers(window));
  // The exit request, sent straight to the window: run inside the query it would stop the
  // runtime under it.
  SendMessageW(window, kExitRequest, 0, 0);
  EXPECT_EQ(query.wait_for(0ms), std::future_status::timeout);
  vc::release_slow_calls();
  EXPECT_EQ(query.get(), std::make_pair(VEXCAP_OK, std::uint32_t(VEXCAP_GROUP_TYPE_USB)));
  vc::clear_faults();
  std::uint8_t capabilities[VEXCAP_CAPABILITY_COUNT] = {};
  EXPECT_EQ(vexcap_get_device_capabilities(camera_id().c_str(), capabilities), VEXCAP_OK);
}

// Device open waits for the client's initialization thread.
TEST_F(RequestWindow, AnInitializationWaitedForAnswersMessages) {
  ASSERT_EQ(vexcap_init(), VEXCAP_OK);
  const HWND window = request_window();
  ASSERT_NE(window, nullptr);
  vc::set_call_fault(vc::PlatformCall::Initialize, {HR_OK, 3000ms});
  auto opened = std::async(std::launch::async, [] { return open(VEXCAP_STREAM_MODE_EXCLUSIVE); });
  ASSERT_TRUE(vc::wait_for_slow_call(5000ms));
  EXPECT_TRUE(answers(window));
  EXPECT_EQ(opened.wait_for(0ms), std::future_status::timeout);
  vc::release_slow_calls();
  vc::clear_faults();
  vexcap_device* device = opened.get();
  ASSERT_NE(device, nullptr);
  EXPECT_EQ(vexcap_device_close(device), VEXCAP_OK);
}

}  // namespace
}  // namespace vexcap::double_tests
