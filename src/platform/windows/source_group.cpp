#include "platform/windows/source_group.h"

#include "platform/windows/async_wait.h"
#include "platform/windows/collections.h"
#include "platform/windows/device_information.h"

namespace vexcap::windows {

namespace {

static_assert(int(abi::MediaFrameSourceKind::Metadata) == int(platform::SourceKind::Metadata));
static_assert(int(abi::MediaStreamType::Metadata) == int(platform::StreamType::Metadata));

std::wstring string_property(HRESULT (STDMETHODCALLTYPE abi::IMediaFrameSourceGroup::*getter)(HSTRING*),
                             const ComPtr<abi::IMediaFrameSourceGroup>& group) {
  HString text;
  check((group.get()->*getter)(text.put()));
  return text.text();
}

}  // namespace

std::optional<std::wstring> WinrtSourceGroup::id() const {
  return string_property(&abi::IMediaFrameSourceGroup::get_Id, group_);
}

std::optional<std::wstring> WinrtSourceGroup::display_name() const {
  return string_property(&abi::IMediaFrameSourceGroup::get_DisplayName, group_);
}

std::optional<std::vector<platform::SourceInfo>> WinrtSourceGroup::source_infos() const {
  ComPtr<abi::IVectorView<abi::MediaFrameSourceInfo>> view;
  check(group_->get_SourceInfos(view.put()));
  if (!view) return std::nullopt;
  std::vector<platform::SourceInfo> infos;
  for (const auto& info : elements_of(view)) infos.push_back(source_info_of(info));
  return infos;
}

void WinrtSourceGroup::close() { close_if_closable(group_); }

platform::SourceInfo source_info_of(const ComPtr<abi::IMediaFrameSourceInfo>& info) {
  check_present(info);
  platform::SourceInfo result;
  HString id;
  check(info->get_Id(id.put()));
  result.id = id.text();
  abi::MediaFrameSourceKind kind = abi::MediaFrameSourceKind::Custom;
  check(info->get_SourceKind(&kind));
  result.kind = static_cast<platform::SourceKind>(kind);
  abi::MediaStreamType stream_type = abi::MediaStreamType::VideoPreview;
  check(info->get_MediaStreamType(&stream_type));
  result.stream_type = static_cast<platform::StreamType>(stream_type);
  ComPtr<abi::IDeviceInformation> device;
  check(info->get_DeviceInformation(device.put()));
  result.device_information = device_information_of(device);
  return result;
}

std::vector<std::shared_ptr<platform::SourceGroup>> find_all_source_groups() {
  auto statics = activation_factory<abi::IMediaFrameSourceGroupStatics>(class_id::media_frame_source_group);
  ComPtr<abi::IAsyncOperation<abi::IVectorView<abi::MediaFrameSourceGroup>>> operation;
  check(statics->FindAllAsync(operation.put()));
  std::vector<std::shared_ptr<platform::SourceGroup>> groups;
  for (auto& group : elements_of(wait_for(operation))) {
    groups.push_back(group ? std::make_shared<WinrtSourceGroup>(std::move(group)) : nullptr);
  }
  return groups;
}

}  // namespace vexcap::windows
