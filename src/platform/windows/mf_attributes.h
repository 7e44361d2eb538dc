// Media Foundation attribute stores (IMFAttributes) behind the port's Attributes.
#pragma once

#include <mfobjects.h>

#include <memory>

#include "platform/port.h"
#include "platform/windows/com_ptr.h"

namespace vexcap::windows {

class MfAttributes final : public platform::Attributes {
 public:
  explicit MfAttributes(ComPtr<IMFAttributes> store) : store_(std::move(store)) {}
  hresult set_guid(const platform::Guid& key, const platform::Guid& value) override;
  hresult set_string(const platform::Guid& key, const std::wstring& value) override;
  IMFAttributes* native() const { return store_.get(); }

 private:
  ComPtr<IMFAttributes> store_;
};

// MFCreateAttributes.
hresult create_attributes(std::uint32_t initial_size, std::shared_ptr<platform::Attributes>& attributes);

// The store a port Attributes wraps; null for a store this adapter did not create.
IMFAttributes* native_attributes(platform::Attributes& attributes);

}  // namespace vexcap::windows
