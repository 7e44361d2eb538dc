// The camera's kernel-streaming side: device enumeration per category, the topology, and the
// driver's answers to KSPROPERTY / KSP_NODE requests built byte by byte here.
#include <gtest/gtest.h>

#include "platform/virtual/known_ids.h"
#include "platform/virtual/le_bytes.h"
#include "virtual_camera/virtual_test_support.h"

namespace vexcap::virtual_camera {
namespace {

using platform::Guid;

constexpr std::uint32_t kGetTopology = 0x10000001;
constexpr std::uint32_t kSetTopology = 0x10000002;

// KSP_NODE written out field by field, independently of the camera's own helpers.
std::vector<std::uint8_t> ksp_node(const Guid& set, std::uint32_t id, std::uint32_t flags, std::uint32_t node,
                                   std::size_t size = 32) {
  std::vector<std::uint8_t> b(size, 0);
  auto put32 = [&](std::size_t at, std::uint32_t v) {
    for (int i = 0; i < 4; ++i) b[at + i] = std::uint8_t(v >> (8 * i));
  };
  put32(0, set.data1);
  b[4] = std::uint8_t(set.data2), b[5] = std::uint8_t(set.data2 >> 8);
  b[6] = std::uint8_t(set.data3), b[7] = std::uint8_t(set.data3 >> 8);
  for (int i = 0; i < 8; ++i) b[8 + i] = set.data4[i];
  put32(16, id);
  put32(20, flags);
  if (size >= 32) put32(24, node);
  return b;
}

struct Device {
  explicit Device(Scenario scenario = default_scenario(), const Guid& category = ids::kCategorySensorCamera) {
    platform.world().use_scenario(std::move(scenario));
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
  hresult send(const std::vector<std::uint8_t>& request, std::vector<std::uint8_t>& data, std::uint32_t* returned) {
    return control->property(request.data(), std::uint32_t(request.size()), data.data(), std::uint32_t(data.size()),
                             returned);
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
  Device none(disabled);
  EXPECT_EQ(none.source, nullptr);
}

TEST(VirtualKernelStreaming, UnknownSymbolicLinkOpensNothing) {
  VirtualPlatform platform;
  std::shared_ptr<platform::Attributes> selection;
  platform.create_attributes(2, selection);
  selection->set_guid(ids::kSourceType, ids::kSourceTypeVidcap);
  selection->set_string(ids::kVidcapSymbolicLink, L"\\\\?\\USB#nothing");
  std::shared_ptr<platform::DeviceSource> source;
  EXPECT_TRUE(failed(platform.create_device_source(*selection, source)));
  EXPECT_EQ(source, nullptr);
}

TEST(VirtualKernelStreaming, TopologyListsTheDefaultNodes) {
  Device d;
  std::shared_ptr<platform::KsTopology> topology;
  ASSERT_EQ(d.source->query_topology(topology), HR_OK);
  std::uint32_t count = 0;
  ASSERT_EQ(topology->node_count(&count), HR_OK);
  ASSERT_EQ(count, 4u);
  Guid type;
  ASSERT_EQ(topology->node_type(1, &type), HR_OK);
  EXPECT_EQ(type, ids::kNodeVideoProcessing);
  ASSERT_EQ(topology->node_type(3, &type), HR_OK);
  EXPECT_EQ(type, ids::kNodeDevSpecific);
  EXPECT_TRUE(failed(topology->node_type(4, &type)));
}

TEST(VirtualKernelStreaming, UnitInfoOnlyOnTheUnitsOwnNode) {
  Device d;
  std::vector<std::uint8_t> data(512, 0);
  std::uint32_t returned = 0;
  // Node 2 is another vendor's unit: unit 1's property set is unknown there.
  EXPECT_EQ(d.send(ksp_node(ids::kUnit1, 0, kGetTopology, 2), data, &returned), HR_SET_NOT_FOUND);
  ASSERT_EQ(d.send(ksp_node(ids::kUnit1, 0, kGetTopology, 3), data, &returned), HR_OK);
  ASSERT_EQ(returned, 24u);
  // The signature: the first 8 bytes of {26B8105A-0713-4870-...} as stored, after a 4-byte header.
  std::vector<std::uint8_t> signature = {0x5A, 0x10, 0xB8, 0x26, 0x13, 0x07, 0x70, 0x48};
  EXPECT_EQ(std::vector<std::uint8_t>(data.begin() + 4, data.begin() + 12), signature);
}

TEST(VirtualKernelStreaming, DescriptorsCarryTheSignatureWhereTheScenarioPutsIt) {
  auto with = unit_descriptor(ids::kUnit2, 11, 30);
  EXPECT_EQ(with.size(), 30u);
  std::vector<std::uint8_t> signature = {0x82, 0x06, 0x61, 0x63, 0x70, 0x50, 0xAB, 0x49};
  EXPECT_EQ(std::vector<std::uint8_t>(with.begin() + 11, with.begin() + 19), signature);
  auto without = unit_descriptor(ids::kUnit2, std::nullopt, 30);
  EXPECT_EQ(std::search(without.begin(), without.end(), signature.begin(), signature.end()), without.end());
}

TEST(VirtualKernelStreaming, LedPowerWriteIsReadBack) {
  Device d;
  std::vector<std::uint8_t> write = {2, 77};
  std::uint32_t returned = 99;
  ASSERT_EQ(d.send(ksp_node(ids::kUnit1, 14, kSetTopology, 3), write, &returned), HR_OK);
  EXPECT_EQ(returned, 0u);
  std::vector<std::uint8_t> read(512, 0);
  ASSERT_EQ(d.send(ksp_node(ids::kUnit1, 14, kGetTopology, 3), read, &returned), HR_OK);
  EXPECT_EQ(returned, 2u);
  EXPECT_EQ(read[0], 2);
  EXPECT_EQ(read[1], 77);
  auto state = d.platform.world().group_model(testing::default_group_id());
  EXPECT_EQ(state->ks.led_power, 77);
}

TEST(VirtualKernelStreaming, RgbStatusAndControl18) {
  Device d;
  d.platform.world().edit_group(testing::default_group_id(), [](GroupModel& g) { g.ks.rgb_status = 5; });
  std::vector<std::uint8_t> data(512, 0);
  std::uint32_t returned = 0;
  ASSERT_EQ(d.send(ksp_node(ids::kUnit1, 15, kGetTopology, 3), data, &returned), HR_OK);
  EXPECT_EQ(data[0], 5);
  std::vector<std::uint8_t> one = {2};
  ASSERT_EQ(d.send(ksp_node(ids::kUnit1, 18, kSetTopology, 3), one, &returned), HR_OK);
  EXPECT_EQ(d.platform.world().group_model(testing::default_group_id())->ks.control18, 2);
  // Unit 1 has no control 20; that one belongs to unit 2.
  EXPECT_EQ(d.send(ksp_node(ids::kUnit1, 20, kGetTopology, 3), data, &returned), HR_NOT_FOUND);
}

TEST(VirtualKernelStreaming, UnitTwoAnswersItsRgbStatusButNotTheLed) {
  Scenario scenario = default_scenario();
  scenario.groups[0].ks.nodes = {{ids::kNodeDevSpecific, ids::kUnit2, unit_descriptor(ids::kUnit2, 5)},
                                 {ids::kNodeVideoProcessing, std::nullopt, {}}};
  scenario.groups[0].ks.rgb_status = 1;
  Device d(scenario);
  std::vector<std::uint8_t> data(512, 0);
  std::uint32_t returned = 0;
  ASSERT_EQ(d.send(ksp_node(ids::kUnit2, 20, kGetTopology, 0), data, &returned), HR_OK);
  EXPECT_EQ(data[0], 1);
  // The LED request goes to unit 1's set at node 0, which is unit 2.
  EXPECT_EQ(d.send(ksp_node(ids::kUnit1, 14, kSetTopology, 0), data, &returned), HR_SET_NOT_FOUND);
}

TEST(VirtualKernelStreaming, GainIsReadAndWrittenAsVideoProcAmpNode) {
  Device d;
  std::vector<std::uint8_t> s = ksp_node(ids::kVideoProcAmp, 9, kGetTopology, 1, 48);
  std::uint32_t returned = 0;
  ASSERT_EQ(d.control->property(s.data(), 48, s.data(), 48, &returned), HR_OK);
  EXPECT_EQ(returned, 48u);
  EXPECT_EQ(le::u32(&s[32]), 64u);   // Value
  EXPECT_EQ(le::u32(&s[36]), 2u);    // Flags: manual
  EXPECT_EQ(le::u32(&s[40]), 3u);    // Capabilities

  s = ksp_node(ids::kVideoProcAmp, 9, kSetTopology, 1, 48);
  le::put_u32(&s[32], 200);
  le::put_u32(&s[36], 2);
  ASSERT_EQ(d.control->property(s.data(), 48, s.data(), 48, &returned), HR_OK);
  EXPECT_EQ(d.platform.world().group_model(testing::default_group_id())->ks.gain, 200);
  le::put_u32(&s[32], 256);  // beyond the range
  EXPECT_EQ(d.control->property(s.data(), 48, s.data(), 48, &returned), HR_INVALIDARG);
  // The processing unit lives on node 1 only.
  s = ksp_node(ids::kVideoProcAmp, 9, kGetTopology, 0, 48);
  EXPECT_TRUE(failed(d.control->property(s.data(), 48, s.data(), 48, &returned)));
}

TEST(VirtualKernelStreaming, VideoControlModeNeedsNoNode) {
  Scenario scenario = default_scenario();
  scenario.groups[0].ks.video_control_mode = 7;
  Device d(scenario);
  std::vector<std::uint8_t> s = ksp_node(ids::kVideoControl, 3, 0x1, 0, 32);  // StreamIndex 0, Mode 0
  std::uint32_t returned = 0;
  ASSERT_EQ(d.control->property(s.data(), 32, s.data(), 32, &returned), HR_OK);
  EXPECT_EQ(returned, 32u);
  EXPECT_EQ(le::u32(&s[28]), 7u);
}

TEST(VirtualKernelStreaming, DriverErrorsOnDemandAndEveryRequestIsRecorded) {
  Scenario scenario = default_scenario();
  scenario.groups[0].ks.faults = {{ids::kUnit1, 15, HR_NOT_FOUND}};
  Device d(scenario);
  std::vector<std::uint8_t> data(512, 0xCC);
  std::uint32_t returned = 1234;
  auto request = ksp_node(ids::kUnit1, 15, kGetTopology, 3);
  EXPECT_EQ(d.send(request, data, &returned), HR_NOT_FOUND);
  EXPECT_EQ(returned, 0u);
  EXPECT_EQ(data[0], 0xCC);

  auto records = d.platform.world().copy_records().ks_requests;
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0].set, ids::kUnit1);
  EXPECT_EQ(records[0].id, 15u);
  EXPECT_EQ(records[0].flags, kGetTopology);
  EXPECT_EQ(records[0].node_id, 3u);
  EXPECT_EQ(records[0].request, request);
  EXPECT_EQ(records[0].data_size, 512u);
  EXPECT_EQ(records[0].result, HR_NOT_FOUND);
}

TEST(VirtualKernelStreaming, ShutDownSourceAnswersNoMore) {
  Device d;
  ASSERT_EQ(d.source->shutdown(), HR_OK);
  std::vector<std::uint8_t> data(512, 0);
  EXPECT_EQ(d.send(ksp_node(ids::kUnit1, 15, kGetTopology, 3), data, nullptr), ids::kShutdown);
  std::shared_ptr<platform::KsControl> again;
  EXPECT_TRUE(failed(d.source->query_ks_control(again)));
}

TEST(VirtualKernelStreaming, RequestsShorterThanAKsPropertyAreRefused) {
  Device d;
  std::vector<std::uint8_t> data(512, 0);
  auto request = ksp_node(ids::kUnit1, 15, kGetTopology, 3);
  EXPECT_EQ(d.control->property(request.data(), 23, data.data(), 512, nullptr), HR_INVALIDARG);
  EXPECT_EQ(d.control->property(request.data(), 24, data.data(), 512, nullptr), HR_INVALIDARG);  // no node
}

}  // namespace
}  // namespace vexcap::virtual_camera
