// GetPropertyByExtendedId / SetPropertyByExtendedId: the face-auth mode extended camera control
// and the camera-control property used for low-light compensation (LLC).
#include <cstring>

#include "platform/virtual/controls.h"
#include "platform/virtual/known_ids.h"
#include "platform/virtual/le_bytes.h"

namespace vexcap::virtual_camera {

using platform::GetPropertyStatus;
using platform::SetPropertyStatus;

namespace {

constexpr std::size_t kPropertySize = 40;

enum class Property { Unknown, FaceAuth, Llc };

Property identify(const std::vector<std::uint8_t>& id) {
  if (id.size() < 24) return Property::Unknown;
  platform::Guid set = le::guid(id.data());
  std::uint32_t number = le::u32(id.data() + 16);
  if (set == ids::kExtendedCameraControl && number == ids::kExtendedFaceAuthMode) return Property::FaceAuth;
  if (set == ids::kCameraControl && number == ids::kCameraControlLlc) return Property::Llc;
  return Property::Unknown;
}

// KSCAMERA_EXTENDEDPROP_HEADER followed by KSCAMERA_EXTENDEDPROP_VALUE.
std::vector<std::uint8_t> face_auth_bytes(const FaceAuthModel& s) {
  std::vector<std::uint8_t> b(kPropertySize, 0);
  le::put_u32(&b[0], s.version);
  le::put_u32(&b[4], s.pin_id);
  le::put_u32(&b[8], s.size);
  le::put_u32(&b[12], s.result);
  le::put_u64(&b[16], s.flags);
  le::put_u64(&b[24], s.capability);
  le::put_u64(&b[32], s.payload);
  return b;
}

// KSPROPERTY_CAMERACONTROL_S padded to 40 bytes; the KSPROPERTY header echoes the request.
std::vector<std::uint8_t> llc_bytes(const LlcModel& s, const std::vector<std::uint8_t>& id) {
  std::vector<std::uint8_t> b(kPropertySize, 0);
  std::memcpy(b.data(), id.data(), 24);
  le::put_u32(&b[24], s.value);
  le::put_u32(&b[28], s.flags);
  le::put_u32(&b[32], s.capabilities);
  return b;
}

platform::GetPropertyResult answer(std::vector<std::uint8_t> bytes, const PropertyBehaviour& behaviour,
                                   std::optional<std::uint32_t> max_size) {
  if (behaviour.get_status != GetPropertyStatus::Success) return {behaviour.get_status, std::nullopt};
  if (behaviour.answer_length) bytes.resize(*behaviour.answer_length, 0);
  if (max_size && *max_size < bytes.size()) return {GetPropertyStatus::MaxPropertyValueSizeTooSmall, std::nullopt};
  if (behaviour.answer_not_bytes)
    return {GetPropertyStatus::Success, platform::PropertyValue{L"Windows.Foundation.IReference`1<Int32>", std::nullopt}};
  return {GetPropertyStatus::Success,
          platform::PropertyValue{L"Windows.Foundation.IReferenceArray`1<UInt8>", std::move(bytes)}};
}

bool single_flag(std::uint64_t flag) { return flag != 0 && (flag & (flag - 1)) == 0; }

}  // namespace

platform::GetPropertyResult VirtualSourceController::get_property_by_extended_id(
    const std::vector<std::uint8_t>& id, std::optional<std::uint32_t> max_size) {
  world_->enter_call_or_throw(PlatformCall::GetProperty);
  std::lock_guard lock(world_->mutex());
  require_connected();
  platform::GetPropertyResult result = answer_get(id, max_size);
  world_->record([&](Records& records) {
    records.property_requests.push_back(
        {source().id.value_or(L""), false, id, {}, max_size, static_cast<std::int32_t>(result.status)});
  });
  return result;
}

platform::GetPropertyResult VirtualSourceController::answer_get(const std::vector<std::uint8_t>& id,
                                                                std::optional<std::uint32_t> max_size) {
  SourceModel& s = source();
  switch (identify(id)) {
    case Property::FaceAuth:
      if (!s.face_auth) break;
      return answer(face_auth_bytes(*s.face_auth), s.face_auth->behaviour, max_size);
    case Property::Llc:
      if (!s.llc || id.size() < 24) break;
      return answer(llc_bytes(*s.llc, id), s.llc->behaviour, max_size);
    case Property::Unknown:
      break;
  }
  return {GetPropertyStatus::NotSupported, std::nullopt};
}

platform::SetPropertyStatus VirtualSourceController::set_property_by_extended_id(
    const std::vector<std::uint8_t>& id, const std::vector<std::uint8_t>& value) {
  world_->enter_call_or_throw(PlatformCall::SetProperty);
  std::lock_guard lock(world_->mutex());
  require_connected();
  SetPropertyStatus status = apply_set(id, value);
  world_->record([&](Records& records) {
    records.property_requests.push_back(
        {source().id.value_or(L""), true, id, value, std::nullopt, static_cast<std::int32_t>(status)});
  });
  return status;
}

platform::SetPropertyStatus VirtualSourceController::apply_set(const std::vector<std::uint8_t>& id,
                                                               const std::vector<std::uint8_t>& value) {
  SourceModel& s = source();
  Property property = identify(id);
  if (property == Property::FaceAuth && s.face_auth) {
    FaceAuthModel& f = *s.face_auth;
    if (!exclusive_) return SetPropertyStatus::NotInControl;
    if (f.behaviour.set_status != SetPropertyStatus::Success) return f.behaviour.set_status;
    if (value.size() != kPropertySize) return SetPropertyStatus::InvalidValue;
    std::uint64_t flags = le::u64(&value[16]);
    if (!single_flag(flags) || (flags & f.capability) == 0) return SetPropertyStatus::InvalidValue;
    f.flags = flags;
    f.payload = le::u64(&value[32]);
    return SetPropertyStatus::Success;
  }
  if (property == Property::Llc && s.llc) {
    LlcModel& l = *s.llc;
    if (!exclusive_) return SetPropertyStatus::NotInControl;
    if (l.behaviour.set_status != SetPropertyStatus::Success) return l.behaviour.set_status;
    if (value.size() != kPropertySize) return SetPropertyStatus::InvalidValue;
    l.value = le::u32(&value[24]);
    return SetPropertyStatus::Success;
  }
  return SetPropertyStatus::NotSupported;
}

}  // namespace vexcap::virtual_camera
