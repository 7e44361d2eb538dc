#include "platform/windows/device_source.h"

#include <mfapi.h>

#include "platform/windows/kernel_streaming.h"
#include "platform/windows/media_foundation_library.h"
#include "platform/windows/mf_attributes.h"

namespace vexcap::windows {

hresult MfDeviceSource::shutdown() { return source_->Shutdown(); }

hresult MfDeviceSource::query_ks_control(std::shared_ptr<platform::KsControl>& control) {
  ComPtr<abi::IKsControl> native;
  const HRESULT result = source_.query(native);
  if (FAILED(result)) return result;
  control = std::make_shared<MfKsControl>(std::move(native));
  return S_OK;
}

hresult MfDeviceSource::query_topology(std::shared_ptr<platform::KsTopology>& topology) {
  ComPtr<abi::IKsTopologyInfo> native;
  const HRESULT result = source_.query(native);
  if (FAILED(result)) return result;
  topology = std::make_shared<MfKsTopology>(std::move(native));
  return S_OK;
}

hresult create_device_source(platform::Attributes& attributes,
                             std::shared_ptr<platform::DeviceSource>& source) {
  IMFAttributes* selection = native_attributes(attributes);
  if (!selection) return E_INVALIDARG;
  const MediaFoundationBinding& mf = media_foundation();
  if (!mf.functions) return mf.result;
  ComPtr<IMFMediaSource> native;
  const HRESULT result = mf.functions->create_device_source(selection, native.put());
  if (FAILED(result)) return result;
  if (!native) return E_POINTER;
  source = std::make_shared<MfDeviceSource>(std::move(native));
  return S_OK;
}

}  // namespace vexcap::windows
