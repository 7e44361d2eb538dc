// A frame-source controller that answers extended-id property calls from a stored reply and
// records what was sent.
#pragma once

#include <optional>
#include <stdexcept>
#include <vector>

#include "platform/port.h"

namespace vexcap::testing {

class FakeSourceController final : public platform::SourceController {
 public:
  using Bytes = std::vector<std::uint8_t>;

  struct SetCall {
    Bytes id;
    Bytes value;
  };

  // The reply to reads.
  platform::GetPropertyStatus get_status = platform::GetPropertyStatus::Success;
  std::wstring type_name = L"Windows.Foundation.IReferenceArray`1<UInt8>";
  std::optional<Bytes> value;
  std::optional<std::wstring> get_throws;  // the message of a PlatformError
  // The reply to writes.
  platform::SetPropertyStatus set_status = platform::SetPropertyStatus::Success;
  std::optional<std::wstring> set_throws;

  std::vector<Bytes> get_ids;
  std::vector<std::optional<std::uint32_t>> get_max_sizes;
  std::vector<SetCall> sets;

  platform::GetPropertyResult get_property_by_extended_id(
      const Bytes& id, std::optional<std::uint32_t> max_size) override {
    get_ids.push_back(id);
    get_max_sizes.push_back(max_size);
    if (get_throws) throw platform::PlatformError(hr(0x80004005), *get_throws);
    platform::GetPropertyResult result;
    result.status = get_status;
    result.value = platform::PropertyValue{type_name, value};
    return result;
  }

  platform::SetPropertyStatus set_property_by_extended_id(const Bytes& id,
                                                          const Bytes& new_value) override {
    sets.push_back({id, new_value});
    if (set_throws) throw platform::PlatformError(hr(0x80004005), *set_throws);
    return set_status;
  }

  std::shared_ptr<platform::ExposureControl> exposure_control() override { throw unused(); }
  std::shared_ptr<platform::IsoSpeedControl> iso_speed_control() override { throw unused(); }
  std::shared_ptr<platform::TorchControl> torch_control() override { throw unused(); }
  std::shared_ptr<platform::InfraredTorchControl> infrared_torch_control() override {
    throw unused();
  }

 private:
  static std::logic_error unused() { return std::logic_error("not used by these tests"); }
};

}  // namespace vexcap::testing
