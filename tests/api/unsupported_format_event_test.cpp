// The unsupported-format event through the exports: registered on the shared client.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>

#include "support/library_fixture.h"

namespace vexcap {
namespace {

namespace vc = virtual_camera;
using namespace std::chrono_literals;

std::atomic<int> first_calls{0};
std::atomic<int> second_calls{0};
std::atomic<std::uint32_t> last_status{0};

void first(std::uint32_t status, void*) {
  last_status = status;
  ++first_calls;
}
void second(std::uint32_t, void*) { ++second_calls; }
bool keep(vexcap_frame* frame, void*) {
  vexcap_return_frame(frame);
  return true;
}

class UnsupportedFormatEvent : public testing::LibraryTest {};

TEST_F(UnsupportedFormatEvent, TheFirstRegistrationHearsUndecodableFramesUntilUnregistered) {
  first_calls = 0;
  second_calls = 0;
  vexcap_device* device = open_default_camera(VEXCAP_STREAM_MODE_EXCLUSIVE, 0, 0);
  ASSERT_NE(device, nullptr);
  EXPECT_EQ(vexcap_unregister_for_unsupported_format_status_event(device), 0);  // none yet

  EXPECT_EQ(vexcap_register_for_unsupported_format_status_event(device, first, nullptr), 0);
  EXPECT_EQ(vexcap_register_for_unsupported_format_status_event(device, second, nullptr), 0);
  ASSERT_EQ(vexcap_start_streaming(device, keep, nullptr), 0);
  vc::set_unsupported_frames(true);
  vc::advance_time(1s);
  EXPECT_GE(first_calls.load(), 1);
  EXPECT_EQ(last_status.load(), 1u);
  EXPECT_EQ(second_calls.load(), 0);  // the second registration was ignored

  EXPECT_EQ(vexcap_unregister_for_unsupported_format_status_event(device), 0);
  const int heard = first_calls;
  vc::advance_time(1s);
  EXPECT_EQ(first_calls.load(), heard);
  EXPECT_EQ(vexcap_unregister_for_unsupported_format_status_event(device), 0);

  ASSERT_EQ(vexcap_stop_streaming(device), 0);
  ASSERT_EQ(vexcap_device_close(device), 0);
}

}  // namespace
}  // namespace vexcap
