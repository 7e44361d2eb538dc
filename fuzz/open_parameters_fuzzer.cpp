// Open parameters (any stream mode and preferred size), stream selectors and stream-type codes
// through the exports, on a virtual camera that has a source of every reader kind, with the
// manual clock. Every answer is a documented result code, every delivered frame is whole and
// comes back, and nothing arrives after the device is closed.
#include <fuzzer/FuzzedDataProvider.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdlib>

#include "fuzz_log.h"
#include "platform/virtual/virtual_camera.h"
#include "vexcap/vexcap.h"

namespace vc = vexcap::virtual_camera;

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

bool documented(int code) { return code <= 0 && code >= VEXCAP_E_NO_INTERFACE; }

std::atomic<long> delivered{0};

bool take_frame(vexcap_frame* frame, void* context) {
  require(frame != nullptr && frame->data != nullptr && frame->width > 0 && frame->height > 0);
  require(frame->reserved0 == 0 && frame->reserved1 == 0);
  // The whole first plane must be readable.
  volatile std::uint8_t last = frame->data[std::size_t{frame->height - 1} * frame->stride + frame->width - 1];
  (void)last;
  delivered.fetch_add(1);
  vexcap_return_frame(frame);
  return context == nullptr;  // some streams stop after their first frame
}

// The default camera plus a depth and a custom source, so every stream mode finds its kind.
vc::Scenario every_kind() {
  vc::Scenario scenario = vc::default_scenario();
  scenario.clock = vc::ClockMode::Manual;
  vc::GroupModel& group = scenario.groups.at(0);
  vc::SourceModel depth = group.sources.at(0);
  depth.kind = vexcap::platform::SourceKind::Depth;
  depth.id = L"Source#2@depth";
  for (auto& format : depth.formats) format.subtype = L"D16";
  vc::SourceModel custom = group.sources.at(0);
  custom.kind = vexcap::platform::SourceKind::Custom;
  custom.id = L"Source#3@custom";
  group.sources.push_back(depth);
  group.sources.push_back(custom);
  return scenario;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::wstring group_id = [] {
    vexcap::fuzzing::log_into_nothing();
    const vc::Scenario scenario = every_kind();
    vc::use_scenario(scenario);
    require(vexcap_init() == VEXCAP_OK);
    return *scenario.groups.at(0).id;
  }();

  FuzzedDataProvider input(data, size);
  const vexcap_open_params params{input.ConsumeIntegral<std::uint32_t>(),
                                  input.ConsumeIntegral<std::uint16_t>(),
                                  input.ConsumeIntegral<std::uint16_t>()};
  vexcap_device* device = nullptr;
  require(vexcap_device_open(&device, group_id.c_str(), &params) == VEXCAP_OK);
  require(device != nullptr && device->stream_mode == params.stream_mode);

  static const std::uint32_t kProperties[] = {VEXCAP_PROP_STREAM_TYPE, VEXCAP_PROP_STREAM_TYPE_APPLY,
                                              VEXCAP_PROP_HIRES_SENSOR_TYPE, VEXCAP_PROP_RGB_STATUS,
                                              VEXCAP_PROP_VIDEO_CONTROL_MODE, VEXCAP_PROP_LLC};
  for (int step = 0; step < 6 && input.remaining_bytes() > 0; ++step) {
    const std::uint32_t selector = input.ConsumeBool() ? input.ConsumeIntegralInRange<std::uint32_t>(0, 2)
                                                       : input.ConsumeIntegral<std::uint32_t>();
    int code = 0;
    switch (input.ConsumeIntegralInRange<int>(0, 4)) {
      case 0:
        code = vexcap_start_streaming_ex(device, &take_frame,
                                         input.ConsumeBool() ? nullptr : &delivered, selector);
        require(device->stream_selector == selector);
        break;
      case 1:
        code = vexcap_stop_streaming_ex(device, selector);
        break;
      case 2: {
        vexcap_property property{input.PickValueInArray(kProperties), input.ConsumeIntegral<std::uint32_t>()};
        code = input.ConsumeBool() ? vexcap_set_dev_property(device, &property)
                                   : vexcap_get_dev_property(device, &property);
        break;
      }
      case 3:
        code = vexcap_start_streaming(device, &take_frame, nullptr);
        break;
      default:
        vc::advance_time(std::chrono::milliseconds(input.ConsumeIntegralInRange<int>(0, 200)));
        break;
    }
    require(documented(code));
  }

  require(vexcap_device_close(device) == VEXCAP_OK);
  const long after_close = delivered.load();
  vc::advance_time(std::chrono::milliseconds(100));
  require(delivered.load() == after_close);
  return 0;
}
