#include "platform/windows/frame_source.h"

#include "platform/windows/async_wait.h"
#include "platform/windows/collections.h"
#include "platform/windows/frame_format.h"
#include "platform/windows/source_controller.h"
#include "platform/windows/source_group.h"
#include "platform/windows/winrt/abi.h"

namespace vexcap::windows {

platform::SourceInfo WinrtFrameSource::info() {
  ComPtr<abi::IMediaFrameSourceInfo> info;
  check(source_->get_Info(info.put()));
  return source_info_of(info);
}

std::vector<std::shared_ptr<platform::FrameFormat>> WinrtFrameSource::supported_formats() {
  ComPtr<abi::IVectorView<abi::MediaFrameFormat>> view;
  check(source_->get_SupportedFormats(view.put()));
  std::vector<std::shared_ptr<platform::FrameFormat>> formats;
  for (auto& format : elements_of(view)) formats.push_back(frame_format_of(std::move(format)));
  return formats;
}

std::shared_ptr<platform::FrameFormat> WinrtFrameSource::current_format() {
  ComPtr<abi::IMediaFrameFormat> format;
  check(source_->get_CurrentFormat(format.put()));
  return frame_format_of(std::move(format));
}

void WinrtFrameSource::set_format(const std::shared_ptr<platform::FrameFormat>& format) {
  auto* own = dynamic_cast<WinrtFrameFormat*>(format.get());
  if (own == nullptr) throw_platform_error(E_INVALIDARG);
  ComPtr<abi::IAsyncAction> action;
  check(source_->SetFormatAsync(own->abi().get(), action.put()));
  wait_for(action);
}

std::shared_ptr<platform::SourceController> WinrtFrameSource::controller() {
  ComPtr<abi::IMediaFrameSourceController> controller;
  check(source_->get_Controller(controller.put()));
  check_present(controller);
  return std::make_shared<WinrtSourceController>(std::move(controller));
}

platform::ExclusiveControlStatus WinrtFrameSource::exclusive_control_status() {
  return static_cast<platform::ExclusiveControlStatus>(status_->load());
}

}  // namespace vexcap::windows
