#include "controls/extended_properties.h"

#include <gtest/gtest.h>

#include <vector>

#include "controls/fakes/fake_source_controller.h"
#include "support/log_capture.h"

namespace vexcap::controls {
namespace {

using Bytes = std::vector<std::uint8_t>;
using testing::FakeSourceController;
using testing::LogCapture;

// KSPROPERTYSETID_ExtendedCameraControl {1CB79112-C0D2-4213-9CA6-CD4FDB927972}, stored form.
#define EXTENDED_CAMERA_CONTROL \
  0x12, 0x91, 0xB7, 0x1C, 0xD2, 0xC0, 0x13, 0x42, 0x9C, 0xA6, 0xCD, 0x4F, 0xDB, 0x92, 0x79, 0x72
// PROPSETID_VIDCAP_CAMERACONTROL {C6E13370-30AC-11D0-A18C-00A0C9118956}, stored form.
#define CAMERA_CONTROL \
  0x70, 0x33, 0xE1, 0xC6, 0xAC, 0x30, 0xD0, 0x11, 0xA1, 0x8C, 0x00, 0xA0, 0xC9, 0x11, 0x89, 0x56

const Bytes kFaceAuthGetId = {EXTENDED_CAMERA_CONTROL, 0x23, 0, 0, 0, 0x01, 0, 0, 0};
const Bytes kFaceAuthSetId = {EXTENDED_CAMERA_CONTROL, 0x23, 0, 0, 0, 0x02, 0, 0, 0};

// A camera in the disabled mode that offers disabled and alternative frame illumination.
const Bytes kFaceAuthReply = {
    0x01, 0, 0, 0,              // version
    0x07, 0, 0, 0,              // pin
    0x28, 0, 0, 0,              // size
    0x00, 0, 0, 0,              // result
    0x01, 0, 0, 0, 0, 0, 0, 0,  // flags
    0x03, 0, 0, 0, 0, 0, 0, 0,  // capability
    0x01, 0, 0, 0, 0, 0, 0, 0,  // payload
};

const Bytes kLlcGetId = {CAMERA_CONTROL, 0x13, 0, 0, 0, 0x01, 0, 0, 0,
                         0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};

// LLC off, control flags 2, capabilities 3, padding as the driver left it.
const Bytes kLlcReply = {CAMERA_CONTROL, 0x13, 0, 0, 0, 0x01, 0, 0, 0,
                         0x00, 0, 0, 0, 0x02, 0, 0, 0, 0x03, 0, 0, 0, 0xAA, 0, 0, 0};

class ExtendedProperties : public ::testing::Test {
 protected:
  PropertyTarget target() { return {&camera, true}; }
  FakeSourceController camera;
  LogCapture log;
};

TEST_F(ExtendedProperties, FaceAuthGetSendsTheGetIdentifierAndCopiesTheBuffer) {
  camera.value = kFaceAuthReply;
  Bytes out(40, 0xEE);
  EXPECT_EQ(get_face_auth_mode(target(), out.data()), HR_OK);
  ASSERT_EQ(camera.get_ids.size(), 1u);
  EXPECT_EQ(camera.get_ids[0], kFaceAuthGetId);
  EXPECT_EQ(camera.get_max_sizes[0], std::optional<std::uint32_t>(40));
  EXPECT_EQ(out, kFaceAuthReply);
  EXPECT_EQ(log.lines(), (std::vector<std::string>{
                             "I: Get Face Auth: Success",
                             "I: Value: Windows.Foundation.IReferenceArray`1<UInt8>",
                             "I: sizeofValue: 40, sizeof_ret_data= 40"}));
}

TEST_F(ExtendedProperties, FaceAuthSetWritesFlagsAndPayloadKeepingTheRest) {
  camera.value = kFaceAuthReply;
  EXPECT_EQ(set_face_auth_mode(target(), 258), HR_OK);
  Bytes expected = kFaceAuthReply;
  expected[16] = 0x02;  // flags
  expected[32] = 0x02;  // payload
  ASSERT_EQ(camera.sets.size(), 1u);
  EXPECT_EQ(camera.sets[0].id, kFaceAuthSetId);
  EXPECT_EQ(camera.sets[0].value, expected);
  EXPECT_EQ(log.lines(), (std::vector<std::string>{
                             "I: Get Face Auth: Success",
                             "I: Value: Windows.Foundation.IReferenceArray`1<UInt8>",
                             "I: sizeofValue: 40, sizeof_ret_data= 40",
                             "I: header version: 0x1", "I: flags: 0x1", "I: result: 0x0",
                             "I: size: 0x28", "I: capability: 0x3", "I: pinID: 0x7",
                             "I: payload: 0x1", "I: Sett Face Auth: Success"}));
}

TEST_F(ExtendedProperties, FaceAuthModeWithoutCapabilityIsNotImplementedAndNothingIsWritten) {
  camera.value = kFaceAuthReply;
  EXPECT_EQ(set_face_auth_mode(target(), 260), HR_NOTIMPL);
  EXPECT_TRUE(camera.sets.empty());
  EXPECT_TRUE(log.contains("I: FaceAuthMode: Capability 0x4 not available"));

  Bytes only_disabled = kFaceAuthReply;
  only_disabled[24] = 0x01;
  camera.value = only_disabled;
  EXPECT_EQ(set_face_auth_mode(target(), 258), HR_NOTIMPL);
  EXPECT_TRUE(camera.sets.empty());
  EXPECT_TRUE(log.contains("I: FaceAuthMode: Capability 0x2 not available"));
}

TEST_F(ExtendedProperties, UnknownHostCodesAreInvalidArguments) {
  camera.value = kFaceAuthReply;
  EXPECT_EQ(set_face_auth_mode(target(), 259), HR_INVALIDARG);
  EXPECT_TRUE(camera.sets.empty());

  camera.value = kLlcReply;
  log.clear();
  EXPECT_EQ(set_llc(target(), 1), HR_INVALIDARG);
  EXPECT_TRUE(camera.sets.empty());
  // The current value was read and logged first.
  EXPECT_EQ(camera.get_ids.back(), kLlcGetId);
  EXPECT_TRUE(log.contains("I: payload: 0x0"));
}

TEST_F(ExtendedProperties, AValueOfAnotherLengthIsOutOfBoundsAndCopiesNothing) {
  for (std::size_t length : {0u, 39u, 41u}) {
    camera.value = Bytes(length, 0x11);
    Bytes out(40, 0xEE);
    EXPECT_EQ(get_face_auth_mode(target(), out.data()), HR_BOUNDS);
    EXPECT_EQ(get_llc(target(), out.data()), HR_BOUNDS);
    EXPECT_EQ(out, Bytes(40, 0xEE));
  }
  EXPECT_TRUE(log.contains("I: sizeofValue: 39, sizeof_ret_data= 40"));
}

TEST_F(ExtendedProperties, AClientThatIsNotInitialized) {
  const PropertyTarget idle{&camera, false};
  Bytes out(40, 0xEE);
  // Reads succeed silently without touching anything.
  EXPECT_EQ(get_face_auth_mode(idle, out.data()), HR_OK);
  EXPECT_EQ(get_llc(idle, out.data()), HR_OK);
  EXPECT_EQ(out, Bytes(40, 0xEE));
  EXPECT_TRUE(log.lines().empty());
  // Writes refuse.
  EXPECT_EQ(set_face_auth_mode(idle, 257), hr(0x8007139F));
  EXPECT_EQ(set_llc(idle, 4865), hr(0x8007139F));
  EXPECT_EQ(log.count("E: Not valid state"), 2);
  EXPECT_TRUE(camera.get_ids.empty());
  EXPECT_TRUE(camera.sets.empty());
}

TEST_F(ExtendedProperties, ANullOutputIsAnInvalidArgument) {
  EXPECT_EQ(get_face_auth_mode(target(), nullptr), HR_INVALIDARG);
  EXPECT_EQ(get_llc(target(), nullptr), HR_INVALIDARG);
  EXPECT_EQ(log.lines(), (std::vector<std::string>{"D: get_face_auth: NULL pointer arg",
                                                   "D: get_llc: NULL pointer arg"}));
  EXPECT_TRUE(camera.get_ids.empty());
}

TEST_F(ExtendedProperties, StatusesOtherThanSuccessFail) {
  camera.value = kFaceAuthReply;
  camera.get_status = platform::GetPropertyStatus::DeviceNotAvailable;
  Bytes out(40, 0xEE);
  EXPECT_EQ(get_face_auth_mode(target(), out.data()), HR_FAIL);
  EXPECT_EQ(out, Bytes(40, 0xEE));
  EXPECT_EQ(log.lines(), std::vector<std::string>{"I: Get Face Auth: DeviceNotAvailable"});

  // A failed read ends the set after the fields were logged (zeros: nothing was read).
  log.clear();
  EXPECT_EQ(set_face_auth_mode(target(), 257), HR_FAIL);
  EXPECT_TRUE(camera.sets.empty());
  EXPECT_TRUE(log.contains("I: capability: 0x0"));
  EXPECT_TRUE(log.contains("I: payload: 0x0"));

  camera.get_status = platform::GetPropertyStatus::Success;
  camera.set_status = platform::SetPropertyStatus::NotInControl;
  log.clear();
  EXPECT_EQ(set_face_auth_mode(target(), 257), HR_FAIL);
  EXPECT_EQ(log.lines().back(), "I: Sett Face Auth: NotInControl");

  camera.value = kLlcReply;
  log.clear();
  EXPECT_EQ(set_llc(target(), 4866), HR_FAIL);
  EXPECT_EQ(log.lines().back(), "I: Set llc: NotInControl");
}

TEST_F(ExtendedProperties, PlatformExceptionsAbortAndAreLogged) {
  camera.get_throws = L"The device is gone.";
  Bytes out(40, 0xEE);
  EXPECT_EQ(get_face_auth_mode(target(), out.data()), HR_ABORT);
  EXPECT_EQ(get_llc(target(), out.data()), HR_ABORT);
  EXPECT_EQ(out, Bytes(40, 0xEE));
  EXPECT_EQ(log.lines(), (std::vector<std::string>{"E: Get Face Auth Excpetion: The device is gone.",
                                                   "E: Get llc Excpetion: The device is gone."}));

  camera.get_throws.reset();
  camera.set_throws = L"Lost.";
  camera.value = kFaceAuthReply;
  EXPECT_EQ(set_face_auth_mode(target(), 257), HR_ABORT);
  EXPECT_EQ(log.lines().back(), "E: Set Face Auth Excpetion: Lost.");
  camera.value = kLlcReply;
  EXPECT_EQ(set_llc(target(), 4865), HR_ABORT);
  EXPECT_EQ(log.lines().back(), "E: Set llc Excpetion: Lost.");
}

TEST_F(ExtendedProperties, LlcGetSendsTheWholeStructureAsIdentifier) {
  camera.value = kLlcReply;
  Bytes out(40, 0xEE);
  EXPECT_EQ(get_llc(target(), out.data()), HR_OK);
  ASSERT_EQ(camera.get_ids.size(), 1u);
  EXPECT_EQ(camera.get_ids[0], kLlcGetId);
  EXPECT_EQ(out, kLlcReply);
  EXPECT_EQ(log.lines().front(), "I: Get llc: Success");
}

TEST_F(ExtendedProperties, LlcSetSendsTheRewrittenStructureAsIdentifierAndValue) {
  camera.value = kLlcReply;
  EXPECT_EQ(set_llc(target(), 4865), HR_OK);
  const Bytes on = {CAMERA_CONTROL, 0x13, 0, 0, 0, 0x02, 0, 0, 0,
                    0x01, 0, 0, 0, 0x02, 0, 0, 0, 0x03, 0, 0, 0, 0xAA, 0, 0, 0};
  ASSERT_EQ(camera.sets.size(), 1u);
  EXPECT_EQ(camera.sets[0].id, on);
  EXPECT_EQ(camera.sets[0].value, on);
  EXPECT_TRUE(log.contains("I: payload: 0x0"));
  EXPECT_EQ(log.lines().back(), "I: Set llc: Success");

  Bytes was_on = kLlcReply;
  was_on[24] = 0x01;
  camera.value = was_on;
  EXPECT_EQ(set_llc(target(), 4866), HR_OK);
  Bytes off = on;
  off[24] = 0x00;
  EXPECT_EQ(camera.sets[1].value, off);
  EXPECT_TRUE(log.contains("I: payload: 0x1"));
}

}  // namespace
}  // namespace vexcap::controls
