#include "platform/windows/kernel_streaming.h"

#include "platform/windows/guid_conversion.h"

namespace vexcap::windows {

// The request is only read by the driver; KsProperty's signature is not const-correct.
hresult MfKsControl::property(const std::uint8_t* request, std::uint32_t request_size,
                              std::uint8_t* data, std::uint32_t data_size,
                              std::uint32_t* bytes_returned) {
  ULONG returned = 0;
  const HRESULT result = control_->KsProperty(const_cast<std::uint8_t*>(request), request_size,
                                              data, data_size, &returned);
  if (bytes_returned) *bytes_returned = returned;
  return result;
}

hresult MfKsTopology::node_count(std::uint32_t* count) {
  if (!count) return E_POINTER;
  DWORD nodes = 0;
  const HRESULT result = topology_->get_NumNodes(&nodes);
  if (SUCCEEDED(result)) *count = nodes;
  return result;
}

hresult MfKsTopology::node_type(std::uint32_t index, platform::Guid* type) {
  if (!type) return E_POINTER;
  GUID native{};
  const HRESULT result = topology_->get_NodeType(index, &native);
  if (SUCCEEDED(result)) *type = to_port(native);
  return result;
}

}  // namespace vexcap::windows
