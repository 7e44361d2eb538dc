// Media Foundation device sources and their kernel-streaming side: attribute stores, device
// enumeration per category, the device source behind a symbolic link, its IKsControl (which
// answers the processing unit, the video-control mode and the vendor extension units) and
// its topology.
#pragma once

#include <map>
#include <memory>
#include <mutex>

#include "platform/port.h"
#include "platform/virtual/world.h"

namespace vexcap::virtual_camera {

class VirtualAttributes : public platform::Attributes {
 public:
  hresult set_guid(const platform::Guid& key, const platform::Guid& value) override;
  hresult set_string(const platform::Guid& key, const std::wstring& value) override;
  std::optional<platform::Guid> guid(const platform::Guid& key) const;
  std::optional<std::wstring> string(const platform::Guid& key) const;

 private:
  mutable std::mutex mutex_;  // guards both maps
  std::vector<std::pair<platform::Guid, platform::Guid>> guids_;
  std::vector<std::pair<platform::Guid, std::wstring>> strings_;
};

// MFEnumDeviceSources: one activation object per enabled device registered in the category.
hresult enum_device_sources(World& world, platform::Attributes& attributes,
                            std::vector<std::shared_ptr<platform::DeviceActivate>>& activates);
// MFCreateDeviceSource from a symbolic link.
hresult create_device_source(const std::shared_ptr<World>& world, platform::Attributes& attributes,
                             std::shared_ptr<platform::DeviceSource>& source);

// IKsControl::KsProperty against a group's device; `link` names the interface it was opened by.
hresult ks_property(World& world, GroupState& group, const std::wstring& link, const std::uint8_t* request,
                    std::uint32_t request_size, std::uint8_t* data, std::uint32_t data_size,
                    std::uint32_t* bytes_returned);

}  // namespace vexcap::virtual_camera
