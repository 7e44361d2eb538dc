// What the virtual camera was asked to do, kept so tests can assert what the library sent.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/port.h"
#include "platform/virtual/scenario.h"

namespace vexcap::virtual_camera {

// One IKsControl::KsProperty call, as parsed from its request bytes.
struct KsRequest {
  std::wstring symbolic_link;
  platform::Guid set;
  std::uint32_t id = 0;
  std::uint32_t flags = 0;
  std::optional<std::uint32_t> node_id;  // KSP_NODE requests only (topology flag)
  std::vector<std::uint8_t> request;     // every request byte
  std::vector<std::uint8_t> data_in;     // the data buffer as it came in
  std::uint32_t data_size = 0;
  hresult result = HR_OK;
};

// One GetPropertyByExtendedId / SetPropertyByExtendedId call.
struct PropertyRequest {
  std::wstring source_id;
  bool is_set = false;
  std::vector<std::uint8_t> id;
  std::vector<std::uint8_t> value;  // SET only
  std::optional<std::uint32_t> max_size;
  std::int32_t status = 0;  // GetPropertyStatus or SetPropertyStatus
};

enum class ControlKind {
  ExposureValue,
  ExposureAuto,
  IsoSpeed,
  TorchEnabled,
  TorchPowerPercent,
  InfraredTorchMode,
  InfraredTorchPower,
};

// A typed-control set that the camera applied.
struct AppliedControl {
  std::wstring source_id;
  ControlKind kind = ControlKind::ExposureValue;
  double value = 0;
};

struct FormatChange {
  std::wstring source_id;
  FormatModel format;
};

struct Records {
  std::vector<KsRequest> ks_requests;
  std::vector<PropertyRequest> property_requests;
  std::vector<AppliedControl> applied_controls;
  std::vector<FormatChange> format_changes;
};

}  // namespace vexcap::virtual_camera
