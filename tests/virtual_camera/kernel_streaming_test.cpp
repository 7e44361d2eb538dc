// The camera's kernel-streaming side as the library's tests rely on it: the device per
// category, and the driver's answers to KSPROPERTY / KSP_NODE requests built byte by byte here,
// one row per request.
#include <gtest/gtest.h>

#include <functional>

#include "platform/virtual/known_ids.h"
#include "virtual_camera/virtual_test_support.h"

namespace vexcap::virtual_camera {
namespace {

using platform::Guid;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kGetTopology = 0x10000001;
constexpr std::uint32_t kSetTopology = 0x10000002;

void put32(Bytes& b, std::size_t at, std::uint32_t v) {
  for (int i = 0; i < 4; ++i) b[at + i] = std::uint8_t(v >> (8 * i));
}
std::uint32_t get32(const Bytes& b, std::size_t at) {
  return std::uint32_t(b[at]) | std::uint32_t(b[at + 1]) << 8 | std::uint32_t(b[at + 2]) << 16 |
         std::uint32_t(b[at + 3]) << 24;
}

// KSP_NODE (or a plain KSPROPERTY padded to `size`) written out field by field, independently
// of the camera's own helpers.
Bytes ksp_node(const Guid& set, std::uint32_t id, std::uint32_t flags, std::uint32_t node, std::size_t size = 32) {
  Bytes b(size, 0);
  put32(b, 0, set.data1);
  b[4] = std::uint8_t(set.data2), b[5] = std::uint8_t(set.data2 >> 8);
  b[6] = std::uint8_t(set.data3), b[7] = std::uint8_t(set.data3 >> 8);
  for (int i = 0; i < 8; ++i) b[8 + i] = set.data4[i];
  put32(b, 16, id);
  put32(b, 20, flags);
  put32(b, 24, node);
  return b;
}

struct Device {
  explicit Device(Scenario scenario = default_scenario(), const Guid& category = ids::kCategorySensorCamera) {
    platform.world().use_scenario(std::move(scenario));
    platform.world().set_recording(true);
    std::shared_ptr<platform::Attributes> attributes;
    EXPECT_EQ(platform.create_attributes(2, attributes), HR_OK);
    attributes->set_guid(ids::kSourceType, ids::kSourceTypeVidcap);
    attributes->set_guid(ids::kVidcapCategory, category);
    std::vector<std::shared_ptr<platform::DeviceActivate>> activates;
    EXPECT_EQ(platform.enum_device_sources(*attributes, activates), HR_OK);
    if (activates.empty()) return;
    activates[0]->symbolic_link(link);
    std::shared_ptr<platform::Attributes> selection;
    platform.create_attributes(2, selection);
    selection->set_guid(ids::kSourceType, ids::kSourceTypeVidcap);
    selection->set_string(ids::kVidcapSymbolicLink, link);
    EXPECT_EQ(platform.create_device_source(*selection, source), HR_OK);
    if (source) source->query_ks_control(control);
  }
  VirtualPlatform platform;
  std::wstring link;
  std::shared_ptr<platform::DeviceSource> source;
  std::shared_ptr<platform::KsControl> control;
};

TEST(VirtualKernelStreaming, EnumerationFollowsTheCategory) {
  Device ir(default_scenario(), ids::kCategorySensorCamera);
  Device color(default_scenario(), ids::kCategoryVideoCamera);
  EXPECT_NE(ir.link.find(L"MI_02"), std::wstring::npos);
  EXPECT_NE(color.link.find(L"MI_00"), std::wstring::npos);
  ASSERT_NE(ir.control, nullptr);

  Scenario disabled = default_scenario();
  disabled.groups[0].enabled = false;
  EXPECT_EQ(Device(disabled).source, nullptr);
}

struct KsCase {
  const char* name;
  std::function<void(KsDeviceModel&)> driver;  // the default camera's driver state
  Bytes request;
  std::uint32_t request_size;  // bytes of the request handed in
  Bytes data;                  // the data buffer handed in
  hresult result;
  std::uint32_t returned;
  std::function<void(const Bytes& data, const KsDeviceModel& after)> check;
};

void PrintTo(const KsCase& c, std::ostream* out) { *out << c.name; }
void as_is(KsDeviceModel&) {}
void anything(const Bytes&, const KsDeviceModel&) {}
Bytes gain_set(std::uint32_t value) {
  Bytes b = ksp_node(ids::kVideoProcAmp, 9, kSetTopology, 1, 48);
  put32(b, 32, value);
  put32(b, 36, 2);
  return b;
}

// clang-format off
const KsCase kCases[] = {
    {"UnitInfoOnItsOwnNodeCarriesTheSignatureAfterAHeader", as_is, ksp_node(ids::kPrimaryUnit, 0, kGetTopology, 3), 32,
     Bytes(512), HR_OK, 24,
     [](const Bytes& data, const KsDeviceModel&) {
       // The first 8 bytes of {26B8105A-0713-4870-...} as stored.
       EXPECT_EQ(Bytes(data.begin() + 4, data.begin() + 12), (Bytes{0x5A, 0x10, 0xB8, 0x26, 0x13, 0x07, 0x70, 0x48}));
     }},
    {"AnotherVendorsNodeDoesNotKnowUnit1", as_is, ksp_node(ids::kPrimaryUnit, 0, kGetTopology, 2), 32, Bytes(512),
     HR_SET_NOT_FOUND, 0, anything},
    {"LedPowerWrite", as_is, ksp_node(ids::kPrimaryUnit, 14, kSetTopology, 3), 32, Bytes{2, 77}, HR_OK, 0,
     [](const Bytes&, const KsDeviceModel& after) {
       EXPECT_EQ(after.led_flag, 2);
       EXPECT_EQ(after.led_power, 77);
     }},
    {"LedPowerRead",
     [](KsDeviceModel& ks) {
       ks.led_flag = 2;
       ks.led_power = 77;
     },
     ksp_node(ids::kPrimaryUnit, 14, kGetTopology, 3), 32, Bytes(512), HR_OK, 2,
     [](const Bytes& data, const KsDeviceModel&) { EXPECT_EQ(Bytes(data.begin(), data.begin() + 2), (Bytes{2, 77})); }},
    {"RgbStatusOfUnit1", [](KsDeviceModel& ks) { ks.rgb_status = 5; }, ksp_node(ids::kPrimaryUnit, 15, kGetTopology, 3), 32,
     Bytes(512), HR_OK, 1, [](const Bytes& data, const KsDeviceModel&) { EXPECT_EQ(data[0], 5); }},
    {"Control18Write", as_is, ksp_node(ids::kPrimaryUnit, 18, kSetTopology, 3), 32, Bytes{2}, HR_OK, 0,
     [](const Bytes&, const KsDeviceModel& after) { EXPECT_EQ(after.control18, 2); }},
    {"Unit1HasNoControl20", as_is, ksp_node(ids::kPrimaryUnit, 20, kGetTopology, 3), 32, Bytes(512), HR_NOT_FOUND, 0,
     anything},
    {"Unit2AnswersItsRgbStatus",
     [](KsDeviceModel& ks) {
       ks.nodes = {{ids::kNodeDevSpecific, ids::kAlternativeUnit, unit_descriptor(ids::kAlternativeUnit, 5)},
                   {ids::kNodeVideoProcessing, std::nullopt, {}}};
       ks.rgb_status = 1;
     },
     ksp_node(ids::kAlternativeUnit, 20, kGetTopology, 0), 32, Bytes(512), HR_OK, 1,
     [](const Bytes& data, const KsDeviceModel&) { EXPECT_EQ(data[0], 1); }},
    {"GainReadAtTheProcessingNode", as_is, ksp_node(ids::kVideoProcAmp, 9, kGetTopology, 1, 48), 48, Bytes(48), HR_OK,
     48,
     [](const Bytes& data, const KsDeviceModel&) {
       EXPECT_EQ(get32(data, 32), 64u);  // Value
       EXPECT_EQ(get32(data, 36), 2u);   // Flags: manual
       EXPECT_EQ(get32(data, 40), 3u);   // Capabilities
     }},
    {"GainWrite", as_is, gain_set(200), 48, gain_set(200), HR_OK, 0,
     [](const Bytes&, const KsDeviceModel& after) { EXPECT_EQ(after.gain, 200); }},
    {"GainBeyondTheRangeIsRefused", as_is, gain_set(256), 48, gain_set(256), HR_INVALIDARG, 0,
     [](const Bytes&, const KsDeviceModel& after) { EXPECT_EQ(after.gain, 64); }},
    {"VideoControlModeNeedsNoNode", [](KsDeviceModel& ks) { ks.video_control_mode = 7; },
     ksp_node(ids::kVideoControl, 3, 0x1, 0, 32), 32, Bytes(32), HR_OK, 32,
     [](const Bytes& data, const KsDeviceModel&) { EXPECT_EQ(get32(data, 28), 7u); }},
    {"DriverErrorOnDemandLeavesTheData", [](KsDeviceModel& ks) { ks.faults = {{ids::kPrimaryUnit, 15, HR_NOT_FOUND}}; },
     ksp_node(ids::kPrimaryUnit, 15, kGetTopology, 3), 32, Bytes(512, 0xCC), HR_NOT_FOUND, 0,
     [](const Bytes& data, const KsDeviceModel&) { EXPECT_EQ(data[0], 0xCC); }},
    {"NodeRequestShorterThanKspNodeIsRefused", as_is, ksp_node(ids::kPrimaryUnit, 15, kGetTopology, 3), 24, Bytes(512),
     HR_INVALIDARG, 0, anything},
};
// clang-format on

class VirtualKsProperty : public ::testing::TestWithParam<KsCase> {};

TEST_P(VirtualKsProperty, AnswersTheRequest) {
  const KsCase& c = GetParam();
  Scenario scenario = default_scenario();
  c.driver(scenario.groups[0].ks);
  Device d(scenario);
  ASSERT_NE(d.control, nullptr);
  Bytes request = c.request;
  Bytes data = c.data;
  std::uint32_t returned = 1234;
  EXPECT_EQ(d.control->property(request.data(), c.request_size, data.data(), std::uint32_t(data.size()), &returned),
            c.result);
  EXPECT_EQ(returned, c.returned);
  c.check(data, d.platform.world().group_model(testing::default_group_id())->ks);

  // Every request is recorded as it came.
  const auto records = d.platform.world().copy_records().ks_requests;
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0].request, Bytes(c.request.begin(), c.request.begin() + c.request_size));
  EXPECT_EQ(records[0].result, c.result);
}

INSTANTIATE_TEST_SUITE_P(Rows, VirtualKsProperty, ::testing::ValuesIn(kCases),
                         [](const ::testing::TestParamInfo<KsCase>& info) { return info.param.name; });

TEST(VirtualKernelStreaming, ShutDownSourceAnswersNoMore) {
  Device d;
  ASSERT_EQ(d.source->shutdown(), HR_OK);
  Bytes request = ksp_node(ids::kPrimaryUnit, 15, kGetTopology, 3);
  Bytes data(512, 0);
  EXPECT_EQ(d.control->property(request.data(), 32, data.data(), 512, nullptr), ids::kShutdown);
  std::shared_ptr<platform::KsControl> again;
  EXPECT_TRUE(failed(d.source->query_ks_control(again)));
}

}  // namespace
}  // namespace vexcap::virtual_camera
