// IKsControl::KsProperty: parses KSPROPERTY / KSP_NODE requests and answers them as the camera's
// driver would, recording each request.
//
//   request:  Set GUID (16 bytes), Id u32, Flags u32 [, NodeId u32, Reserved u32 when Flags has
//             KSPROPERTY_TYPE_TOPOLOGY]
//   processing node, VIDEOPROCAMP id 9: KSPROPERTY_VIDEOPROCAMP_NODE_S (48 bytes): KSP_NODE,
//             Value i32 @32, Flags u32 @36, Capabilities u32 @40
//   VIDEOCONTROL id 3 (no node): KSPROPERTY_VIDEOCONTROL_MODE_S (32 bytes): KSPROPERTY,
//             StreamIndex u32 @24, Mode i32 @28
//   extension units: control 0 returns the unit's descriptor; the primary unit answers 14 (LED: flag, power),
//             15 (RGB status byte), 18 (one byte, set); the alternative unit answers 20 (RGB status byte).
#include <algorithm>
#include <cstring>

#include "platform/virtual/kernel_streaming.h"
#include "platform/virtual/known_ids.h"
#include "platform/virtual/le_bytes.h"

namespace vexcap::virtual_camera {

namespace {

struct Answer {
  hresult result = HR_OK;
  std::uint32_t returned = 0;
};

struct Request {
  platform::Guid set;
  std::uint32_t id;
  std::uint32_t flags;
  std::optional<std::uint32_t> node;
  bool get() const { return (flags & ids::kPropGet) != 0; }
  bool set_op() const { return (flags & ids::kPropSet) != 0; }
};

Answer processing_unit(KsDeviceModel& ks, const Request& r, const std::uint8_t* request, std::uint8_t* data,
                       std::uint32_t size) {
  if (r.set != ids::kVideoProcAmp) return {HR_SET_NOT_FOUND};
  if (r.id != ids::kProcAmpGain) return {HR_NOT_FOUND};
  if (size < 48) return {ids::kInsufficientBuffer};
  if (r.get()) {
    if (data != request) std::memcpy(data, request, 32);
    le::put_u32(data + 32, std::uint32_t(ks.gain));
    le::put_u32(data + 36, ks.gain_flags);
    le::put_u32(data + 40, ks.gain_capabilities);
    return {HR_OK, 48};
  }
  auto value = std::int32_t(le::u32(data + 32));
  if (value < ks.gain_min || value > ks.gain_max) return {HR_INVALIDARG};
  ks.gain = value;
  ks.gain_flags = le::u32(data + 36);
  return {HR_OK, 0};
}

Answer extension_unit(KsDeviceModel& ks, const KsNodeModel& node, const Request& r, std::uint8_t* data,
                      std::uint32_t size) {
  if (!node.unit || r.set != *node.unit) return {HR_SET_NOT_FOUND};
  auto read_bytes = [&](std::initializer_list<std::uint8_t> bytes) -> Answer {
    if (size < bytes.size()) return {ids::kMoreData, std::uint32_t(bytes.size())};
    std::copy(bytes.begin(), bytes.end(), data);
    return {HR_OK, std::uint32_t(bytes.size())};
  };
  bool primary = r.set == ids::kPrimaryUnit, alternative = r.set == ids::kAlternativeUnit;
  if (r.id == ids::kUnitInfo && r.get()) {
    if (size < node.unit_info.size()) return {ids::kMoreData, std::uint32_t(node.unit_info.size())};
    std::copy(node.unit_info.begin(), node.unit_info.end(), data);
    return {HR_OK, std::uint32_t(node.unit_info.size())};
  }
  if (primary && r.id == ids::kPrimaryLedPower) {
    if (r.get()) return read_bytes({ks.led_flag, ks.led_power});
    if (size < 2) return {ids::kInsufficientBuffer};
    ks.led_flag = data[0];
    ks.led_power = data[1];
    return {HR_OK, 0};
  }
  if (primary && r.id == ids::kPrimaryRgbStatus && r.get()) return read_bytes({ks.rgb_status});
  if (alternative && r.id == ids::kAlternativeRgbStatus && r.get()) return read_bytes({ks.rgb_status});
  if (primary && r.id == ids::kPrimaryControl18 && r.set_op()) {
    if (size < 1) return {ids::kInsufficientBuffer};
    ks.control18 = data[0];
    return {HR_OK, 0};
  }
  return {HR_NOT_FOUND};
}

Answer video_control(KsDeviceModel& ks, const Request& r, const std::uint8_t* request, std::uint8_t* data,
                     std::uint32_t size) {
  if (r.set != ids::kVideoControl) return {HR_SET_NOT_FOUND};
  if (r.id != ids::kVideoControlMode || !r.get()) return {HR_NOT_FOUND};
  if (size < 32) return {ids::kInsufficientBuffer};
  if (data != request) std::memcpy(data, request, 28);
  le::put_u32(data + 28, std::uint32_t(ks.video_control_mode));
  return {HR_OK, 32};
}

Answer answer(KsDeviceModel& ks, const Request& r, const std::uint8_t* request, std::uint8_t* data,
              std::uint32_t size) {
  for (const KsFault& fault : ks.faults)
    if (fault.set == r.set && fault.id == r.id) return {fault.error};
  if (size > 0 && data == nullptr) return {HR_POINTER};
  if (!r.node) return video_control(ks, r, request, data, size);
  if (*r.node >= ks.nodes.size()) return {HR_NOT_FOUND};
  const KsNodeModel& node = ks.nodes[*r.node];
  if (node.type == ids::kNodeVideoProcessing) return processing_unit(ks, r, request, data, size);
  if (node.type == ids::kNodeDevSpecific) return extension_unit(ks, node, r, data, size);
  return {HR_SET_NOT_FOUND};
}

}  // namespace

hresult ks_property(World& world, GroupState& group, const std::wstring& link, const std::uint8_t* request,
                    std::uint32_t request_size, std::uint8_t* data, std::uint32_t data_size,
                    std::uint32_t* bytes_returned) {
  if (bytes_returned) *bytes_returned = 0;
  if (!request || request_size < 24) return HR_INVALIDARG;
  if (hresult result = world.enter_call(PlatformCall::KsProperty); failed(result)) return result;

  Request r{le::guid(request), le::u32(request + 16), le::u32(request + 20), std::nullopt};
  bool topology = (r.flags & ids::kPropTopology) != 0;
  if (topology && request_size >= 32) r.node = le::u32(request + 24);

  std::lock_guard lock(world.mutex());
  // Recorded only while a test asks for it; the data buffer is kept as it came in.
  std::optional<KsRequest> record;
  world.record([&](Records&) {
    record.emplace();
    record->symbolic_link = link;
    record->set = r.set;
    record->id = r.id;
    record->flags = r.flags;
    record->node_id = r.node;
    record->request.assign(request, request + request_size);
    if (data) record->data_in.assign(data, data + data_size);
    record->data_size = data_size;
  });
  Answer a;
  if (group.removed || !group.model.enabled)
    a = {ids::kDeviceInvalidated};
  else if (topology && request_size < 32)
    a = {HR_INVALIDARG};
  else if (r.get() == r.set_op())
    a = {HR_INVALIDARG};  // exactly one of GET and SET
  else
    a = answer(group.model.ks, r, request, data, data_size);
  if (bytes_returned) *bytes_returned = a.returned;
  if (record) {
    record->result = a.result;
    world.record([&](Records& records) { records.ks_requests.push_back(std::move(*record)); });
  }
  return a.result;
}

}  // namespace vexcap::virtual_camera
