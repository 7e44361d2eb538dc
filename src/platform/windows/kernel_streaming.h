// IKsControl and IKsTopologyInfo of a device source behind the port's KsControl and KsTopology.
// Both are free-threaded: the control is also used on frame-arrived threads.
#pragma once

#include "platform/port.h"
#include "platform/windows/com_ptr.h"
#include "platform/windows/winrt/kernel_streaming_abi.h"

namespace vexcap::windows {

class MfKsControl final : public platform::KsControl {
 public:
  explicit MfKsControl(ComPtr<abi::IKsControl> control) : control_(std::move(control)) {}
  hresult property(const std::uint8_t* request, std::uint32_t request_size, std::uint8_t* data,
                   std::uint32_t data_size, std::uint32_t* bytes_returned) override;

 private:
  ComPtr<abi::IKsControl> control_;
};

class MfKsTopology final : public platform::KsTopology {
 public:
  explicit MfKsTopology(ComPtr<abi::IKsTopologyInfo> topology) : topology_(std::move(topology)) {}
  hresult node_count(std::uint32_t* count) override;
  hresult node_type(std::uint32_t index, platform::Guid* type) override;

 private:
  ComPtr<abi::IKsTopologyInfo> topology_;
};

}  // namespace vexcap::windows
