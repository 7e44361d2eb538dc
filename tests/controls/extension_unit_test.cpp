#include "controls/extension_unit.h"

#include <gtest/gtest.h>

#include "controls/describe_error.h"
#include "controls/fakes/fake_device_platform.h"
#include "support/log_capture.h"

namespace vexcap::controls {
namespace {

using Bytes = std::vector<std::uint8_t>;
using platform::Guid;
using testing::FakeDevicePlatform;
using testing::KsReply;
using testing::LogCapture;

const Guid kDevSpecific{0x941C7AC0, 0xC559, 0x11D0, {0x8A, 0x2B, 0x00, 0xA0, 0xC9, 0x25, 0x5A, 0xC1}};
const Guid kVideoProcessing{0xDFF229E5, 0xF70F, 0x11D0, {0xB9, 0x17, 0x00, 0xA0, 0xC9, 0x22, 0x31, 0x96}};
const Guid kOtherNode{0x11111111, 0x2222, 0x3333, {4, 4, 4, 4, 4, 4, 4, 4}};
const Guid kUnit1{0x26B8105A, 0x0713, 0x4870, {0x97, 0x9D, 0xDA, 0x79, 0x44, 0x4B, 0xB6, 0x8E}};
const Guid kUnit2{0x63610682, 0x5070, 0x49AB, {0xB8, 0xCC, 0xB3, 0x85, 0x5E, 0x8D, 0x22, 0x1D}};
const Guid kProcAmp{0xC6E13360, 0x30AC, 0x11D0, {0xA1, 0x8C, 0x00, 0xA0, 0xC9, 0x11, 0x89, 0x56}};
const Guid kVideoControl{0x6A2E0670, 0x28E4, 0x11D0, {0xA1, 0x8C, 0x00, 0xA0, 0xC9, 0x11, 0x89, 0x56}};

// Stored forms, written out from the GUIDs above.
#define UNIT1_BYTES 0x5A, 0x10, 0xB8, 0x26, 0x13, 0x07, 0x70, 0x48, 0x97, 0x9D, 0xDA, 0x79, 0x44, 0x4B, 0xB6, 0x8E
#define UNIT2_BYTES 0x82, 0x06, 0x61, 0x63, 0x70, 0x50, 0xAB, 0x49, 0xB8, 0xCC, 0xB3, 0x85, 0x5E, 0x8D, 0x22, 0x1D
#define PROCAMP_BYTES 0x60, 0x33, 0xE1, 0xC6, 0xAC, 0x30, 0xD0, 0x11, 0xA1, 0x8C, 0x00, 0xA0, 0xC9, 0x11, 0x89, 0x56
#define VIDEOCONTROL_BYTES 0x70, 0x06, 0x2E, 0x6A, 0xE4, 0x28, 0xD0, 0x11, 0xA1, 0x8C, 0x00, 0xA0, 0xC9, 0x11, 0x89, 0x56

const Bytes kSignature1 = {0x5A, 0x10, 0xB8, 0x26, 0x13, 0x07, 0x70, 0x48};
const Bytes kSignature2 = {0x82, 0x06, 0x61, 0x63, 0x70, 0x50, 0xAB, 0x49};

constexpr std::uint32_t kGetTopology = 0x10000001;
constexpr std::uint32_t kSetTopology = 0x10000002;

// Descriptor bytes with the signature at `offset`.
Bytes descriptor(const Bytes& signature, std::size_t offset, std::size_t length = 40) {
  Bytes bytes(length, 0x33);
  std::copy(signature.begin(), signature.end(), bytes.begin() + static_cast<long>(offset));
  return bytes;
}

class ExtensionUnitTest : public ::testing::Test {
 protected:
  ExtensionUnitTest() {
    // Nodes: 0 other, 1 processing unit, 2 and 3 vendor-specific.
    platform.source->topology->nodes = {kOtherNode, kVideoProcessing, kDevSpecific, kDevSpecific};
  }
  testing::FakeKsControl& ks() { return *platform.source->control; }
  void unit_info(const Guid& set, std::uint32_t node, Bytes bytes,
                 std::optional<std::uint32_t> returned = std::nullopt) {
    ks().answer(set, 0, kGetTopology, node, KsReply{0, std::move(bytes), returned});
  }
  // A camera whose unit 1 sits on node 3.
  void load_with_unit1() {
    unit_info(kUnit1, 3, descriptor(kSignature1, 5));
    ASSERT_EQ(xu.load(platform, 0), HR_OK);
    ks().clear();
    log.clear();
  }

