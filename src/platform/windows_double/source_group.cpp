#include "platform/windows_double/source_group.h"

#include "platform/virtual/virtual_platform.h"
#include "platform/windows_double/async_operation.h"
#include "platform/windows_double/collections.h"
#include "platform/windows_double/device_information.h"
#include "platform/windows_double/hstrings.h"

namespace vexcap::windows_double {

const std::wstring& source_group_selector() {
  static const std::wstring selector =
      L"System.Devices.InterfaceClassGuid:=\"{e5323777-f976-4f5b-9b55-b94699c46e44}\" AND "
      L"System.Devices.InterfaceEnabled:=System.StructuredQueryType.Boolean#True";
  return selector;
}

HRESULT SourceGroup::get_Id(HSTRING* value) {
  DOUBLE_ENTER("get_Id");
  return hand_out_string(group_->id().value_or(L""), value);
}

HRESULT SourceGroup::get_DisplayName(HSTRING* value) {
  DOUBLE_ENTER("get_DisplayName");
  return hand_out_string(group_->display_name().value_or(L""), value);
}

HRESULT SourceGroup::get_SourceInfos(abi::IVectorView<abi::MediaFrameSourceInfo>** value) {
  DOUBLE_ENTER("get_SourceInfos");
  if (value == nullptr) return E_POINTER;
  *value = nullptr;
  auto infos = group_->source_infos();
  if (!infos) return S_OK;
  std::vector<Element<abi::IMediaFrameSourceInfo*>> elements;
  for (auto& info : *infos) elements.push_back(object_element<abi::IMediaFrameSourceInfo>(make<SourceInfo>(info)));
  return hand_out(make<VectorView<abi::MediaFrameSourceInfo>>(std::move(elements)), value);
}

HRESULT SourceInfo::get_Id(HSTRING* value) {
  DOUBLE_ENTER("get_Id");
  return hand_out_string(info_.id.value_or(L""), value);
}

HRESULT SourceInfo::get_MediaStreamType(abi::MediaStreamType* value) {
  DOUBLE_ENTER("get_MediaStreamType");
  return give(value, static_cast<abi::MediaStreamType>(info_.stream_type));
}

HRESULT SourceInfo::get_SourceKind(abi::MediaFrameSourceKind* value) {
  DOUBLE_ENTER("get_SourceKind");
  return give(value, static_cast<abi::MediaFrameSourceKind>(info_.kind));
}

HRESULT SourceInfo::get_DeviceInformation(abi::IDeviceInformation** value) {
  DOUBLE_ENTER("get_DeviceInformation");
  if (value == nullptr) return E_POINTER;
  *value = nullptr;
  if (!info_.device_information) return S_OK;
  return hand_out(make<DeviceInformation>(*info_.device_information), value);
}

HRESULT SourceGroupStatics::FindAllAsync(abi::IAsyncOperation<abi::IVectorView<abi::MediaFrameSourceGroup>>** value) {
  DOUBLE_ENTER("FindAllAsync");
  if (value == nullptr) return E_POINTER;
  using View = abi::IVectorView<abi::MediaFrameSourceGroup>;
  *value = AsyncOperation<View>::start("MediaFrameSourceGroup::FindAllAsync", [] {
    std::vector<Element<abi::IMediaFrameSourceGroup*>> elements;
    for (auto& group : virtual_camera::virtual_platform().find_all_source_groups()) {
      if (group) {
        elements.push_back(object_element<abi::IMediaFrameSourceGroup>(make<SourceGroup>(group)));
      } else {
        elements.push_back(value_element<abi::IMediaFrameSourceGroup*>(nullptr));
      }
    }
    return object_outcome<View>(make<VectorView<abi::MediaFrameSourceGroup>>(std::move(elements)));
  });
  return S_OK;
}

HRESULT SourceGroupStatics::GetDeviceSelector(HSTRING* value) {
  DOUBLE_ENTER("GetDeviceSelector");
  return hand_out_string(source_group_selector(), value);
}

}  // namespace vexcap::windows_double
