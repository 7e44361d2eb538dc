// Device properties through vexcap_set_dev_property / vexcap_get_dev_property on the virtual
// camera: one row per case (the camera, the call, the answer, what was logged and what reached
// the camera), then the properties whose effects outlive the call.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "capture/frame_rate.h"
#include "platform/virtual/known_ids.h"
#include "support/library_fixture.h"
#include "support/log_capture.h"

namespace vexcap {
namespace {

namespace vc = virtual_camera;
using namespace std::chrono_literals;
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kInfrared = 0;
constexpr std::size_t kColour = 1;
constexpr std::uint32_t kReadsColour = VEXCAP_STREAM_MODE_SHARED;       // stream mode 0
constexpr std::uint32_t kReadsInfrared = VEXCAP_STREAM_MODE_EXCLUSIVE;  // stream mode 1
constexpr std::uint32_t kUntouched = 77;  // the host's value before a get
const std::string kOnDemand = "The virtual camera failed this call on demand.";

using testing::default_group_id;

void put_le(Bytes& bytes, std::size_t at, std::uint64_t value, int size) {
  for (int i = 0; i < size; ++i) bytes[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
}

// A KSPROPERTY header of `size` bytes: the set in its stored form, the id and the flags.
Bytes ks_property(const platform::Guid& set, std::uint32_t id, std::uint32_t flags, std::size_t size) {
  Bytes bytes(size, 0);
  put_le(bytes, 0, set.data1, 4);
  put_le(bytes, 4, set.data2, 2);
  put_le(bytes, 6, set.data3, 2);
  std::copy(std::begin(set.data4), std::end(set.data4), bytes.begin() + 8);
  put_le(bytes, 16, id, 4);
  put_le(bytes, 20, flags, 4);
  return bytes;
}

// The face-auth structure the default camera answers, with the mode set to `mode`.
Bytes face_auth_written(std::uint64_t mode) {
  Bytes bytes(40, 0);
  put_le(bytes, 0, 1, 4);            // version
  put_le(bytes, 4, 0xFFFFFFFF, 4);   // pin: filter scope
  put_le(bytes, 8, 40, 4);           // size
  put_le(bytes, 16, mode, 8);        // flags
  put_le(bytes, 24, 0x7, 8);         // capability
  put_le(bytes, 32, mode, 8);        // payload
  return bytes;
}

// The LLC structure as written: the header with the set flag, the value, and the camera's
// flags (auto) and capabilities (auto | manual) as it answered them.
Bytes llc_written(std::uint32_t value) {
  Bytes bytes = ks_property(vc::ids::kCameraControl, 19, vc::ids::kPropSet, 40);
  put_le(bytes, 24, value, 4);
  put_le(bytes, 28, 0x1, 4);
  put_le(bytes, 32, 0x3, 4);
  return bytes;
}

std::vector<Bytes> property_values_written() {
  std::vector<Bytes> values;
  for (const auto& request : vc::records().property_requests)
    if (request.is_set) values.push_back(request.value);
  return values;
}

std::vector<int> control18_bytes_written() {
  std::vector<int> written;
  for (const vc::KsRequest& request : vc::records().ks_requests)
    if (request.set == vc::ids::kPrimaryUnit && request.id == vc::ids::kPrimaryControl18 &&
        (request.flags & vc::ids::kPropSet) != 0 && request.data_size == 1)
      written.push_back(request.data_in.at(0));
  return written;
}

vc::FormatModel nv12(std::uint32_t width, std::uint32_t height) {
  vc::FormatModel format;
  format.width = width;
  format.height = height;
  return format;
}

vc::SourceModel& infrared(vc::Scenario& s) { return s.groups.at(0).sources.at(kInfrared); }
vc::SourceModel& colour(vc::Scenario& s) { return s.groups.at(0).sources.at(kColour); }
vc::GroupModel live_group() { return *vc::group_state(default_group_id()); }
std::uint64_t infrared_face_auth_flags() { return live_group().sources.at(kInfrared).face_auth->flags; }

struct PropertyCase {
  const char* name;
  std::uint32_t stream_mode;
  std::function<void(vc::Scenario&)> camera;  // changes to the default camera before opening
  std::function<void()> live;                 // changes after opening (faults, live state)
  bool is_set;
  std::uint32_t id;
  std::uint32_t value;
  int code;
  std::optional<std::uint32_t> read;          // gets: the value the host reads
  std::vector<std::string> log;               // lines that must be among those logged
  std::optional<std::vector<Bytes>> written;  // extended-property values written, in order
  std::function<void()> then;                 // what the camera holds afterwards
};

void PrintTo(const PropertyCase& c, std::ostream* out) { *out << c.name; }
void no_change(vc::Scenario&) {}
void nothing() {}
void fault(vc::PlatformCall call, hresult result = HR_FAIL) { vc::set_call_fault(call, {result, {}}); }
void ks_fault(const platform::Guid& set, std::uint32_t id, hresult error) {
  vc::edit_ks(default_group_id(), [&](vc::KsDeviceModel& ks) { ks.faults = {{set, id, error}}; });
}
void without_unit1(vc::Scenario& s) { s.groups.at(0).ks.nodes.pop_back(); }

// clang-format off
const PropertyCase kCases[] = {
    // Face-auth mode: read, checked against the capability, written back with flags and payload.
    {"FaceAuthModeIsWrittenIntoTheCamerasStructure", kReadsInfrared, no_change, nothing, true,
     VEXCAP_PROP_FACE_AUTH_MODE, VEXCAP_FACE_AUTH_ALTERNATIVE_ILLUMINATION, VEXCAP_OK, {},
     {"I: Get Face Auth: Success", "I: sizeofValue: 40, sizeof_ret_data= 40", "I: header version: 0x1",
      "I: flags: 0x1", "I: capability: 0x7", "I: pinID: 0xffffffff", "I: payload: 0x1",
      "I: Sett Face Auth: Success"},
     std::vector<Bytes>{face_auth_written(0x2)},
     [] {
       EXPECT_EQ(vc::records().property_requests.back().id,
                 ks_property(vc::ids::kExtendedCameraControl, 35, vc::ids::kPropSet, 24));
       EXPECT_EQ(infrared_face_auth_flags(), 0x2u);
     }},
    {"FaceAuthModeWithoutTheCapabilityIsNotWritten", kReadsInfrared,
     [](vc::Scenario& s) { infrared(s).face_auth->capability = 0x3; }, nothing, true, VEXCAP_PROP_FACE_AUTH_MODE,
     VEXCAP_FACE_AUTH_BACKGROUND_SUBTRACTION, VEXCAP_E_FAIL, {}, {"I: FaceAuthMode: Capability 0x4 not available"},
     std::vector<Bytes>{}, nothing},
    {"UnknownFaceAuthCodeIsAnInvalidArgument", kReadsInfrared, no_change, nothing, true, VEXCAP_PROP_FACE_AUTH_MODE,
     259, VEXCAP_E_INVALID_ARG, {}, {}, std::vector<Bytes>{}, nothing},
    {"UnreadableFaceAuthModeLogsZeroFields", kReadsInfrared,
     [](vc::Scenario& s) { infrared(s).face_auth->behaviour.get_status = platform::GetPropertyStatus::DeviceNotAvailable; },
     nothing, true, VEXCAP_PROP_FACE_AUTH_MODE, VEXCAP_FACE_AUTH_DISABLED, VEXCAP_E_FAIL, {},
     {"I: Get Face Auth: DeviceNotAvailable", "I: capability: 0x0"}, std::vector<Bytes>{}, nothing},
    {"FaceAuthAnswerOfAnotherLengthIsOutOfBounds", kReadsInfrared,
     [](vc::Scenario& s) { infrared(s).face_auth->behaviour.answer_length = 36; }, nothing, true,
     VEXCAP_PROP_FACE_AUTH_MODE, VEXCAP_FACE_AUTH_DISABLED, VEXCAP_E_FAIL, {},
     {"I: sizeofValue: 36, sizeof_ret_data= 40"}, std::vector<Bytes>{}, nothing},
    {"FaceAuthValueThatIsNoByteArrayAborts", kReadsInfrared,
     [](vc::Scenario& s) { infrared(s).face_auth->behaviour.answer_not_bytes = true; }, nothing, true,
     VEXCAP_PROP_FACE_AUTH_MODE, VEXCAP_FACE_AUTH_DISABLED, VEXCAP_E_FAIL, {},
     {"E: Get Face Auth Excpetion: No such interface supported"}, std::vector<Bytes>{}, nothing},
    {"RefusedFaceAuthWriteFails", kReadsInfrared,
     [](vc::Scenario& s) { infrared(s).face_auth->behaviour.set_status = platform::SetPropertyStatus::NotInControl; },
     nothing, true, VEXCAP_PROP_FACE_AUTH_MODE, VEXCAP_FACE_AUTH_DISABLED, VEXCAP_E_FAIL, {},
     {"I: Sett Face Auth: NotInControl"}, std::nullopt, nothing},
    {"FaceAuthReadExceptionIsLogged", kReadsInfrared, no_change, [] { fault(vc::PlatformCall::GetProperty); }, true,
     VEXCAP_PROP_FACE_AUTH_MODE, VEXCAP_FACE_AUTH_DISABLED, VEXCAP_E_FAIL, {},
     {"E: Get Face Auth Excpetion: " + kOnDemand}, std::vector<Bytes>{}, nothing},
    {"FaceAuthWriteExceptionIsLogged", kReadsInfrared, no_change, [] { fault(vc::PlatformCall::SetProperty); }, true,
     VEXCAP_PROP_FACE_AUTH_MODE, VEXCAP_FACE_AUTH_DISABLED, VEXCAP_E_FAIL, {},
     {"E: Set Face Auth Excpetion: " + kOnDemand}, std::vector<Bytes>{}, nothing},

    // Low-light compensation: the whole structure is identifier and value. The exclusive
    // client switched it on when it opened.
    {"LlcOffRewritesTheStructure", kReadsColour, no_change, nothing, true, VEXCAP_PROP_LLC, VEXCAP_LLC_OFF, VEXCAP_OK,
     {}, {"I: Get llc: Success", "I: payload: 0x1", "I: Set llc: Success"}, std::vector<Bytes>{llc_written(0)},
     [] {
       EXPECT_EQ(vc::records().property_requests.back().id, llc_written(0));
       EXPECT_EQ(live_group().sources.at(kColour).llc->value, 0u);
     }},
    {"UnknownLlcCodeIsAnInvalidArgument", kReadsColour, no_change, nothing, true, VEXCAP_PROP_LLC, 1,
     VEXCAP_E_INVALID_ARG, {}, {"I: payload: 0x1"}, std::vector<Bytes>{}, nothing},
    {"RefusedLlcWriteFails", kReadsColour, no_change,
     [] {
       vc::edit_source(default_group_id(), kColour, [](vc::SourceModel& s) {
         s.llc->behaviour.set_status = platform::SetPropertyStatus::NotInControl;
       });
     },
     true, VEXCAP_PROP_LLC, VEXCAP_LLC_ON, VEXCAP_E_FAIL, {}, {"I: Set llc: NotInControl"}, std::nullopt, nothing},
    {"LlcAnswerOfAnotherLengthIsOutOfBounds", kReadsColour, no_change,
     [] { vc::edit_source(default_group_id(), kColour, [](vc::SourceModel& s) { s.llc->behaviour.answer_length = 39; }); },
     true, VEXCAP_PROP_LLC, VEXCAP_LLC_ON, VEXCAP_E_FAIL, {}, {"I: sizeofValue: 39, sizeof_ret_data= 40"},
     std::vector<Bytes>{}, nothing},
    {"LlcReadExceptionIsLogged", kReadsColour, no_change, [] { fault(vc::PlatformCall::GetProperty); }, true,
     VEXCAP_PROP_LLC, VEXCAP_LLC_ON, VEXCAP_E_FAIL, {}, {"E: Get llc Excpetion: " + kOnDemand},
     std::vector<Bytes>{}, nothing},
    {"LlcWriteExceptionIsLogged", kReadsColour, no_change, [] { fault(vc::PlatformCall::SetProperty); }, true,
     VEXCAP_PROP_LLC, VEXCAP_LLC_ON, VEXCAP_E_FAIL, {}, {"E: Set llc Excpetion: " + kOnDemand},
     std::vector<Bytes>{}, nothing},

    // Automatic exposure: only 513 switches it on; switching off has its own test below.
    {"AutoExposureOn", kReadsColour, no_change, nothing, true, VEXCAP_PROP_AUTO_EXPOSURE, VEXCAP_AUTO_EXPOSURE_ON,
     VEXCAP_OK, {}, {"I: Setting auto exposure mode to 1"}, std::nullopt,
     [] { EXPECT_TRUE(live_group().sources.at(kColour).exposure->auto_enabled); }},
    {"AnyOtherAutoExposureModeSwitchesItOff", kReadsColour,
     [](vc::Scenario& s) { colour(s).exposure->auto_enabled = true; }, nothing, true, VEXCAP_PROP_AUTO_EXPOSURE, 0x301,
     VEXCAP_OK, {}, {"I: Setting auto exposure mode to 0"}, std::nullopt,
     [] { EXPECT_FALSE(live_group().sources.at(kColour).exposure->auto_enabled); }},
    {"AutoExposureOnAnUnsupportedControlIsNotFound", kReadsColour,
     [](vc::Scenario& s) { colour(s).exposure->supported = false; }, nothing, true, VEXCAP_PROP_AUTO_EXPOSURE,
     VEXCAP_AUTO_EXPOSURE_ON, VEXCAP_E_FAIL, {}, {"I: exposure mode ctrl not supported"}, std::nullopt, nothing},
    {"AutoExposureExceptionIsLoggedAndAnswered", kReadsColour, no_change,
     [] { fault(vc::PlatformCall::SetControl, HR_ACCESSDENIED); }, true, VEXCAP_PROP_AUTO_EXPOSURE,
     VEXCAP_AUTO_EXPOSURE_ON, VEXCAP_E_ACCESS_DENIED, {}, {"I: Setting auto exposure mode exception: " + kOnDemand},
     std::nullopt, nothing},

    // Ids the library does not know succeed: hosts probe them.
    {"UnknownSetIdSucceeds", kReadsInfrared, no_change, nothing, true, 7, 1, VEXCAP_OK, {},
     {"E: Unsupported device property id"}, std::nullopt, nothing},
    {"GetOnlyIdIsUnknownToSet", kReadsInfrared, no_change, nothing, true, VEXCAP_PROP_RGB_STATUS, 1, VEXCAP_OK, {},
     {"E: Unsupported device property id"}, std::nullopt, nothing},
    {"UnknownGetIdLeavesTheValue", kReadsInfrared, no_change, nothing, false, 3, 0, VEXCAP_OK, kUntouched,
     {"D: get_dev_property: 3", "E: Unsupported device property id"}, std::nullopt, nothing},

    // The extension unit's controls.
    {"RgbStatusIsReadFromUnit1", kReadsInfrared, no_change,
     [] { vc::edit_ks(default_group_id(), [](vc::KsDeviceModel& ks) { ks.rgb_status = 1; }); }, false,
     VEXCAP_PROP_RGB_STATUS, 0, VEXCAP_OK, 1u, {}, std::nullopt, nothing},
    {"RgbStatusIsReadFromUnit2OnCamerasWithoutUnit1", kReadsInfrared,
     [](vc::Scenario& s) {
       s.groups[0].ks.nodes.back() = {vc::ids::kNodeDevSpecific, vc::ids::kAlternativeUnit, vc::unit_descriptor(vc::ids::kAlternativeUnit, 13, 40)};
       s.groups[0].ks.rgb_status = 1;
     },
     nothing, false, VEXCAP_PROP_RGB_STATUS, 0, VEXCAP_OK, 1u, {}, std::nullopt, nothing},
    {"FailedRgbStatusReadAnswersZero", kReadsInfrared, no_change,
     [] { ks_fault(vc::ids::kPrimaryUnit, vc::ids::kPrimaryRgbStatus, HR_FAIL); }, false, VEXCAP_PROP_RGB_STATUS, 0,
     VEXCAP_E_FAIL, 0u, {"E: KsPropertySET 0x80004005. bytes returned= 0 \n"}, std::nullopt, nothing},
    {"RgbStatusUnknownToTheDriverAnswersZero", kReadsInfrared, no_change,
     [] { ks_fault(vc::ids::kPrimaryUnit, vc::ids::kPrimaryRgbStatus, HR_SET_NOT_FOUND); }, false, VEXCAP_PROP_RGB_STATUS, 0,
     VEXCAP_E_FAIL, 0u, {"E: KsPropertySET 0x80070492. Property unsupported for getting rgb status"}, std::nullopt,
     nothing},
    {"UnitDescriptorShorterThanTheSignatureIsNoUnit", kReadsInfrared,
     [](vc::Scenario& s) {
       Bytes seven = vc::unit_descriptor(vc::ids::kPrimaryUnit, 0, 8);
       seven.pop_back();
       s.groups[0].ks.nodes.back().unit_info = seven;
     },
     nothing, false, VEXCAP_PROP_RGB_STATUS, 0, VEXCAP_E_FAIL, 0u, {"E: no valid nodes"}, std::nullopt, nothing},
    {"RgbStatusWithoutAnyUnitAnswersZero", kReadsInfrared, without_unit1, nothing, false, VEXCAP_PROP_RGB_STATUS, 0,
     VEXCAP_E_FAIL, 0u, {"E: no valid nodes"}, std::nullopt, nothing},
    {"VideoControlModeIsMaskedWithTwo", kReadsInfrared,
     [](vc::Scenario& s) { s.groups[0].ks.video_control_mode = 3; }, nothing, false, VEXCAP_PROP_VIDEO_CONTROL_MODE,
     0, VEXCAP_OK, 2u, {}, std::nullopt, nothing},
    {"FailedVideoControlModeReadAnswersZero", kReadsInfrared, no_change,
     [] { ks_fault(vc::ids::kVideoControl, vc::ids::kVideoControlMode, HR_FAIL); }, false,
     VEXCAP_PROP_VIDEO_CONTROL_MODE, 0, VEXCAP_E_FAIL, 0u, {"E: KsPropertyGET 0x80004005. bytes returned= 0 \n"},
     std::nullopt, nothing},
    {"Control18One", kReadsInfrared, no_change, nothing, true, VEXCAP_PROP_XU_CONTROL_18, VEXCAP_XU_CONTROL_18_ONE,
     VEXCAP_OK, {}, {}, std::nullopt, [] { EXPECT_EQ(control18_bytes_written(), std::vector<int>{1}); }},
    {"Control18Two", kReadsInfrared, no_change, nothing, true, VEXCAP_PROP_XU_CONTROL_18, VEXCAP_XU_CONTROL_18_TWO,
     VEXCAP_OK, {}, {}, std::nullopt, [] { EXPECT_EQ(control18_bytes_written(), std::vector<int>{2}); }},
    {"Control18OtherValuesWriteZero", kReadsInfrared,
     [](vc::Scenario& s) { s.groups[0].ks.control18 = 2; }, nothing, true, VEXCAP_PROP_XU_CONTROL_18, 7, VEXCAP_OK,
     {}, {}, std::nullopt, [] {
       EXPECT_EQ(control18_bytes_written(), std::vector<int>{0});
       EXPECT_EQ(live_group().ks.control18, 0);
     }},

    // Formats.
    {"HiresSensorTypePrefers1080p", kReadsColour,
     [](vc::Scenario& s) { colour(s).formats = {nv12(640, 480), nv12(1280, 720), nv12(1920, 1080)}; }, nothing, false,
     VEXCAP_PROP_HIRES_SENSOR_TYPE, 0, VEXCAP_OK, VEXCAP_FORMAT_HIRES_1080P, {}, std::nullopt, nothing},
    {"HiresSensorTypeFallsBackTo720p", kReadsColour,
     [](vc::Scenario& s) { colour(s).formats = {nv12(640, 480), nv12(1280, 720)}; }, nothing, false,
     VEXCAP_PROP_HIRES_SENSOR_TYPE, 0, VEXCAP_OK, VEXCAP_FORMAT_HIRES_720P, {}, std::nullopt, nothing},
    {"InfraredHasNoHiresSensorType", kReadsInfrared, no_change, nothing, false, VEXCAP_PROP_HIRES_SENSOR_TYPE, 0,
     VEXCAP_OK, VEXCAP_FORMAT_HIRES_NONE, {"D: No suppoted hires sensor type"}, std::nullopt, nothing},
    {"Missing1080pStreamTypeIsAppliedAs720p", kReadsColour,
     [](vc::Scenario& s) { colour(s).formats = {nv12(640, 480), nv12(1280, 720)}; }, nothing, true,
     VEXCAP_PROP_STREAM_TYPE_APPLY, VEXCAP_FORMAT_HIRES_1080P, VEXCAP_OK, {}, {}, std::nullopt,
     [] {
       const auto changes = vc::records().format_changes;
       ASSERT_EQ(changes.size(), 1u);
       EXPECT_EQ(changes[0].format.width, 1280u);
       EXPECT_EQ(changes[0].format.height, 720u);
     }},
    {"PlainStreamTypeReportsAMissing1080p", kReadsColour,
     [](vc::Scenario& s) { colour(s).formats = {nv12(640, 480), nv12(1280, 720)}; }, nothing, true,
     VEXCAP_PROP_STREAM_TYPE, VEXCAP_FORMAT_HIRES_1080P, VEXCAP_E_FAIL, {}, {}, std::nullopt, nothing},
    {"RefusedStreamTypeLeavesTheTorchOn", kReadsInfrared,
     [](vc::Scenario& s) {
       without_unit1(s);
       infrared(s).torch->enabled = true;
     },
     nothing, true, VEXCAP_PROP_STREAM_TYPE, 10, VEXCAP_E_INVALID_ARG, {}, {}, std::nullopt,
     [] { EXPECT_TRUE(live_group().sources.at(kInfrared).torch->enabled); }},
    {"StreamTypeSwitchesTheTorchOffWithoutTheVendorUnit", kReadsInfrared,
     [](vc::Scenario& s) {
       without_unit1(s);
       infrared(s).torch->enabled = true;
     },
     nothing, true, VEXCAP_PROP_STREAM_TYPE, 2, VEXCAP_OK, {}, {}, std::nullopt,
     [] { EXPECT_FALSE(live_group().sources.at(kInfrared).torch->enabled); }},
};
// clang-format on

// The rows check what the library asked of the camera: its requests are recorded.
class DeviceProperty : public testing::OpenDeviceCase<PropertyCase> {
 protected:
  void SetUp() override {
    OpenDeviceCase::SetUp();
    vc::set_recording(true);
  }
};

TEST_P(DeviceProperty, AnswersLogsAndReachesTheCamera) {
  const PropertyCase& c = GetParam();
  vc::Scenario scenario = vc::default_scenario();
  c.camera(scenario);
  ASSERT_NE(open(c.stream_mode, scenario), nullptr);
  vc::clear_records();
  c.live();

  vexcap_property property{c.id, c.is_set ? c.value : kUntouched};
  EXPECT_EQ(c.is_set ? vexcap_set_dev_property(device_, &property) : vexcap_get_dev_property(device_, &property),
            c.code);
  vc::clear_faults();
  if (c.read) {
    EXPECT_EQ(property.value, *c.read);
  }
  for (const std::string& line : c.log) EXPECT_TRUE(log.contains(line)) << line;
  if (c.written) {
    EXPECT_EQ(property_values_written(), *c.written);
  }
  c.then();
}

INSTANTIATE_TEST_SUITE_P(Rows, DeviceProperty, ::testing::ValuesIn(kCases),
                         [](const ::testing::TestParamInfo<PropertyCase>& info) { return info.param.name; });

class DeviceProperties : public testing::OpenDevice {
 protected:
  void SetUp() override {
    OpenDevice::SetUp();
    vc::set_recording(true);
  }
  static int set(vexcap_device* device, std::uint32_t id, std::uint32_t value) {
    vexcap_property property{id, value};
    return vexcap_set_dev_property(device, &property);
  }
};

TEST_F(DeviceProperties, DiagnosticLogSwitchesOutputOnAndOff) {
  ASSERT_NE(open(kReadsInfrared), nullptr);
  vexcap_property unknown{99, 0};
  for (const std::uint32_t value : {VEXCAP_DIAGNOSTIC_LOG_OFF, VEXCAP_DIAGNOSTIC_LOG_ON, 7u}) {
    ASSERT_EQ(set(device_, VEXCAP_PROP_DIAGNOSTIC_LOG, value), VEXCAP_OK);
    log.clear();
    vexcap_get_dev_property(device_, &unknown);
    EXPECT_EQ(log.contains("D: get_dev_property: 99"), value == VEXCAP_DIAGNOSTIC_LOG_ON) << value;
  }
}

// Frames delivered to the host, counted.
struct Counter {
  std::atomic<int> frames{0};
  static bool receive(vexcap_frame* frame, void* context) {
    ++static_cast<Counter*>(context)->frames;
    vexcap_return_frame(frame);
    return true;
  }
};

TEST_F(DeviceProperties, FrameRateCodeWithoutAFormatLimitsTheSharedStream) {
  vc::Scenario scenario = vc::default_scenario();
  colour(scenario).formats = {nv12(640, 480), nv12(1280, 720)};  // codes 11 and 19 only, 30 fps
  ASSERT_NE(open(kReadsColour, scenario), nullptr);
  // Code 14 (15 fps) has no format: the colour format falls back to code 11 and the shared
  // client keeps at most 16.5 frames a second.
  vc::clear_records();
  ASSERT_EQ(set(device_, VEXCAP_PROP_STREAM_TYPE_APPLY, 14), VEXCAP_OK);
  ASSERT_EQ(vc::records().format_changes.size(), 1u);
  EXPECT_EQ(vc::records().format_changes[0].format.height, 480u);

  // Start after the process-wide last accepted frame, so the first frame here passes.
  const std::int64_t behind = capture::last_accepted_frame_time() * 10 - vc::now();
  vc::advance_time(10s + std::chrono::nanoseconds(std::max<std::int64_t>(behind, 0) * 100));
  Counter counter;
  ASSERT_EQ(vexcap_start_streaming(device_, &Counter::receive, &counter), VEXCAP_OK);
  for (int i = 0; i < 6; ++i) vc::advance_time(34ms);
  EXPECT_EQ(counter.frames.load(), 3);  // every second frame of 30

  // A code that is no frame rate is refused and lifts the limit; so does a format found.
  EXPECT_EQ(set(device_, VEXCAP_PROP_STREAM_TYPE_APPLY, 9), VEXCAP_E_NO_INTERFACE);
  for (int i = 0; i < 6; ++i) vc::advance_time(34ms);
  EXPECT_EQ(counter.frames.load(), 9);
  ASSERT_EQ(set(device_, VEXCAP_PROP_STREAM_TYPE_APPLY, 14), VEXCAP_OK);
  ASSERT_EQ(set(device_, VEXCAP_PROP_STREAM_TYPE_APPLY, 19), VEXCAP_OK);
  for (int i = 0; i < 6; ++i) vc::advance_time(34ms);
  EXPECT_EQ(counter.frames.load(), 15);
  EXPECT_EQ(vexcap_stop_streaming(device_), VEXCAP_OK);
}

TEST_F(DeviceProperties, SourceWithoutFormatsIsReportedByAWorker) {
  ASSERT_NE(open(kReadsInfrared), nullptr);
  struct Reports {
    std::mutex lock;
    std::vector<std::uint32_t> statuses;
  } reports;
  ASSERT_EQ(vexcap_register_for_unsupported_format_status_event(
                device_,
                [](std::uint32_t status, void* context) {
                  auto* seen = static_cast<Reports*>(context);
                  std::lock_guard<std::mutex> guard(seen->lock);
                  seen->statuses.push_back(status);
                },
                &reports),
            VEXCAP_OK);
  vc::edit_source(default_group_id(), kInfrared, [](vc::SourceModel& s) { s.formats.clear(); });

  EXPECT_EQ(set(device_, VEXCAP_PROP_STREAM_TYPE, 2), VEXCAP_E_FAIL);  // the plain 16, no report
  EXPECT_EQ(set(device_, VEXCAP_PROP_STREAM_TYPE_APPLY, 2), VEXCAP_OK);
  ASSERT_EQ(vexcap_device_close(device_), VEXCAP_OK);  // joins the worker
  device_ = nullptr;
  EXPECT_EQ(reports.statuses, (std::vector<std::uint32_t>{1}));
}

int exposure_auto_switches(bool enabled) {
  const auto applied = vc::records().applied_controls;
  return static_cast<int>(std::count_if(applied.begin(), applied.end(), [&](const vc::AppliedControl& c) {
    return c.kind == vc::ControlKind::ExposureAuto && c.value == (enabled ? 1 : 0);
  }));
}

TEST_F(DeviceProperties, AutoExposureOffRunsOnTheDeviceAndOnATemporaryDevice) {
  vc::Scenario scenario = vc::default_scenario();
  infrared(scenario).exposure->auto_enabled = true;
  ASSERT_NE(open(kReadsInfrared, scenario), nullptr);
  vc::clear_records();
  EXPECT_EQ(set(device_, VEXCAP_PROP_AUTO_EXPOSURE, VEXCAP_AUTO_EXPOSURE_OFF), VEXCAP_OK);
  EXPECT_EQ(exposure_auto_switches(false), 2);
  EXPECT_FALSE(live_group().sources.at(kInfrared).exposure->auto_enabled);
  // The temporary device is closed again.
  EXPECT_EQ(vc::session_count(default_group_id(), platform::SharingMode::ExclusiveControl), 1);
  EXPECT_EQ(vc::session_count(default_group_id(), platform::SharingMode::SharedReadOnly), 1);
}

TEST_F(DeviceProperties, TheHostGetsTheTemporaryDevicesAnswer) {
  ASSERT_NE(open(kReadsInfrared), nullptr);
  vc::clear_records();
  // Hold the temporary device's initialization until the device's own client has switched
  // automatic exposure off, then make the camera refuse the temporary device's request.
  vc::set_call_fault(vc::PlatformCall::Initialize, {HR_OK, 30s});
  std::atomic<int> result{1};
  std::thread host([&] { result = set(device_, VEXCAP_PROP_AUTO_EXPOSURE, VEXCAP_AUTO_EXPOSURE_OFF); });
  const bool held = vc::wait_for_slow_call(10s);
  const auto deadline = std::chrono::steady_clock::now() + 10s;
  while (exposure_auto_switches(false) == 0 && std::chrono::steady_clock::now() < deadline)
    std::this_thread::sleep_for(1ms);
  vc::set_call_fault(vc::PlatformCall::SetControl, {HR_ACCESSDENIED});
  vc::set_call_fault(vc::PlatformCall::Initialize, {});
  vc::release_slow_calls();
  host.join();

  EXPECT_TRUE(held);
  EXPECT_EQ(exposure_auto_switches(false), 1);  // the device's own client
  EXPECT_EQ(result.load(), VEXCAP_E_ACCESS_DENIED);
}

std::atomic<int> rgb_stopped_calls{0};
void count_rgb_stopped(bool, void*) { ++rgb_stopped_calls; }

TEST_F(DeviceProperties, ColourOffReturnsWithoutACallbackWhileTheRgbStoppedWorkerWaits) {
  ASSERT_NE(open(kReadsInfrared), nullptr);  // manual clock: the worker's own reader never gets a frame
  rgb_stopped_calls = 0;
  ASSERT_EQ(vexcap_register_for_rgb_stopped_event(device_, count_rgb_stopped, nullptr), VEXCAP_OK);
  const auto worker_waits = [] {
    return vc::session_count(default_group_id(), platform::SharingMode::ExclusiveControl) == 2;
  };
  const auto deadline = std::chrono::steady_clock::now() + 10s;
  while (!worker_waits() && std::chrono::steady_clock::now() < deadline) std::this_thread::sleep_for(1ms);
  ASSERT_TRUE(worker_waits());

  const auto began = std::chrono::steady_clock::now();
  EXPECT_EQ(set(device_, VEXCAP_PROP_RGB_OFF, 0), VEXCAP_OK);
  EXPECT_LT(std::chrono::steady_clock::now() - began, 20s);
  EXPECT_EQ(rgb_stopped_calls.load(), 0);
  EXPECT_EQ(vc::session_count(default_group_id(), platform::SharingMode::ExclusiveControl),
            1);  // the worker's went
  // Both clients are off for good: neither selector streams.
  EXPECT_NE(vexcap_start_streaming(device_, [](vexcap_frame*, void*) { return true; }, nullptr), VEXCAP_OK);
}

}  // namespace
}  // namespace vexcap
