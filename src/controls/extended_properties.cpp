#include "controls/extended_properties.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "controls/ks_bytes.h"
#include "controls/ks_ids.h"
#include "controls/property_status_names.h"
#include "log/log.h"

namespace vexcap::controls {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kFaceAuthModeId = 35;  // KSPROPERTY_CAMERACONTROL_EXTENDED_FACEAUTH_MODE
constexpr std::uint32_t kLlcId = 19;           // KSPROPERTY_CAMERACONTROL_AUTO_EXPOSURE_PRIORITY

struct GetTexts {
  const char* null_argument;
  const char* status;
  const char* exception;
};

struct SetTexts {
  const char* status;
  const char* exception;
};

constexpr GetTexts kGetFaceAuth{"get_face_auth: NULL pointer arg", "Get Face Auth: %ws",
                                "Get Face Auth Excpetion: %ws"};
constexpr GetTexts kGetLlc{"get_llc: NULL pointer arg", "Get llc: %ws", "Get llc Excpetion: %ws"};
constexpr SetTexts kSetFaceAuth{"Sett Face Auth: %ws", "Set Face Auth Excpetion: %ws"};
constexpr SetTexts kSetLlc{"Set llc: %ws", "Set llc Excpetion: %ws"};

Bytes face_auth_identifier(std::uint32_t flags) {
  auto bytes = ks::property(ids::kExtendedCameraControl, kFaceAuthModeId, flags);
  return Bytes(bytes.begin(), bytes.end());
}

// The LLC identifier is the whole 40-byte control structure.
Bytes llc_identifier() {
  Bytes bytes(kExtendedPropertySize, 0);
  ks::write_property(bytes.data(), ids::kCameraControl, kLlcId, ks::kTypeGet);
  return bytes;
}

// A value that is no byte array fails the platform's interface query, as on the device.
platform::PlatformError no_byte_array() {
  return platform::PlatformError(HR_NOINTERFACE, L"No such interface supported");
}

hresult get_property(const PropertyTarget& target, const Bytes& identifier, const GetTexts& texts,
                     std::uint8_t* out) {
  if (out == nullptr) {
    VXLOG('D', texts.null_argument);
    return HR_INVALIDARG;
  }
  // A client that is not initialized answers success without reading: callers rely on it.
  if (!target.initialized) return HR_OK;
  if (target.controller == nullptr) return HR_POINTER;

  hresult result = HR_OK;
  try {
    const platform::GetPropertyResult reply = target.controller->get_property_by_extended_id(
        identifier, static_cast<std::uint32_t>(kExtendedPropertySize));
    VXLOG('I', texts.status, status_name(reply.status).c_str());
    if (reply.status != platform::GetPropertyStatus::Success) {
      result = HR_FAIL;
    } else {
      if (!reply.value) throw no_byte_array();
      VXLOG('I', "Value: %ws", reply.value->type_name.c_str());
      if (!reply.value->bytes) throw no_byte_array();
      const Bytes& bytes = *reply.value->bytes;
      VXLOG('I', "sizeofValue: %u, sizeof_ret_data= %u", static_cast<unsigned>(bytes.size()),
            static_cast<unsigned>(kExtendedPropertySize));
      if (bytes.size() == kExtendedPropertySize)
        std::copy(bytes.begin(), bytes.end(), out);
      else
        result = HR_BOUNDS;
    }
  } catch (const platform::PlatformError& error) {
    result = HR_ABORT;
    VXLOG('E', texts.exception, error.message().c_str());
  }
  return result;
}

hresult set_property(const PropertyTarget& target, const Bytes& identifier, const Bytes& value,
                     const SetTexts& texts) {
  hresult result = HR_OK;
  try {
    const platform::SetPropertyStatus status =
        target.controller->set_property_by_extended_id(identifier, value);
    if (status != platform::SetPropertyStatus::Success) result = HR_FAIL;
    VXLOG('I', texts.status, status_name(status).c_str());
  } catch (const platform::PlatformError& error) {
    result = HR_ABORT;
    VXLOG('E', texts.exception, error.message().c_str());
  }
  return result;
}

std::optional<std::uint64_t> face_auth_flag(std::uint32_t host_code) {
  switch (host_code) {
    case 0x101: return 0x1;  // disabled
    case 0x102: return 0x2;  // alternative frame illumination
    case 0x104: return 0x4;  // background subtraction
    default: return std::nullopt;
  }
}

unsigned low32(std::uint64_t value) { return static_cast<unsigned>(value & 0xFFFFFFFFu); }

// What setting either property does: refused on an uninitialized client; else the current
// bytes are read and shown in the log, and a successful read is changed and written back.
template <typename Read, typename Show, typename Write>
hresult read_modify_write(const PropertyTarget& target, Read read, Show show, Write write) {
  if (!target.initialized) {
    VXLOG('E', "Not valid state");
    return HR_INVALID_STATE;
  }
  Bytes buffer(kExtendedPropertySize, 0);
  const hresult got = read(target, buffer.data());
  show(buffer.data());
  if (failed(got)) return got;
  return write(buffer);
}

}  // namespace

