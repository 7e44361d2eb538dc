// The exports' own rules: argument checks, handle allocation and release, serialization.
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <thread>
#include <vector>

#include "support/library_fixture.h"

namespace vexcap {
namespace {

class Exports : public testing::LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    ASSERT_EQ(vexcap_init(), 0);
  }
};

bool keep_frames(vexcap_frame*, void*) { return true; }

TEST_F(Exports, ReturnFrameFreesRecordAndPixels) {
  auto* frame = static_cast<vexcap_frame*>(std::calloc(1, sizeof(vexcap_frame)));
  frame->data = static_cast<uint8_t*>(std::malloc(640 * 480));
  EXPECT_EQ(vexcap_return_frame(frame), 0);
}

TEST_F(Exports, StreamSelectorIsStoredIntoTheHandle) {
  vexcap_device device{};
  vexcap_start_streaming_ex(&device, keep_frames, nullptr, 1);
  EXPECT_EQ(device.stream_selector, 1u);
  vexcap_stop_streaming_ex(&device, 7);
  EXPECT_EQ(device.stream_selector, 7u);
  EXPECT_EQ(device.reserved, 0u);
}

TEST_F(Exports, ConcurrentCallersAllGetAnswers) {
  std::vector<std::thread> callers;
  std::atomic<int> answered{0};
  for (int t = 0; t < 4; ++t) {
    callers.emplace_back([&] {
      uint32_t type = 0;
      vexcap_device device{};
      for (int i = 0; i < 100; ++i) {
        if (vexcap_get_source_group_type(&type) != VEXCAP_E_INVALID_ARG) ++answered;
        if (vexcap_device_close(static_cast<vexcap_device*>(std::calloc(1, sizeof device))) ==
            VEXCAP_E_FAIL)
          ++answered;
      }
    });
  }
  for (auto& caller : callers) caller.join();
  EXPECT_EQ(answered.load(), 800);
}

}  // namespace
}  // namespace vexcap
