// The capture client on virtual cameras: which source it reads, how it initializes, and its
// streaming-control answers.
#include <gtest/gtest.h>

#include <chrono>
#include <cwctype>
#include <thread>

#include "capture/capture_client.h"
#include "platform/virtual/virtual_camera.h"
#include "support/log_capture.h"

namespace vexcap::capture {
namespace {

namespace vc = virtual_camera;
using platform::SourceKind;
using platform::StreamType;

const std::wstring kUsbGroup = L"\\\\?\\USB#VID_0BAD&PID_F00D&MI_00#1&2&3&0000#{x}\\GLOBAL";
const std::wstring kPlainGroup = L"\\\\?\\ROOT#CAMERA#0000#{x}\\GLOBAL";

vc::FormatModel format(const wchar_t* subtype, std::uint32_t width, std::uint32_t height, std::uint32_t fps) {
  vc::FormatModel model;
  model.subtype = subtype;
  model.width = width;
  model.height = height;
  model.frame_rate_numerator = fps;
  return model;
}

vc::SourceModel source(SourceKind kind, StreamType type, const std::wstring& device_id,
                       std::vector<vc::FormatModel> formats) {
  vc::SourceModel model;
  model.id = L"Source@" + device_id + std::to_wstring(static_cast<int>(type));
  model.kind = kind;
  model.stream_type = type;
  model.device_information = vc::DeviceInfoModel{device_id, L"camera", false, true, platform::Pairing{}, {}};
  model.formats = std::move(formats);
  model.current_format = model.formats.empty() ? std::nullopt : std::optional<std::size_t>(0);
  return model;
}

vc::Scenario one_group(const std::wstring& id, std::vector<vc::SourceModel> sources) {
  vc::GroupModel group;
  group.id = id;
  group.display_name = L"Test Camera";
  group.sources = std::move(sources);
  vc::Scenario scenario;
  scenario.groups.push_back(std::move(group));
  scenario.clock = vc::ClockMode::Manual;
  return scenario;
}

std::wstring default_group_id() { return *vc::default_scenario().groups.at(0).id; }

class CaptureClientTest : public ::testing::Test {
 protected:
  void SetUp() override {
    vc::reset();
    vc::set_recording(true);
  }
  void TearDown() override { vc::reset(); }
  // A client whose log lines the test sees.
  std::shared_ptr<CaptureClient> create(std::uint32_t stream_mode) {
    auto client = CaptureClient::create(platform::current(), stream_mode);
    log.resume();
    return client;
  }
  testing::LogCapture log;
};

TEST_F(CaptureClientTest, UsbCameraIsReadFromItsRecordStream) {
  const std::vector<vc::FormatModel> formats = {format(L"NV12", 640, 480, 30)};
  vc::use_scenario(
      one_group(kUsbGroup, {source(SourceKind::Color, StreamType::VideoPreview, kUsbGroup, formats),
                            source(SourceKind::Color, StreamType::VideoRecord, kUsbGroup, formats)}));
  auto client = create(1);
  ASSERT_EQ(client->initialize(kUsbGroup, 0, 0, 0), HR_OK);
  ASSERT_NE(client->frame_source(), nullptr);
  EXPECT_EQ(client->frame_source()->info().stream_type, StreamType::VideoRecord);
  EXPECT_EQ(client->device_id(), kUsbGroup);
}

TEST_F(CaptureClientTest, OtherCamerasAreReadFromTheirPreviewStream) {
  const std::vector<vc::FormatModel> formats = {format(L"NV12", 640, 480, 30)};
  vc::use_scenario(
      one_group(kPlainGroup, {source(SourceKind::Color, StreamType::VideoRecord, kPlainGroup, formats),
                              source(SourceKind::Color, StreamType::VideoPreview, kPlainGroup, formats),
                              source(SourceKind::Color, StreamType::Photo, kPlainGroup, formats)}));
  auto client = create(0);
  ASSERT_EQ(client->initialize(kPlainGroup, 0, 0, 0), HR_OK);
  EXPECT_EQ(client->frame_source()->info().stream_type, StreamType::VideoPreview);
  ASSERT_NE(client->second_source(), nullptr);
  EXPECT_EQ(client->second_source()->info().stream_type, StreamType::Photo);
}

TEST_F(CaptureClientTest, GroupsAreMatchedByExactIdAndByTheWantedSourceKind) {
  vc::use_scenario(vc::default_scenario());
  std::wstring upper = default_group_id();
  for (auto& c : upper) c = static_cast<wchar_t>(std::towupper(c));
  EXPECT_EQ(create(1)->initialize(upper, 1, 0, 0), HR_FAIL);
  EXPECT_EQ(create(1)->initialize(default_group_id(), 2, 0, 0), HR_FAIL);  // no depth source
  auto client = create(1);
  EXPECT_EQ(client->initialize(default_group_id(), 1, 0, 0), HR_OK);
  EXPECT_EQ(client->frame_source()->info().kind, SourceKind::Infrared);
  EXPECT_EQ(client->initialize(default_group_id(), 1, 0, 0), HR_INVALID_STATE);
}

TEST_F(CaptureClientTest, OnlyTheExclusiveClientWatchesFailuresAndSwitchesLlcOn) {
  vc::use_scenario(vc::default_scenario());
  auto shared = create(0);
  ASSERT_EQ(shared->initialize(default_group_id(), 1, 0, 0), HR_OK);
  EXPECT_TRUE(vc::records().property_requests.empty());
  vc::raise_capture_failed(HR_FAIL);
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_FALSE(log.contains("E: Media capture failed. Notifying the main thread..."));

  auto exclusive = create(1);
  ASSERT_EQ(exclusive->initialize(default_group_id(), 1, 0, 0), HR_OK);
  const auto requests = vc::records().property_requests;
  ASSERT_EQ(requests.size(), 3u);  // LLC read for the log, then read and write to switch it on
  EXPECT_FALSE(requests[0].is_set);
  EXPECT_TRUE(requests[2].is_set);
  EXPECT_EQ(requests[2].value.at(24), 1);  // Value: on
  vc::raise_capture_failed(HR_FAIL);
  // Raised on the camera's own thread.
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
  while (!log.contains("E: Media capture failed. Notifying the main thread...") &&
         std::chrono::steady_clock::now() < deadline)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  EXPECT_TRUE(log.contains("E: Media capture failed. Notifying the main thread..."));
}

TEST_F(CaptureClientTest, UnknownStreamModesAreLoggedAndShareTheCamera) {
  vc::use_scenario(vc::default_scenario());
  auto client = create(7);
  ASSERT_EQ(client->initialize(default_group_id(), 1, 0, 0), HR_OK);
  EXPECT_TRUE(log.contains("E: Unknown vexcap_stream_mode: 7, defaulting to shared"));
  EXPECT_EQ(vc::session_count(default_group_id(), platform::SharingMode::SharedReadOnly), 1);
  EXPECT_EQ(vc::session_count(default_group_id(), platform::SharingMode::ExclusiveControl), 0);
}

TEST_F(CaptureClientTest, EnableStreamTypeChecksStateRangeFormatsAndTable) {
  vc::use_scenario(vc::default_scenario());
  auto idle = create(1);
  EXPECT_EQ(idle->enable_stream_type(2, 0), HR_INVALID_STATE);
  EXPECT_TRUE(log.contains("E: enable_stream_type: not valid state"));

  auto infrared = create(1);
  ASSERT_EQ(infrared->initialize(default_group_id(), 1, 0, 0), HR_OK);
  EXPECT_EQ(infrared->enable_stream_type(10, 0), HR_INVALIDARG);
  EXPECT_EQ(infrared->enable_stream_type(-1, 0), HR_INVALIDARG);
  EXPECT_EQ(infrared->enable_stream_type(8, 0), HR_NOTIMPL);  // 640x480 at 1 fps is not offered

  auto colour = create(0);
  ASSERT_EQ(colour->initialize(default_group_id(), 0, 0, 0), HR_OK);
  EXPECT_EQ(colour->enable_stream_type(10, 0), HR_NOTIMPL);  // no range check for colour

  vc::use_scenario(one_group(kUsbGroup, {source(SourceKind::Color, StreamType::VideoRecord, kUsbGroup, {})}));
  auto empty = create(1);
  ASSERT_EQ(empty->initialize(kUsbGroup, 0, 0, 0), HR_OK);
  EXPECT_EQ(empty->enable_stream_type(11, 0), 16);
}

}  // namespace
}  // namespace vexcap::capture
