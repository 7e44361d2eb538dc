// Opening, streaming on and closing a device through the exports, on the default virtual camera.
#include <gtest/gtest.h>

#include "support/library_fixture.h"

namespace vexcap {
namespace {

namespace vc = virtual_camera;

std::wstring default_group_id() { return *vc::default_scenario().groups.at(0).id; }

class DeviceOpen : public testing::LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    ASSERT_EQ(vexcap_init(), 0);
  }
};

bool keep(vexcap_frame* frame, void*) {
  vexcap_return_frame(frame);
  return true;
}

TEST_F(DeviceOpen, OpensBothClientsStreamsOnEitherAndCloses) {
  vexcap_device* device = nullptr;
  const vexcap_open_params params{VEXCAP_STREAM_MODE_EXCLUSIVE, 0, 0};
  ASSERT_EQ(vexcap_device_open(&device, default_group_id().c_str(), &params), 0);
  ASSERT_NE(device, nullptr);
  EXPECT_EQ(device->stream_mode, 1u);
  EXPECT_EQ(vc::session_count(default_group_id(), platform::SharingMode::ExclusiveControl), 1);
  EXPECT_EQ(vc::session_count(default_group_id(), platform::SharingMode::SharedReadOnly), 1);

  EXPECT_EQ(vexcap_start_streaming_ex(device, keep, nullptr, VEXCAP_STREAM_SELECT_EXCLUSIVE), 0);
  EXPECT_EQ(vexcap_stop_streaming_ex(device, VEXCAP_STREAM_SELECT_EXCLUSIVE), 0);
  EXPECT_EQ(vexcap_start_streaming(device, keep, nullptr), 0);
  EXPECT_EQ(vexcap_stop_streaming(device), 0);
  EXPECT_EQ(vexcap_stop_streaming_ex(device, 0), 0);  // the shared client again: stopped twice is fine

  EXPECT_EQ(vexcap_device_close(device), 0);
  EXPECT_EQ(vc::session_count(default_group_id()), 0);
}

}  // namespace
}  // namespace vexcap
