#include "platform/windows/mf_attributes.h"

#include <mfapi.h>

#include "platform/windows/media_foundation_library.h"

#include "platform/windows/guid_conversion.h"

namespace vexcap::windows {

hresult MfAttributes::set_guid(const platform::Guid& key, const platform::Guid& value) {
  return store_->SetGUID(to_native(key), to_native(value));
}

hresult MfAttributes::set_string(const platform::Guid& key, const std::wstring& value) {
  return store_->SetString(to_native(key), value.c_str());
}

hresult create_attributes(std::uint32_t initial_size, std::shared_ptr<platform::Attributes>& attributes) {
  ComPtr<IMFAttributes> store;
  const MediaFoundationBinding& mf = media_foundation();
  if (!mf.functions) return mf.result;
  const HRESULT result = mf.functions->create_attributes(store.put(), initial_size);
  if (FAILED(result)) return result;
  if (!store) return E_POINTER;
  attributes = std::make_shared<MfAttributes>(std::move(store));
  return S_OK;
}

IMFAttributes* native_attributes(platform::Attributes& attributes) {
  auto* ours = dynamic_cast<MfAttributes*>(&attributes);
  return ours ? ours->native() : nullptr;
}

}  // namespace vexcap::windows
