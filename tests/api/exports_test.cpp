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

TEST_F(Exports, NullPointersAreRefusedBeforeAnyRequest) {
  vexcap_device device{};
  vexcap_device* out = nullptr;
  vexcap_open_params params{};
  vexcap_property property{};
  vexcap_device_callbacks callbacks{};
  vexcap_device_subscription* subscription = nullptr;
  uint8_t bytes[8] = {};
  uint32_t u32 = 0;
  uint64_t u64 = 0;
  unsigned int led = 0;

  const std::vector<std::pair<const char*, std::function<int()>>> calls = {
      {"capabilities/id", [&] { return vexcap_get_device_capabilities(nullptr, bytes); }},
      {"capabilities/out", [&] { return vexcap_get_device_capabilities(L"id", nullptr); }},
      {"locations/id", [&] { return vexcap_get_device_locations(nullptr, bytes); }},
      {"locations/out", [&] { return vexcap_get_device_locations(L"id", nullptr); }},
      {"group type", [&] { return vexcap_get_source_group_type(nullptr); }},
      {"targeted", [&] { return vexcap_get_targeted_location(nullptr); }},
      {"type vid/pid/vid", [&] { return vexcap_get_source_group_type_for_vid_pid(nullptr, L"p", &u32); }},
      {"type vid/pid/pid", [&] { return vexcap_get_source_group_type_for_vid_pid(L"v", nullptr, &u32); }},
      {"type vid/pid/out", [&] { return vexcap_get_source_group_type_for_vid_pid(L"v", L"p", nullptr); }},
      {"open/out", [&] { return vexcap_device_open(nullptr, L"id", &params); }},
      {"open/id", [&] { return vexcap_device_open(&out, nullptr, &params); }},
      {"open/params", [&] { return vexcap_device_open(&out, L"id", nullptr); }},
      {"close", [&] { return vexcap_device_close(nullptr); }},
      {"start", [&] { return vexcap_start_streaming(nullptr, keep_frames, nullptr); }},
      {"start ex", [&] { return vexcap_start_streaming_ex(nullptr, keep_frames, nullptr, 1); }},
      {"stop", [&] { return vexcap_stop_streaming(nullptr); }},
      {"stop ex", [&] { return vexcap_stop_streaming_ex(nullptr, 1); }},
      {"return frame", [&] { return vexcap_return_frame(nullptr); }},
      {"set exposure", [&] { return vexcap_set_exposure(nullptr, 1); }},
      {"set iso", [&] { return vexcap_set_iso_speed(nullptr, 1); }},
      {"set led", [&] { return vexcap_set_led_power(nullptr, 1); }},
      {"get exposure/dev", [&] { return vexcap_get_exposure(nullptr, &u64); }},
      {"get exposure/out", [&] { return vexcap_get_exposure(&device, nullptr); }},
      {"get iso/dev", [&] { return vexcap_get_iso_speed(nullptr, &u32); }},
      {"get iso/out", [&] { return vexcap_get_iso_speed(&device, nullptr); }},
      {"get led", [&] { return vexcap_get_led_power(nullptr, &led); }},
      {"set property/dev", [&] { return vexcap_set_dev_property(nullptr, &property); }},
      {"set property/record", [&] { return vexcap_set_dev_property(&device, nullptr); }},
      {"get property/dev", [&] { return vexcap_get_dev_property(nullptr, &property); }},
      {"get property/record", [&] { return vexcap_get_dev_property(&device, nullptr); }},
      {"device callbacks", [&] { return vexcap_regiester_for_device_callbacks(nullptr, &callbacks, nullptr); }},
      {"device callbacks off", [&] { return vexcap_unregiester_device_callbacks(nullptr); }},
      {"excl", [&] { return vexcap_register_for_excl_ctrl_status_event(nullptr, nullptr, nullptr); }},
      {"excl off", [&] { return vexcap_unregister_for_excl_ctrl_status_event(nullptr); }},
      {"rgb status", [&] { return vexcap_register_for_rgb_status_event(nullptr, nullptr, nullptr); }},
      {"rgb status off", [&] { return vexcap_unregister_for_rgb_status_event(nullptr); }},
      {"unsupported", [&] { return vexcap_register_for_unsupported_format_status_event(nullptr, nullptr, nullptr); }},
      {"unsupported off", [&] { return vexcap_unregister_for_unsupported_format_status_event(nullptr); }},
      {"rgb stopped", [&] { return vexcap_register_for_rgb_stopped_event(nullptr, nullptr, nullptr); }},
      {"rgb stopped off", [&] { return vexcap_unregister_for_rgb_stopped_event(nullptr); }},
  };
  for (const auto& [name, call] : calls) EXPECT_EQ(call(), VEXCAP_E_INVALID_ARG) << name;

  // The boolean query answers 0, not an error code.
  EXPECT_EQ(vexcap_is_vidpid_used_by_device(nullptr, L"v", L"p"), 0);
  EXPECT_EQ(vexcap_is_vidpid_used_by_device(L"g", nullptr, L"p"), 0);
  EXPECT_EQ(vexcap_is_vidpid_used_by_device(L"g", L"v", nullptr), 0);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(subscription, nullptr);
}

TEST_F(Exports, ClosingAnEmptySlotFailsAndStillFreesTheHandle) {
  // A handle the library would have allocated; the leak checker proves it is freed.
  auto* handle = static_cast<vexcap_device*>(std::calloc(1, sizeof(vexcap_device)));
  EXPECT_EQ(vexcap_device_close(handle), VEXCAP_E_FAIL);
  auto* other = static_cast<vexcap_device*>(std::calloc(1, sizeof(vexcap_device)));
  other->stream_mode = 3;
  EXPECT_EQ(vexcap_device_close(other), VEXCAP_E_FAIL);
}

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
