#include "controls/extension_unit.h"

#include <algorithm>
#include <string>
#include <vector>

#include "controls/describe_error.h"
#include "controls/device_source_attributes.h"
#include "controls/ks_bytes.h"
#include "controls/ks_ids.h"
#include "log/log.h"

namespace vexcap::controls {

namespace {

constexpr std::uint32_t kGetTopology = ks::kTypeGet | ks::kTypeTopology;
constexpr std::uint32_t kSetTopology = ks::kTypeSet | ks::kTypeTopology;

// Control numbers on the extension units' property sets.
constexpr std::uint32_t kUnitInfo = 0;  // KSPROPERTY_EXTENSION_UNIT_INFO: the unit's descriptor
constexpr std::uint32_t kLedPower = 14;
constexpr std::uint32_t kRgbStatusOnPrimary = 15;
constexpr std::uint32_t kControl18 = 18;
constexpr std::uint32_t kRgbStatusOnAlternative = 20;

constexpr std::uint32_t kGain = 9;                // KSPROPERTY_VIDEOPROCAMP_GAIN
constexpr std::uint32_t kVideoControlMode = 3;    // KSPROPERTY_VIDEOCONTROL_MODE
constexpr std::uint32_t kProcAmpFlagsManual = 2;  // KSPROPERTY_VIDEOPROCAMP_FLAGS_MANUAL

// KSPROPERTY_VIDEOPROCAMP_NODE_S: KSP_NODE, Value, Flags, Capabilities, padded to 8 bytes.
constexpr std::uint32_t kProcAmpNodeSize = 48;
constexpr std::size_t kProcAmpValue = 32;
constexpr std::size_t kProcAmpFlags = 36;
// KSPROPERTY_VIDEOCONTROL_MODE_S: KSPROPERTY, StreamIndex, Mode.
constexpr std::uint32_t kVideoControlModeSize = 32;
constexpr std::size_t kVideoControlModeMode = 28;

constexpr std::uint32_t kReplySize = 512;

// The signature is the first 8 bytes of the unit's GUID as stored.
ExtensionUnitDescriptor descriptor_for(const platform::Guid& set) {
  ExtensionUnitDescriptor unit{set, {}, 0, false};
  const auto bytes = ks::guid_bytes(set);
  std::copy_n(bytes.begin(), unit.signature.size(), unit.signature.begin());
  return unit;
}

bool holds_signature(const std::uint8_t* data, std::uint32_t size,
                     const std::array<std::uint8_t, 8>& signature) {
  if (size < signature.size()) return false;
  return std::search(data, data + size, signature.begin(), signature.end()) != data + size;
}

unsigned bits(hresult value) { return static_cast<unsigned>(value); }

void log_get_failure(hresult result, std::uint32_t returned) {
  VXLOG('E', "KsPropertyGET 0x%x. bytes returned= %lu \n", bits(result), returned);
}

void log_set_failure(hresult result, std::uint32_t returned) {
  VXLOG('E', "KsPropertySET 0x%x. bytes returned= %lu \n", bits(result), returned);
}

// Which line a failed round trip logs: none (the caller decides), the get line or the set line.
enum class FailureLine { None, Get, Set };

// One kernel-streaming round trip: the request out, the driver's bytes into `reply` (which may
// be the request's own buffer). `returned`, when given, receives the count of bytes returned.
hresult round_trip(platform::KsControl& control, const std::uint8_t* request, std::uint32_t request_size,
                   std::uint8_t* reply, std::uint32_t reply_size, FailureLine line,
                   std::uint32_t* returned = nullptr) {
  std::uint32_t count = 0;
  const hresult result = control.property(request, request_size, reply, reply_size, &count);
  if (failed(result) && line == FailureLine::Get) log_get_failure(result, count);
  if (failed(result) && line == FailureLine::Set) log_set_failure(result, count);
  if (returned != nullptr) *returned = count;
  return result;
}

}  // namespace

ExtensionUnit::ExtensionUnit()
    : primary_unit_(descriptor_for(ids::kPrimaryExtensionUnit)),
      alternative_unit_(descriptor_for(ids::kAlternativeExtensionUnit)),
      notifier_([this](std::uint32_t& status) { return read_rgb_status(status); }) {}

ExtensionUnit::~ExtensionUnit() {
  notifier_.stop();
  control_.reset();
  if (source_) source_->shutdown();
}

hresult ExtensionUnit::load(platform::Platform& platform, std::uint32_t reader_kind) {
  platform_ = &platform;
  hresult result = open_source(platform, reader_kind);
  if (failed(result)) return result;

  control_.reset();
  result = source_->query_ks_control(control_);
  if (succeeded(result) && !control_) result = HR_NOINTERFACE;
  if (failed(result)) {
    VXLOG('I', "QueryInterface IKsControl failed: %08x", bits(result));
    return result;
  }

  std::shared_ptr<platform::KsTopology> topology;
  std::uint32_t count = 0;
  result = source_->query_topology(topology);
  if (succeeded(result) && !topology) result = HR_NOINTERFACE;
  if (succeeded(result)) result = topology->node_count(&count);
  if (succeeded(result)) result = find_processing_node(*topology, count);
  if (failed(result)) {
    VXLOG('I', "Could not find the node: %08x", bits(result));
    return result;
  }

  // The second unit stands in only for cameras without the first.
  result = find_unit(*topology, count, primary_unit_);
  if (failed(result)) {
    VXLOG('I', "Could not find the node_1: %08x", bits(result));
    result = find_unit(*topology, count, alternative_unit_);
    if (failed(result)) {
      VXLOG('I', "Could not find the node_2: %08x", bits(result));
      return result;
    }
  }
  return HR_OK;
}

hresult ExtensionUnit::open_source(platform::Platform& platform, std::uint32_t reader_kind) {
  std::shared_ptr<platform::Attributes> enumeration;
  hresult result = create_enumeration_attributes(platform, reader_kind, enumeration);
  if (failed(result)) {
    VXLOG('E', "Failed creating enumeration attributes: %08x", bits(result));
    return result;
  }

  std::vector<std::shared_ptr<platform::DeviceActivate>> activates;
  result = platform.enum_device_sources(*enumeration, activates);
  if (failed(result)) {
    VXLOG('E', "MFEnumDeviceSources failed: %08x\n", bits(result));
    return result;
  }
  if (activates.empty()) {
    VXLOG('E', "No activates");
    return HR_MF_NOT_FOUND;
  }
  const std::shared_ptr<platform::DeviceActivate>& first = activates.front();
  if (!first) {
    VXLOG('E', "Unexpected null activate");
    return HR_FAIL;
  }

  std::wstring link;
  result = first->symbolic_link(link);
  if (failed(result)) {
    VXLOG('E', "Failed getting symbolic link: %08x", bits(result));
    return result;
  }
  VXLOG('I', "Got symbolic link: '%ls'", link.c_str());

  std::shared_ptr<platform::Attributes> selection;
  result = create_selection_attributes(platform, link, selection);
  if (failed(result)) {
    VXLOG('E', "Failed creating selection attributes: %08x", bits(result));
    return result;
  }

  if (source_) {
    const hresult shutdown = source_->shutdown();
    if (failed(shutdown)) VXLOG('W', "Failed shutting down existing source: %08x", bits(shutdown));
    source_.reset();
  }
  result = platform.create_device_source(*selection, source_);
  if (succeeded(result) && !source_) result = HR_POINTER;
  if (failed(result)) {
    VXLOG('E', "Failed creating device source: %08x", bits(result));
    return result;
  }
  return HR_OK;
}

// A topology without nodes counts as found and leaves the node unset.
hresult ExtensionUnit::find_processing_node(platform::KsTopology& topology, std::uint32_t count) {
  if (count == 0) return HR_OK;
  hresult result = HR_NOINTERFACE;
  for (std::uint32_t index = 0; index < count; ++index) {
    platform::Guid type;
    const hresult read = topology.node_type(index, &type);
    if (failed(read)) {
      result = read;
      continue;
    }
    if (type == ids::kNodeVideoProcessing) {
      processing_node_ = index;
      return HR_OK;
    }
  }
  return result;
}

// A unit is recognised by its signature anywhere in the descriptor bytes it returns.
hresult ExtensionUnit::find_unit(platform::KsTopology& topology, std::uint32_t count,
                                 ExtensionUnitDescriptor& unit) {
  for (std::uint32_t index = 0; index < count; ++index) {
    platform::Guid type;
    if (failed(topology.node_type(index, &type)) || type != ids::kNodeDevSpecific) continue;
    const auto request = ks::node_property(unit.property_set, kUnitInfo, kGetTopology, index);
    std::array<std::uint8_t, kReplySize> data{};
    std::uint32_t returned = 0;
    const hresult result = round_trip(*control_, request.data(), ks::kNodeSize, data.data(), kReplySize,
                                      FailureLine::None, &returned);
    if (succeeded(result) &&
        holds_signature(data.data(), std::min(returned, kReplySize), unit.signature)) {
      unit.node_id = index;
      unit.found = true;
      return HR_OK;
    }
  }
  return HR_MF_NOT_FOUND;
}

hresult ExtensionUnit::read_unit_control(const ExtensionUnitDescriptor& unit,
                                         std::uint32_t control_id,
                                         std::array<std::uint8_t, 512>& data,
                                         std::uint32_t& returned) {
  const std::shared_ptr<platform::KsControl> control = control_;
  const auto request = ks::node_property(unit.property_set, control_id, kGetTopology, unit.node_id);
  return round_trip(*control, request.data(), ks::kNodeSize, data.data(), kReplySize, FailureLine::None,
                    &returned);
}

hresult ExtensionUnit::write_unit_control(const ExtensionUnitDescriptor& unit,
                                          std::uint32_t control_id, std::uint8_t* data,
                                          std::uint32_t size) {
  const std::shared_ptr<platform::KsControl> control = control_;
  const auto request = ks::node_property(unit.property_set, control_id, kSetTopology, unit.node_id);
  return round_trip(*control, request.data(), ks::kNodeSize, data, size, FailureLine::Set);
}

hresult ExtensionUnit::read_gain(std::uint32_t& gain) {
  const std::shared_ptr<platform::KsControl> control = control_;
  if (!control) return HR_FAIL;
  std::array<std::uint8_t, kProcAmpNodeSize> buffer{};
  ks::write_node_property(buffer.data(), ids::kVideoProcAmp, kGain, kGetTopology, processing_node_);
  const hresult result = round_trip(*control, buffer.data(), kProcAmpNodeSize, buffer.data(),
                                    kProcAmpNodeSize, FailureLine::Get);
  if (failed(result)) return result;
  gain = ks::read_u32(buffer.data() + kProcAmpValue);
  return result;
}

hresult ExtensionUnit::write_gain(std::uint32_t gain) {
  const std::shared_ptr<platform::KsControl> control = control_;
  if (!control) return HR_FAIL;
  if (!primary_unit_.found && !alternative_unit_.found) return HR_NOINTERFACE;

  // Read first so the driver's Capabilities go back as they were.
  std::array<std::uint8_t, kProcAmpNodeSize> buffer{};
  ks::write_node_property(buffer.data(), ids::kVideoProcAmp, kGain, kGetTopology, processing_node_);
  round_trip(*control, buffer.data(), kProcAmpNodeSize, buffer.data(), kProcAmpNodeSize, FailureLine::Get);

  ks::write_node_property(buffer.data(), ids::kVideoProcAmp, kGain, kSetTopology, processing_node_);
  ks::write_u32(buffer.data() + kProcAmpValue, gain);
  ks::write_u32(buffer.data() + kProcAmpFlags, kProcAmpFlagsManual);
  const hresult result = round_trip(*control, buffer.data(), kProcAmpNodeSize, buffer.data(),
                                    kProcAmpNodeSize, FailureLine::Set);
  if (failed(result) && platform_) describe_error(*platform_, result);
  return result;
}

hresult ExtensionUnit::read_video_control_mode(std::uint32_t& mode) {
  const std::shared_ptr<platform::KsControl> control = control_;
  if (!control) return HR_FAIL;
  std::array<std::uint8_t, kVideoControlModeSize> buffer{};  // StreamIndex 0, Mode 0
  ks::write_property(buffer.data(), ids::kVideoControl, kVideoControlMode, ks::kTypeGet);
  const hresult result = round_trip(*control, buffer.data(), kVideoControlModeSize, buffer.data(),
                                    kVideoControlModeSize, FailureLine::Get);
  if (failed(result)) return result;
  mode = ks::read_u32(buffer.data() + kVideoControlModeMode);
  return result;
}

// LED power and control 18 always address the primary unit, found or not.
hresult ExtensionUnit::write_led_power(std::uint32_t power) {
  if (!control_) return HR_FAIL;
  std::uint8_t data[2] = {static_cast<std::uint8_t>(power != 0 ? 2 : 0),
                          static_cast<std::uint8_t>(power & 0xFF)};
  return write_unit_control(primary_unit_, kLedPower, data, sizeof data);
}

hresult ExtensionUnit::read_led_power(std::uint32_t& power) {
  if (!control_) return HR_FAIL;
  std::array<std::uint8_t, kReplySize> data{};
  std::uint32_t returned = 0;
  const hresult result = read_unit_control(primary_unit_, kLedPower, data, returned);
  if (failed(result)) {
    log_get_failure(result, returned);
    return result;
  }
  power = data[0] != 0 ? data[1] : 0;
  return result;
}

hresult ExtensionUnit::read_rgb_status(std::uint32_t& status) {
  if (!control_) return HR_FAIL;
  const ExtensionUnitDescriptor* unit = nullptr;
  std::uint32_t control_id = 0;
  if (primary_unit_.found) {
    unit = &primary_unit_;
    control_id = kRgbStatusOnPrimary;
  } else if (alternative_unit_.found) {
    unit = &alternative_unit_;
    control_id = kRgbStatusOnAlternative;
  } else {
    VXLOG('E', "no valid nodes");
    status = 0;
    return HR_FAIL;
  }

  std::array<std::uint8_t, kReplySize> data{};
  std::uint32_t returned = 0;
  const hresult result = read_unit_control(*unit, control_id, data, returned);
  if (result == HR_NOT_FOUND || result == HR_SET_NOT_FOUND) {
    // A driver without the property: no colour stream to report.
    VXLOG('E', "KsPropertySET 0x%x. Property unsupported for getting rgb status", bits(result));
    status = 0;
    return result;
  }
  if (failed(result)) {
    log_set_failure(result, returned);
    return result;
  }
  status = data[0];
  return HR_OK;
}

hresult ExtensionUnit::write_primary_control18(std::uint8_t value) {
  if (!control_) return HR_FAIL;
  return write_unit_control(primary_unit_, kControl18, &value, 1);
}

hresult ExtensionUnit::start_rgb_status_notifier(vexcap_rgb_status_callback callback,
                                                 void* context) {
  return notifier_.start(callback, context);
}

void ExtensionUnit::stop_rgb_status_notifier() { notifier_.stop(); }

}  // namespace vexcap::controls
