// What a virtual camera system consists of: source groups, their sources and formats, the
// sources' controls and extended properties, and the kernel-streaming device behind a group.
// Tests and host programs build a Scenario and hand it to use_scenario (virtual_camera.h); the
// same structures hold the live state, so edits made while capturing are seen at once.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/port.h"
#include "platform/virtual/camera_api.h"

namespace vexcap::virtual_camera {

struct FormatModel {
  std::wstring major_type = L"Video";
  std::wstring subtype = L"NV12";  // "GRAY8", "L8", "L16", "NV12", "YUY2", "RGB24", "ARGB32", ...
  std::uint32_t width = 640;
  std::uint32_t height = 480;
  std::uint32_t frame_rate_numerator = 30;
  std::uint32_t frame_rate_denominator = 1;
  std::optional<std::int32_t> rotation;  // MF_MT_VIDEO_ROTATION; absent when nullopt
  friend bool operator==(const FormatModel&, const FormatModel&) = default;
};

// What a frame's capture-metadata chain yields.
enum class IlluminationMetadata {
  Alternating,      // illuminated on even frame numbers, dark on odd ones
  AlwaysOn,
  AlwaysOff,
  AttributeMissing, // capture metadata present, illumination attribute not in it
  MetadataMissing,  // the sample carries no capture metadata
  SampleUnreachable,  // GetService for the wrapped sample fails
  ServiceUnavailable  // the frame is no IMFGetService
};

struct ExposureModel {
  bool supported = true;
  bool auto_enabled = false;
  std::int64_t min = 100;  // 100 ns units
  std::int64_t max = 330000;
  std::int64_t step = 100;
  std::int64_t value = 10000;
};

struct IsoSpeedModel {
  bool supported = true;
  std::uint32_t min = 100;
  std::uint32_t max = 1600;
  std::uint32_t value = 100;
};

struct TorchModel {
  bool supported = true;
  bool power_supported = true;
  bool enabled = false;
  float power_percent = 0.0f;
};

struct InfraredTorchModel {
  bool supported = true;
  std::vector<platform::InfraredTorchMode> modes = {platform::InfraredTorchMode::Off,
                                                    platform::InfraredTorchMode::On};
  platform::InfraredTorchMode mode = platform::InfraredTorchMode::Off;
  std::int32_t min_power = 0;
  std::int32_t max_power = 100;
  std::int32_t power_step = 1;
  std::int32_t power = 0;
};

// How an extended property answers, besides its value.
struct PropertyBehaviour {
  platform::GetPropertyStatus get_status = platform::GetPropertyStatus::Success;
  platform::SetPropertyStatus set_status = platform::SetPropertyStatus::Success;
  std::optional<std::uint32_t> answer_length;  // cut or zero-pad the 40-byte answer to this
  bool answer_not_bytes = false;               // the value is no byte array
};

// KSCAMERA_EXTENDEDPROP_HEADER + KSCAMERA_EXTENDEDPROP_VALUE of the face-auth mode.
struct FaceAuthModel {
  std::uint32_t version = 1;
  std::uint32_t pin_id = 0xFFFFFFFF;  // KSCAMERA_EXTENDEDPROP_FILTERSCOPE
  std::uint32_t size = 40;
  std::uint32_t result = 0;
  std::uint64_t flags = 0x1;
  std::uint64_t capability = 0x1 | 0x2 | 0x4;
  std::uint64_t payload = 0x1;
  PropertyBehaviour behaviour;
};

// KSPROPERTY_CAMERACONTROL_S of the low-light compensation (auto exposure priority).
struct LlcModel {
  std::uint32_t value = 0;
  std::uint32_t flags = 0x1;         // KSPROPERTY_CAMERACONTROL_FLAGS_AUTO
  std::uint32_t capabilities = 0x3;  // auto | manual
  PropertyBehaviour behaviour;
};

// RGB24 frames of a source that do not carry the pattern or do not come whole.
struct Rgb24Model {
  std::optional<std::array<std::uint8_t, 3>> fill;  // every pixel this R, G, B
  std::uint32_t missing_bytes = 0;  // the buffer ends this many bytes short (a faulty driver)
};

struct DeviceInfoModel {
  std::optional<std::wstring> id;
  std::optional<std::wstring> name;
  bool is_default = false;
  bool is_enabled = true;
  std::optional<platform::Pairing> pairing = platform::Pairing{};
  std::optional<platform::Panel> enclosure_panel;
};

struct SourceModel {
  std::optional<std::wstring> id;  // may carry VID/PID text, e.g. "...VID_F00D&PID_CAFE..."
  platform::SourceKind kind = platform::SourceKind::Color;
  platform::StreamType stream_type = platform::StreamType::VideoRecord;
  std::optional<DeviceInfoModel> device_information = DeviceInfoModel{};
  std::vector<FormatModel> formats;
  std::optional<std::size_t> current_format = 0;  // index into formats; nullopt: none
  IlluminationMetadata illumination = IlluminationMetadata::AttributeMissing;
  std::uint32_t stride_padding = 0;  // extra bytes at the end of every bitmap row
  // NV12 bitmaps lay their luma plane out over the height rounded up to a multiple of this
  // (0 or 1: the height itself): 1080 rows in 1088 with 16, as many drivers do. The chroma
  // plane then starts past those rows; the plane descriptions say where.
  std::uint32_t nv12_plane_rows_alignment = 0;
  // A reader that asks this grey or depth source for "NV12" starts with
  // ReaderStartStatus::OutputFormatNotSupported instead of delivering the grey layout.
  bool refuses_nv12 = false;
  Rgb24Model rgb24;
  std::optional<ExposureModel> exposure;
  std::optional<IsoSpeedModel> iso_speed;
  std::optional<TorchModel> torch;
  std::optional<InfraredTorchModel> infrared_torch;
  std::optional<FaceAuthModel> face_auth;
  std::optional<LlcModel> llc;
  // Reported by FrameSource::exclusive_control_status in place of the modelled one.
  std::optional<std::int32_t> exclusive_status_override;
  platform::ReaderStartStatus reader_start_status = platform::ReaderStartStatus::Success;
};

// One node of the kernel-streaming topology.
struct KsNodeModel {
  platform::Guid type;
  // Device-specific nodes: the extension unit's property set this node answers, and the
  // descriptor bytes its control 0 returns.
  std::optional<platform::Guid> unit;
  std::vector<std::uint8_t> unit_info;
};

struct KsInterfaceModel {
  platform::Guid category;
  std::wstring symbolic_link;
};

// A driver failure on demand: every request for (set, id) answers `error`.
struct KsFault {
  platform::Guid set;
  std::uint32_t id = 0;
  hresult error = HR_FAIL;
};

// The Media Foundation device source behind a group and the state its driver keeps.
struct KsDeviceModel {
  std::vector<KsInterfaceModel> interfaces;  // one per category the device registers
  std::vector<KsNodeModel> nodes;
  hresult ks_control_result = HR_OK;  // query for IKsControl
  hresult topology_result = HR_OK;    // query for IKsTopologyInfo
  std::int32_t gain = 64;
  std::int32_t gain_min = 0;
  std::int32_t gain_max = 255;
  std::uint32_t gain_flags = 0x2;         // KSPROPERTY_VIDEOPROCAMP_FLAGS_MANUAL
  std::uint32_t gain_capabilities = 0x3;  // auto | manual
  std::int32_t video_control_mode = 0;
  std::uint8_t led_flag = 0;    // primary unit control 14, byte 0
  std::uint8_t led_power = 0;   // primary unit control 14, byte 1
  std::uint8_t rgb_status = 0;  // primary unit control 15 / alternative unit control 20
  std::uint8_t control18 = 0;
  std::vector<KsFault> faults;
};

struct GroupModel {
  std::optional<std::wstring> id;  // "\\?\USB#...", "\\?\SWD#..." or neither
  std::optional<std::wstring> display_name;
  bool enabled = true;
  bool null_in_enumeration = false;  // FindAllAsync hands out a null entry in its place
  bool source_infos_missing = false;
  std::vector<SourceModel> sources;
  KsDeviceModel ks;
};

// How frame time passes.
enum class ClockMode {
  Real,    // frames come at the format's rate in real time
  Manual,  // frames come only when advance_time moves the clock over their due time
};

struct Scenario {
  std::vector<GroupModel> groups;
  ClockMode clock = ClockMode::Real;
};

// An extension-unit descriptor of `total` bytes (at least 8) carrying the unit's 8-byte
// signature (the first 8 bytes of its GUID as stored) at `offset`; nullopt: no signature.
VEXCAP_VIRTUAL_CAMERA_API std::vector<std::uint8_t> unit_descriptor(const platform::Guid& unit, std::optional<std::size_t> offset,
                                          std::size_t total = 24);

// The typical face-authentication USB camera (VID_F00D, PID_CAFE): see default_scenario.cpp.
VEXCAP_VIRTUAL_CAMERA_API Scenario default_scenario();

}  // namespace vexcap::virtual_camera
