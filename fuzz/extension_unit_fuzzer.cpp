// The extension unit against a driver that answers anything: topologies of any node types,
// descriptor and control replies of any length (and byte counts that overstate it), any result.
// Nothing may read or write outside the request's buffers, and a read that fails leaves its
// output as it was.
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "controls/extension_unit.h"
#include "fakes/fake_device_platform.h"
#include "controls/ks_bytes.h"
#include "controls/ks_ids.h"
#include "fuzz_log.h"

using namespace vexcap;

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

struct Reply {
  hresult result = 0;
  std::vector<std::uint8_t> data;
  std::uint32_t returned = 0;
};

// Answers the requests in turn from the replies the input described, then starts over.
class ScriptedKsControl final : public platform::KsControl {
 public:
  std::vector<Reply> replies;
  std::size_t next = 0;

  hresult property(const std::uint8_t* request, std::uint32_t request_size, std::uint8_t* data,
                   std::uint32_t data_size, std::uint32_t* bytes_returned) override {
    require(request_size >= controls::ks::kPropertySize);
    volatile std::uint8_t touch = request[request_size - 1];  // the whole request is readable
    (void)touch;
    if (data_size > 0) data[data_size - 1] = data[0];  // and the whole data buffer writable
    if (replies.empty()) {
      *bytes_returned = 0;
      return hr(0x80070490);
    }
    const Reply& reply = replies[next++ % replies.size()];
    const std::size_t copied = std::min<std::size_t>(reply.data.size(), data_size);
    if (copied > 0) std::memcpy(data, reply.data.data(), copied);
    *bytes_returned = reply.returned;
    return reply.result;
  }
};

// One camera whose device source has the scripted control and the input's topology.
class ScriptedDriver final : public platform::Platform, public platform::DeviceSource {
 public:
  std::shared_ptr<ScriptedKsControl> control = std::make_shared<ScriptedKsControl>();
  std::shared_ptr<testing::FakeTopology> topology = std::make_shared<testing::FakeTopology>();

  hresult create_attributes(std::uint32_t, std::shared_ptr<platform::Attributes>& out) override {
    out = std::make_shared<testing::FakeAttributes>();
    return 0;
  }
  hresult enum_device_sources(platform::Attributes&,
                              std::vector<std::shared_ptr<platform::DeviceActivate>>& out) override {
    out = {std::make_shared<testing::FakeActivate>()};
    return 0;
  }
  hresult create_device_source(platform::Attributes&,
                               std::shared_ptr<platform::DeviceSource>& out) override {
    out = std::shared_ptr<platform::DeviceSource>(std::shared_ptr<void>(), this);  // not owned
    return 0;
  }
  std::optional<std::wstring> system_message(std::uint32_t) override { return L"failed"; }
  hresult shutdown() override { return 0; }
  hresult query_ks_control(std::shared_ptr<platform::KsControl>& out) override {
    out = control;
    return 0;
  }
  hresult query_topology(std::shared_ptr<platform::KsTopology>& out) override {
    out = topology;
    return 0;
  }

  platform::Runtime& runtime() override { std::abort(); }
  std::vector<std::shared_ptr<platform::SourceGroup>> find_all_source_groups() override { std::abort(); }
  std::shared_ptr<platform::Capture> create_capture() override { std::abort(); }
  std::unique_ptr<platform::DeviceWatcher> create_source_group_watcher() override { std::abort(); }
  std::shared_ptr<platform::Buffer> create_buffer(std::uint32_t) override { std::abort(); }
  std::shared_ptr<platform::Bitmap> create_bitmap_copy_from_buffer(platform::Buffer&,
                                                                   platform::PixelFormat,
                                                                   std::int32_t,
                                                                   std::int32_t) override {
    std::abort();
  }
};

platform::Guid node_type(FuzzedDataProvider& input) {
  switch (input.ConsumeIntegralInRange<int>(0, 3)) {
    case 0:
      return controls::ids::kNodeVideoProcessing;
    case 1:
    case 2:
      return controls::ids::kNodeDevSpecific;
    default:
      return platform::Guid{input.ConsumeIntegral<std::uint32_t>(), 0, 0, {}};
  }
}

Reply reply(FuzzedDataProvider& input) {
  static const hresult kResults[] = {0, 0, 0, 1, hr(0x80070490), hr(0x80070492), hr(0x8007001F),
                                     hr(0x800700EA)};
  Reply r;
  r.result = input.PickValueInArray(kResults);
  const std::size_t length = input.ConsumeIntegralInRange<std::size_t>(0, 600);
  r.data = input.ConsumeBytes<std::uint8_t>(length);
  if (input.ConsumeBool() && r.data.size() >= 8) {  // a descriptor carrying a unit's signature
    const auto guid =
        controls::ks::guid_bytes(input.ConsumeBool() ? controls::ids::kPrimaryExtensionUnit
                                                     : controls::ids::kAlternativeExtensionUnit);
    const std::size_t at = input.ConsumeIntegralInRange<std::size_t>(0, r.data.size() - 8);
    std::copy_n(guid.begin(), 8, r.data.begin() + at);
  }
  r.returned = input.ConsumeBool() ? static_cast<std::uint32_t>(r.data.size())
                                   : input.ConsumeIntegral<std::uint32_t>();
  return r;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzzing::log_into_nothing();
  FuzzedDataProvider input(data, size);
  ScriptedDriver driver;
  const std::size_t nodes = input.ConsumeIntegralInRange<std::size_t>(0, 12);
  for (std::size_t i = 0; i < nodes; ++i) driver.topology->nodes.push_back(node_type(input));
  const std::size_t replies = input.ConsumeIntegralInRange<std::size_t>(0, 16);
  for (std::size_t i = 0; i < replies; ++i) driver.control->replies.push_back(reply(input));

  controls::ExtensionUnit unit;
  unit.load(driver, input.ConsumeIntegralInRange<std::uint32_t>(0, 3));
  require(unit.processing_node() == controls::ExtensionUnit::kNoNode ||
          unit.processing_node() < nodes);
  require(!unit.primary_unit().found || unit.primary_unit().node_id < nodes);
  require(!unit.alternative_unit().found || unit.alternative_unit().node_id < nodes);

  // Every read and write, in an order the input picks. Failed reads keep the value.
  constexpr std::uint32_t kUntouched = 0xDEADBEEF;
  for (int step = 0; step < 8 && input.remaining_bytes() > 0; ++step) {
    std::uint32_t value = kUntouched;
    hresult result = 0;
    switch (input.ConsumeIntegralInRange<int>(0, 6)) {
      case 0:
        result = unit.read_gain(value);
        break;
      case 1:
        result = unit.read_video_control_mode(value);
        break;
      case 2:
        result = unit.read_led_power(value);
        if (succeeded(result)) require(value <= 0xFF);
        break;
      case 3:
        result = unit.read_rgb_status(value);
        if (succeeded(result)) require(value <= 0xFF);
        // A camera with no status to give answers 0 with the failure.
        if (failed(result) && value == 0) continue;
        break;
      case 4:
        unit.write_gain(input.ConsumeIntegral<std::uint32_t>());
        continue;
      case 5:
        unit.write_led_power(input.ConsumeIntegral<std::uint32_t>());
        continue;
      default:
        unit.write_primary_control18(input.ConsumeIntegral<std::uint8_t>());
        continue;
    }
    if (failed(result)) require(value == kUntouched);
  }
  return 0;
}