hresult get_face_auth_mode(const PropertyTarget& target, std::uint8_t* buffer) {
  return get_property(target, face_auth_identifier(ks::kTypeGet), kGetFaceAuth, buffer);
}

hresult get_llc(const PropertyTarget& target, std::uint8_t* buffer) {
  return get_property(target, llc_identifier(), kGetLlc, buffer);
}

hresult set_face_auth_mode(const PropertyTarget& target, std::uint32_t host_code) {
  using namespace face_auth;
  const auto show = [](const std::uint8_t* b) {
    VXLOG('I', "header version: 0x%x", ks::read_u32(b + kVersionOffset));
    VXLOG('I', "flags: 0x%x", low32(ks::read_u64(b + kFlagsOffset)));
    VXLOG('I', "result: 0x%x", ks::read_u32(b + kResultOffset));
    VXLOG('I', "size: 0x%x", ks::read_u32(b + kSizeOffset));
    VXLOG('I', "capability: 0x%x", low32(ks::read_u64(b + kCapabilityOffset)));
    VXLOG('I', "pinID: 0x%x", ks::read_u32(b + kPinIdOffset));
    VXLOG('I', "payload: 0x%x", low32(ks::read_u64(b + kPayloadOffset)));
  };
  return read_modify_write(target, get_face_auth_mode, show, [&](Bytes& buffer) {
    const std::optional<std::uint64_t> flag = face_auth_flag(host_code);
    if (!flag) return HR_INVALIDARG;
    if ((ks::read_u64(buffer.data() + kCapabilityOffset) & *flag) == 0) {
      VXLOG('I', "FaceAuthMode: Capability 0x%x not available", low32(*flag));
      return HR_NOTIMPL;
    }
    ks::write_u64(buffer.data() + kFlagsOffset, *flag);
    ks::write_u64(buffer.data() + kPayloadOffset, *flag);
    return set_property(target, face_auth_identifier(ks::kTypeSet), buffer, kSetFaceAuth);
  });
}

hresult set_llc(const PropertyTarget& target, std::uint32_t host_code) {
  const auto show = [](const std::uint8_t* b) {
    VXLOG('I', "payload: 0x%x", ks::read_u32(b + llc::kValueOffset));
  };
  return read_modify_write(target, get_llc, show, [&](Bytes& buffer) {
    std::int32_t value = 0;
    if (host_code == 0x1301)
      value = 1;
    else if (host_code == 0x1302)
      value = 0;
    else
      return HR_INVALIDARG;
    ks::write_property(buffer.data(), ids::kCameraControl, kLlcId, ks::kTypeSet);
    ks::write_i32(buffer.data() + llc::kValueOffset, value);
    return set_property(target, buffer, buffer, kSetLlc);
  });
}

}  // namespace vexcap::controls
