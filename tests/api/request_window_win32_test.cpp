// The request thread's hidden window, on Windows (and under Wine).
#include <windows.h>

#include <gtest/gtest.h>

#include "api/context.h"
#include "support/library_fixture.h"
#include "support/log_capture.h"

namespace vexcap {
namespace {

class RequestWindow : public testing::LibraryTest {};

TEST_F(RequestWindow, IsAHiddenMinimizedTopLevelWindowOfItsOwnClass) {
  ASSERT_EQ(vexcap_init(), 0);
  HWND window = FindWindowW(L"VXDCTWindow", L"");
  ASSERT_NE(window, nullptr);
  EXPECT_FALSE(IsWindowVisible(window));
  EXPECT_TRUE(GetWindowLongPtrW(window, GWL_STYLE) & WS_MINIMIZE);
  EXPECT_EQ(GetAncestor(window, GA_PARENT), GetDesktopWindow());  // not message-only
  DWORD process = 0;
  const DWORD thread = GetWindowThreadProcessId(window, &process);
  EXPECT_EQ(process, GetCurrentProcessId());
  EXPECT_NE(thread, GetCurrentThreadId());
  ASSERT_EQ(vexcap_exit(), 0);
  EXPECT_EQ(FindWindowW(L"VXDCTWindow", L""), nullptr);
}

TEST_F(RequestWindow, InitFailsWithTheRawFailureWhenTheClassCannotBeRegistered) {
  // The class registered by someone else first makes the library's registration fail.
  WNDCLASSEXW taken{};
  taken.cbSize = sizeof taken;
  taken.lpfnWndProc = DefWindowProcW;
  taken.hInstance = GetModuleHandleW(nullptr);
  taken.lpszClassName = L"VXDCTWindow";
  ASSERT_NE(RegisterClassExW(&taken), 0);

  testing::LogCapture log;
  EXPECT_EQ(vexcap_init(), static_cast<int>(0x80004005));
  EXPECT_EQ(api::current_context(), nullptr);
  EXPECT_TRUE(log.contains("E: Failed creating the window handle"));
  EXPECT_TRUE(log.contains("E: Failed initializing the VXC thread"));
  EXPECT_EQ(runtime().ro_initialize_calls(), 0);

  ASSERT_TRUE(UnregisterClassW(L"VXDCTWindow", GetModuleHandleW(nullptr)));
  EXPECT_EQ(vexcap_init(), 0);
}

}  // namespace
}  // namespace vexcap
