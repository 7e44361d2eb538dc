#include <cstring>

#include "platform/virtual/known_ids.h"
#include "platform/virtual/le_bytes.h"
#include "platform/virtual/scenario.h"

namespace vexcap::virtual_camera {

using platform::SourceKind;
using platform::StreamType;

std::vector<std::uint8_t> unit_descriptor(const platform::Guid& unit, std::optional<std::size_t> offset,
                                          std::size_t total) {
  std::vector<std::uint8_t> bytes(total < 8 ? 8 : total, 0);
  // Filler that never spells a signature: a UVC-like header followed by a counting pattern.
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = std::uint8_t(0xA0 + i);
  if (offset && *offset + 8 <= bytes.size()) {
    std::uint8_t guid_bytes[16];
    le::put_guid(guid_bytes, unit);
    std::memcpy(bytes.data() + *offset, guid_bytes, 8);
  }
  return bytes;
}

namespace {

constexpr wchar_t kGroupId[] =
    L"\\\\?\\USB#VID_F00D&PID_CAFE&MI_00#7&1f00dcaf&0&0000#{e5323777-f976-4f5b-9b55-b94699c46e44}\\GLOBAL";
constexpr wchar_t kIrLink[] =
    L"\\\\?\\USB#VID_F00D&PID_CAFE&MI_02#7&1f00dcaf&0&0002#{24e552d7-6523-47f7-a647-d3465bf1f5ca}\\GLOBAL";
constexpr wchar_t kColorLink[] =
    L"\\\\?\\USB#VID_F00D&PID_CAFE&MI_00#7&1f00dcaf&0&0000#{e5323777-f976-4f5b-9b55-b94699c46e44}\\GLOBAL";

FormatModel format(const wchar_t* subtype, std::uint32_t width, std::uint32_t height, std::uint32_t fps) {
  FormatModel f;
  f.subtype = subtype;
  f.width = width;
  f.height = height;
  f.frame_rate_numerator = fps;
  f.frame_rate_denominator = 1;
  return f;
}

SourceModel infrared_source() {
  SourceModel s;
  s.id = L"Source#0@" + std::wstring(kIrLink);
  s.kind = SourceKind::Infrared;
  s.stream_type = StreamType::VideoRecord;
  s.device_information = DeviceInfoModel{kIrLink, L"Virtual Face Camera IR", false, true,
                                        platform::Pairing{}, platform::Panel::Front};
  s.formats = {format(L"L8", 640, 480, 30), format(L"L8", 640, 480, 15), format(L"L8", 640, 480, 60),
               format(L"GRAY8", 640, 480, 30), format(L"GRAY8", 320, 240, 60)};
  s.current_format = 0;
  s.illumination = IlluminationMetadata::Alternating;
  s.exposure = ExposureModel{};
  s.torch = TorchModel{};
  s.face_auth = FaceAuthModel{};
  s.llc = LlcModel{};
  return s;
}

SourceModel color_source() {
  SourceModel s;
  s.id = L"Source#1@" + std::wstring(kColorLink);
  s.kind = SourceKind::Color;
  s.stream_type = StreamType::VideoRecord;
  s.device_information = DeviceInfoModel{kColorLink, L"Virtual Face Camera RGB", true, true,
                                        platform::Pairing{}, platform::Panel::Front};
  for (const wchar_t* subtype : {L"NV12", L"YUY2"}) {
    s.formats.push_back(format(subtype, 640, 480, 30));
    s.formats.push_back(format(subtype, 1280, 720, 30));
    s.formats.push_back(format(subtype, 1920, 1080, 30));
  }
  s.formats.push_back(format(L"RGB24", 640, 480, 30));
  s.current_format = 0;
  // As many drivers do: NV12 planes laid out over a multiple of 16 rows (1080p in 1088).
  s.nv12_plane_rows_alignment = 16;
  s.illumination = IlluminationMetadata::AttributeMissing;
  s.exposure = ExposureModel{};
  s.iso_speed = IsoSpeedModel{};
  s.llc = LlcModel{};
  return s;
}

KsDeviceModel ks_device() {
  KsDeviceModel ks;
  ks.interfaces = {{ids::kCategorySensorCamera, kIrLink}, {ids::kCategoryVideoCamera, kColorLink}};
  // Camera terminal, processing unit, a foreign vendor unit, then the primary unit whose UVC descriptor
  // carries the GUID after its 4-byte header.
  const platform::Guid foreign{0x0F3F95DC, 0x2632, 0x4C4E, {0x92, 0xC9, 0xA0, 0x47, 0x82, 0xF4, 0x3B, 0xC8}};
  ks.nodes = {{ids::kNodeCameraTerminal, std::nullopt, {}},
              {ids::kNodeVideoProcessing, std::nullopt, {}},
              {ids::kNodeDevSpecific, foreign, unit_descriptor(foreign, 4)},
              {ids::kNodeDevSpecific, ids::kPrimaryUnit, unit_descriptor(ids::kPrimaryUnit, 4)}};
  return ks;
}

}  // namespace

Scenario default_scenario() {
  GroupModel group;
  group.id = kGroupId;
  group.display_name = L"Virtual Face Camera";
  group.sources = {infrared_source(), color_source()};
  group.ks = ks_device();
  Scenario scenario;
  scenario.groups.push_back(std::move(group));
  return scenario;
}

}  // namespace vexcap::virtual_camera