  FakeDevicePlatform platform;
  LogCapture log;
  ExtensionUnit xu;
};

TEST_F(ExtensionUnitTest, StartsWithNoNodesAndAnswersFailWithoutControl) {
  EXPECT_EQ(xu.processing_node(), 255u);
  EXPECT_FALSE(xu.unit1().found);
  EXPECT_FALSE(xu.unit2().found);
  EXPECT_EQ(xu.unit1().node_id, 0u);
  std::uint32_t out = 7;
  EXPECT_EQ(xu.read_gain(out), HR_FAIL);
  EXPECT_EQ(xu.write_gain(1), HR_FAIL);
  EXPECT_EQ(xu.read_video_control_mode(out), HR_FAIL);
  EXPECT_EQ(xu.write_led_power(1), HR_FAIL);
  EXPECT_EQ(xu.read_led_power(out), HR_FAIL);
  EXPECT_EQ(xu.read_rgb_status(out), HR_FAIL);
  EXPECT_EQ(xu.write_unit1_control18(1), HR_FAIL);
  EXPECT_EQ(out, 7u);
  EXPECT_TRUE(log.lines().empty());
}

TEST_F(ExtensionUnitTest, LoadOpensTheSensorCameraAndFindsUnit1AtAnOddOffset) {
  unit_info(kUnit1, 3, descriptor(kSignature1, 5));
  EXPECT_EQ(xu.load(platform, 1), HR_OK);

  const Guid source_type{0xC60AC5FE, 0x252A, 0x478F, {0xA0, 0xEF, 0xBC, 0x8F, 0xA5, 0xF7, 0xCA, 0xD3}};
  const Guid vidcap{0x8AC3587A, 0x4AE7, 0x42D8, {0x99, 0xE0, 0x0A, 0x60, 0x13, 0xEE, 0xF9, 0x0F}};
  const Guid category{0x77F0AE69, 0xC3BD, 0x4509, {0x94, 0x1D, 0x46, 0x7E, 0x4D, 0x24, 0x89, 0x9E}};
  const Guid sensor{0x24E552D7, 0x6523, 0x47F7, {0xA6, 0x47, 0xD3, 0x46, 0x5B, 0xF1, 0xF5, 0xCA}};
  const Guid link{0x58F0AAD8, 0x22BF, 0x4F8A, {0xBB, 0x3D, 0xD2, 0xC4, 0x97, 0x8C, 0x6E, 0x2F}};
  ASSERT_EQ(platform.stores.size(), 2u);
  const auto& enumeration = *platform.stores[0];
  ASSERT_EQ(enumeration.guids.size(), 2u);
  EXPECT_TRUE(enumeration.guids[0].first == source_type && enumeration.guids[0].second == vidcap);
  EXPECT_TRUE(enumeration.guids[1].first == category && enumeration.guids[1].second == sensor);
  const auto& selection = *platform.stores[1];
  ASSERT_EQ(selection.guids.size(), 1u);
  EXPECT_TRUE(selection.guids[0].first == source_type && selection.guids[0].second == vidcap);
  ASSERT_EQ(selection.strings.size(), 1u);
  EXPECT_TRUE(selection.strings[0].first == link);
  EXPECT_EQ(selection.strings[0].second, L"\\\\?\\USB#VID_1234&PID_5678#cam");
  EXPECT_TRUE(log.contains("I: Got symbolic link: '\\\\?\\USB#VID_1234&PID_5678#cam'"));

  EXPECT_EQ(xu.processing_node(), 1u);
  EXPECT_TRUE(xu.unit1().found);
  EXPECT_EQ(xu.unit1().node_id, 3u);
  EXPECT_FALSE(xu.unit2().found);

  // Unit 1's descriptor was asked of both vendor-specific nodes, and of no other.
  const auto requests = ks().requests();
  ASSERT_EQ(requests.size(), 2u);
  EXPECT_EQ(requests[0].node, 2u);
  const Bytes to_node3 = {UNIT1_BYTES, 0, 0, 0, 0, 0x01, 0, 0, 0x10, 3, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(requests[1].request, to_node3);
  EXPECT_EQ(requests[1].data, Bytes(512, 0));
}

TEST_F(ExtensionUnitTest, OtherReaderKindsOpenTheVideoCamera) {
  unit_info(kUnit1, 3, descriptor(kSignature1, 0));
  const Guid video{0xE5323777, 0xF976, 0x4F5B, {0x9B, 0x55, 0xB9, 0x46, 0x99, 0xC4, 0x6E, 0x44}};
  for (std::uint32_t kind : {0u, 2u, 7u}) {
    platform.stores.clear();
    EXPECT_EQ(xu.load(platform, kind), HR_OK);
    EXPECT_TRUE(platform.stores.at(0)->guids.at(1).second == video);
  }
}

TEST_F(ExtensionUnitTest, TheSignatureMustLieWithinTheBytesReturned) {
  // Seven bytes returned never match, even with the whole signature in the buffer.
  unit_info(kUnit1, 3, descriptor(kSignature1, 0), 7);
  EXPECT_EQ(xu.load(platform, 0), HR_MF_NOT_FOUND);
  EXPECT_FALSE(xu.unit1().found);

  // Signature at 10: 17 bytes returned are one short, 18 are enough.
  unit_info(kUnit1, 3, descriptor(kSignature1, 10), 17);
  EXPECT_EQ(xu.load(platform, 0), HR_MF_NOT_FOUND);
  unit_info(kUnit1, 3, descriptor(kSignature1, 10), 18);
  EXPECT_EQ(xu.load(platform, 0), HR_OK);
  EXPECT_EQ(xu.unit1().node_id, 3u);
}

TEST_F(ExtensionUnitTest, ACameraWithOnlyUnit2) {
  unit_info(kUnit2, 2, descriptor(kSignature2, 511 - 8 - 100, 420));
  unit_info(kUnit1, 2, Bytes(40, 0x33));  // answers, but not with its signature
  ASSERT_EQ(xu.load(platform, 0), HR_OK);
  EXPECT_TRUE(log.contains("I: Could not find the node_1: c00d36d5"));
  EXPECT_FALSE(xu.unit1().found);
  EXPECT_TRUE(xu.unit2().found);
  EXPECT_EQ(xu.unit2().node_id, 2u);
  ks().clear();

  // The gain write works.
  ks().answer(kProcAmp, 9, kGetTopology, 1, KsReply{0, Bytes(48, 0), 48});
  ks().answer(kProcAmp, 9, kSetTopology, 1, KsReply{0, {}, 0});
  EXPECT_EQ(xu.write_gain(64), HR_OK);

  // RGB status reads control 20 of unit 2 on its node.
  Bytes status(512, 0);
  status[0] = 1;
  ks().answer(kUnit2, 20, kGetTopology, 2, KsReply{0, status, 1});
  std::uint32_t out = 9;
  EXPECT_EQ(xu.read_rgb_status(out), HR_OK);
  EXPECT_EQ(out, 1u);
  const Bytes rgb_request = {UNIT2_BYTES, 20, 0, 0, 0, 0x01, 0, 0, 0x10, 2, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(ks().requests().back().request, rgb_request);

  // LED power and control 18 still go to unit 1 at node 0, and fail there.
  log.clear();
  EXPECT_EQ(xu.write_led_power(5), hr(0x80070490));
  EXPECT_EQ(xu.write_unit1_control18(2), hr(0x80070490));
  const auto requests = ks().requests();
  const Bytes led = {UNIT1_BYTES, 14, 0, 0, 0, 0x02, 0, 0, 0x10, 0, 0, 0, 0, 0, 0, 0, 0};
  const Bytes control18 = {UNIT1_BYTES, 18, 0, 0, 0, 0x02, 0, 0, 0x10, 0, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(requests[requests.size() - 2].request, led);
  EXPECT_EQ(requests[requests.size() - 2].data, (Bytes{2, 5}));
  EXPECT_EQ(requests.back().request, control18);
  EXPECT_EQ(requests.back().data, Bytes{2});
  EXPECT_EQ(log.count("E: KsPropertySET 0x80070490. bytes returned= 0 \n"), 2);
}

TEST_F(ExtensionUnitTest, ACameraWithNeitherUnit) {
  EXPECT_EQ(xu.load(platform, 0), HR_MF_NOT_FOUND);
  EXPECT_EQ(log.lines().back(), "I: Could not find the node_2: c00d36d5");
  EXPECT_TRUE(log.contains("I: Could not find the node_1: c00d36d5"));
  ks().clear();

  EXPECT_EQ(xu.write_gain(64), HR_NOINTERFACE);
  EXPECT_TRUE(ks().requests().empty());
  std::uint32_t out = 7;
  EXPECT_EQ(xu.read_rgb_status(out), HR_FAIL);
  EXPECT_EQ(out, 0u);
  EXPECT_EQ(log.lines().back(), "E: no valid nodes");
}

TEST_F(ExtensionUnitTest, ProcessingNodeSearch) {
  // No nodes at all: counts as found, the node stays unset; the unit search then fails.
  platform.source->topology->nodes.clear();
  EXPECT_EQ(xu.load(platform, 0), HR_MF_NOT_FOUND);
  EXPECT_EQ(xu.processing_node(), 255u);
  EXPECT_FALSE(log.contains("I: Could not find the node: 80004002"));

  // Nodes, but no processing unit.
  platform.source->topology->nodes = {kOtherNode, kDevSpecific};
  EXPECT_EQ(xu.load(platform, 0), HR_NOINTERFACE);
  EXPECT_EQ(log.lines().back(), "I: Could not find the node: 80004002");
}

TEST_F(ExtensionUnitTest, LoadFailuresBeforeTheSource) {
  platform.activates.clear();
  EXPECT_EQ(xu.load(platform, 0), HR_MF_NOT_FOUND);
  EXPECT_EQ(log.lines(), std::vector<std::string>{"E: No activates"});

  platform.activates = {nullptr};
  log.clear();
  EXPECT_EQ(xu.load(platform, 0), HR_FAIL);
  EXPECT_EQ(log.lines(), std::vector<std::string>{"E: Unexpected null activate"});

  platform.create_attributes_result = hr(0x8007000E);
  log.clear();
  EXPECT_EQ(xu.load(platform, 0), hr(0x8007000E));
  EXPECT_EQ(log.lines(), (std::vector<std::string>{"E: MFCreateAttributes failed: 8007000e\n",
                                                   "E: Failed creating enumeration attributes: 8007000e"}));
  EXPECT_FALSE(xu.has_control());
}

TEST_F(ExtensionUnitTest, LoadingAgainShutsThePreviousSourceDown) {
  load_with_unit1();
  EXPECT_EQ(platform.source->shutdowns, 0);
  EXPECT_EQ(xu.load(platform, 0), HR_OK);
  EXPECT_EQ(platform.source->shutdowns, 1);
}

TEST_F(ExtensionUnitTest, GainReadAndWrite) {
  load_with_unit1();
  // Value 0x40, Flags 1 (auto), Capabilities 3 at the processing node.
  Bytes reply(48, 0);
  reply[32] = 0x40;
  reply[36] = 0x01;
  reply[40] = 0x03;
  ks().answer(kProcAmp, 9, kGetTopology, 1, KsReply{0, reply, 48});
  ks().answer(kProcAmp, 9, kSetTopology, 1, KsReply{0, {}, 0});

  std::uint32_t gain = 0;
  EXPECT_EQ(xu.read_gain(gain), HR_OK);
  EXPECT_EQ(gain, 0x40u);
  const Bytes get = {PROCAMP_BYTES, 9, 0, 0, 0, 0x01, 0, 0, 0x10, 1, 0, 0, 0, 0, 0, 0, 0,
                     0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(ks().requests().back().request, get);

  EXPECT_EQ(xu.write_gain(0x1234), HR_OK);
  const Bytes set = {PROCAMP_BYTES, 9, 0, 0, 0, 0x02, 0, 0, 0x10, 1, 0, 0, 0, 0, 0, 0, 0,
                     0x34, 0x12, 0, 0, 0x02, 0, 0, 0, 0x03, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(ks().requests().back().request, set);
  EXPECT_EQ(ks().requests().back().data, set);
}

TEST_F(ExtensionUnitTest, FailedWritesDescribeTheErrorFailedReadsKeepTheOutput) {
  load_with_unit1();
  ks().answer(kProcAmp, 9, kGetTopology, 1, KsReply{hr(0x80070015), {}, 0});
  ks().answer(kProcAmp, 9, kSetTopology, 1, KsReply{hr(0x80080005), {}, 0});
  platform.messages[5] = L"Access is denied.";

  std::uint32_t out = 7;
  EXPECT_EQ(xu.read_gain(out), hr(0x80070015));
  EXPECT_EQ(xu.read_video_control_mode(out), hr(0x80070490));
  EXPECT_EQ(xu.read_led_power(out), hr(0x80070490));
  EXPECT_EQ(out, 7u);
  EXPECT_EQ(log.lines(), (std::vector<std::string>{
                             "E: KsPropertyGET 0x80070015. bytes returned= 0 \n",
                             "E: KsPropertyGET 0x80070490. bytes returned= 0 \n",
                             "E: KsPropertyGET 0x80070490. bytes returned= 0 \n"}));

  log.clear();
  EXPECT_EQ(xu.write_gain(3), hr(0x80080005));
  EXPECT_EQ(log.lines(), (std::vector<std::string>{
                             "E: KsPropertyGET 0x80070015. bytes returned= 0 \n",
                             "E: KsPropertySET 0x80080005. bytes returned= 0 \n",
                             "E: Access is denied.\n"}));
}

TEST_F(ExtensionUnitTest, DescribeErrorLooksUpFacilityEightByItsCode) {
  EXPECT_EQ(error_message_number(hr(0x80080005)), 5u);
  EXPECT_EQ(error_message_number(hr(0x00080020)), 0x20u);
  EXPECT_EQ(error_message_number(hr(0x80070005)), 0x80070005u);  // Win32 facility: as is
  EXPECT_EQ(error_message_number(hr(0x80180005)), 0x80180005u);

  describe_error(platform, hr(0x80070005));
  EXPECT_EQ(platform.message_queries, std::vector<std::uint32_t>{0x80070005u});
  EXPECT_EQ(log.lines(),
            std::vector<std::string>{"E: Could not find a description for error # 0x80070005.\n"});
}

TEST_F(ExtensionUnitTest, VideoControlMode) {
  load_with_unit1();
  Bytes reply(32, 0);
  reply[28] = 0x02;
  ks().answer(kVideoControl, 3, 0x00000001, 0, KsReply{0, reply, 32});
  std::uint32_t mode = 9;
  EXPECT_EQ(xu.read_video_control_mode(mode), HR_OK);
  EXPECT_EQ(mode, 2u);
  const Bytes request = {VIDEOCONTROL_BYTES, 3, 0, 0, 0, 0x01, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(ks().requests().back().request, request);
}

TEST_F(ExtensionUnitTest, LedPower) {
  load_with_unit1();
  ks().answer(kUnit1, 14, kSetTopology, 3, KsReply{0, {}, 0});
  EXPECT_EQ(xu.write_led_power(0x137), HR_OK);
  EXPECT_EQ(ks().requests().back().data, (Bytes{0x02, 0x37}));
  EXPECT_EQ(xu.write_led_power(0), HR_OK);
  EXPECT_EQ(ks().requests().back().data, (Bytes{0x00, 0x00}));

  std::uint32_t power = 9;
  ks().answer(kUnit1, 14, kGetTopology, 3, KsReply{0, {0x02, 0x50}, 2});
  EXPECT_EQ(xu.read_led_power(power), HR_OK);
  EXPECT_EQ(power, 0x50u);
  const Bytes request = {UNIT1_BYTES, 14, 0, 0, 0, 0x01, 0, 0, 0x10, 3, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(ks().requests().back().request, request);
  ks().answer(kUnit1, 14, kGetTopology, 3, KsReply{0, {0x00, 0x50}, 2});
  EXPECT_EQ(xu.read_led_power(power), HR_OK);
  EXPECT_EQ(power, 0u);
}

TEST_F(ExtensionUnitTest, RgbStatusOfUnit1) {
  load_with_unit1();
  std::uint32_t out = 9;
  ks().answer(kUnit1, 15, kGetTopology, 3, KsReply{0, {0x03}, 1});
  EXPECT_EQ(xu.read_rgb_status(out), HR_OK);
  EXPECT_EQ(out, 3u);

  // A driver that does not know the property: cleared, and its error.
  for (hresult unknown : {hr(0x80070490), hr(0x80070492)}) {
    out = 9;
    ks().answer(kUnit1, 15, kGetTopology, 3, KsReply{unknown, {}, 0});
    EXPECT_EQ(xu.read_rgb_status(out), unknown);
    EXPECT_EQ(out, 0u);
  }
  EXPECT_TRUE(log.contains("E: KsPropertySET 0x80070490. Property unsupported for getting rgb status"));
  EXPECT_TRUE(log.contains("E: KsPropertySET 0x80070492. Property unsupported for getting rgb status"));

  // Any other failure keeps the output.
  out = 9;
  ks().answer(kUnit1, 15, kGetTopology, 3, KsReply{hr(0x80004005), {}, 0});
  EXPECT_EQ(xu.read_rgb_status(out), HR_FAIL);
  EXPECT_EQ(out, 9u);
  EXPECT_EQ(log.lines().back(), "E: KsPropertySET 0x80004005. bytes returned= 0 \n");
}

}  // namespace
}  // namespace vexcap::controls
