// The extension unit a capture client finds on virtual cameras' kernel-streaming topologies.
#include <gtest/gtest.h>

#include "client/vexcap_client.h"
#include "controls/ks_ids.h"
#include "platform/virtual/virtual_camera.h"
#include "support/log_capture.h"

namespace vexcap::client {
namespace {

namespace vc = virtual_camera;
namespace ids = controls::ids;

std::wstring group_id() { return *vc::default_scenario().groups.at(0).id; }

// The default camera with its last node (unit 1) answering `descriptor` for `unit`.
void use_unit_node(const platform::Guid& unit, std::vector<std::uint8_t> descriptor) {
  vc::Scenario scenario = vc::default_scenario();
  scenario.groups[0].ks.nodes.back() = {ids::kNodeDevSpecific, unit, std::move(descriptor)};
  vc::use_scenario(scenario);
}

class ExtensionUnitLoading : public ::testing::Test {
 protected:
  void SetUp() override { vc::reset(); }
  void TearDown() override { vc::reset(); }
};

TEST_F(ExtensionUnitLoading, TheDefaultCameraCarriesUnit1AfterItsProcessingNode) {
  auto client = VexCap::create(1);
  ASSERT_EQ(client->initialize(group_id(), 1, 0, 0), HR_OK);
  controls::ExtensionUnit* xu = client->extension_unit();
  ASSERT_NE(xu, nullptr);
  EXPECT_EQ(xu->processing_node(), 1u);
  EXPECT_TRUE(xu->unit1().found);
  EXPECT_EQ(xu->unit1().node_id, 3u);
  EXPECT_FALSE(xu->unit2().found);
}

TEST_F(ExtensionUnitLoading, ASignatureAtAnOddOffsetIsFound) {
  use_unit_node(ids::kExtensionUnit1, vc::unit_descriptor(ids::kExtensionUnit1, 13, 40));
  auto client = VexCap::create(1);
  ASSERT_EQ(client->initialize(group_id(), 1, 0, 0), HR_OK);
  EXPECT_TRUE(client->extension_unit()->unit1().found);
}

TEST_F(ExtensionUnitLoading, ADescriptorShorterThanASignatureNeverMatches) {
  std::vector<std::uint8_t> seven = vc::unit_descriptor(ids::kExtensionUnit1, 0, 8);
  seven.pop_back();
  use_unit_node(ids::kExtensionUnit1, seven);
  testing::LogCapture log;
  auto client = VexCap::create(1);
  log.resume();
  ASSERT_EQ(client->initialize(group_id(), 1, 0, 0), HR_OK);  // goes on without the unit
  EXPECT_FALSE(client->extension_unit()->unit1().found);
  EXPECT_FALSE(client->extension_unit()->unit2().found);
  EXPECT_TRUE(log.contains("I: XU control not available or couldn't be loaded: c00d36d5"));
}

TEST_F(ExtensionUnitLoading, ACameraCarryingOnlyUnit2) {
  use_unit_node(ids::kExtensionUnit2, vc::unit_descriptor(ids::kExtensionUnit2, 2, 24));
  vc::edit_ks(group_id(), [](vc::KsDeviceModel& ks) { ks.rgb_status = 1; });
  auto client = VexCap::create(1);
  ASSERT_EQ(client->initialize(group_id(), 1, 0, 0), HR_OK);
  controls::ExtensionUnit* xu = client->extension_unit();
  EXPECT_FALSE(xu->unit1().found);
  EXPECT_TRUE(xu->unit2().found);
  EXPECT_EQ(xu->write_gain(99), HR_OK);  // the gain needs either unit
  vc::clear_records();
  std::uint32_t status = 7;
  EXPECT_EQ(xu->read_rgb_status(status), HR_OK);
  EXPECT_EQ(status, 1u);
  ASSERT_EQ(vc::records().ks_requests.size(), 1u);
  EXPECT_EQ(vc::records().ks_requests[0].set, ids::kExtensionUnit2);
  EXPECT_EQ(vc::records().ks_requests[0].id, 20u);
  vc::clear_records();
  EXPECT_TRUE(failed(xu->write_led_power(10)));  // still addressed to unit 1 at node 0
  const auto requests = vc::records().ks_requests;
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(requests[0].set, ids::kExtensionUnit1);
  EXPECT_EQ(requests[0].id, 14u);
  EXPECT_EQ(requests[0].node_id, 0u);
}

}  // namespace
}  // namespace vexcap::client
