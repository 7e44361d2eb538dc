// Media Foundation device sources: MFCreateDeviceSource and the IMFMediaSource it gives.
#pragma once

#include <mfidl.h>

#include <memory>

#include "platform/port.h"
#include "platform/windows/com_ptr.h"

namespace vexcap::windows {

class MfDeviceSource final : public platform::DeviceSource {
 public:
  explicit MfDeviceSource(ComPtr<IMFMediaSource> source) : source_(std::move(source)) {}
  hresult shutdown() override;
  hresult query_ks_control(std::shared_ptr<platform::KsControl>& control) override;
  hresult query_topology(std::shared_ptr<platform::KsTopology>& topology) override;

 private:
  ComPtr<IMFMediaSource> source_;
};

// MFCreateDeviceSource with a selection store made by create_attributes.
hresult create_device_source(platform::Attributes& attributes,
                             std::shared_ptr<platform::DeviceSource>& source);

}  // namespace vexcap::windows
