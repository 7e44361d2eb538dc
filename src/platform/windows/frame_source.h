// MediaFrameSource behind the port.
#pragma once

#include <atomic>
#include <memory>

#include "platform/port.h"
#include "platform/windows/com_ptr.h"
#include "platform/windows/winrt/frames_abi.h"

namespace vexcap::windows {

// The exclusive-control status the capture instance last reported, shared with its frame
// sources: the platform offers no way to ask for it, only the change event.
using ExclusiveStatusCell = std::shared_ptr<std::atomic<std::int32_t>>;

class WinrtFrameSource final : public platform::FrameSource {
 public:
  WinrtFrameSource(ComPtr<abi::IMediaFrameSource> source, ExclusiveStatusCell status)
      : source_(std::move(source)), status_(std::move(status)) {}

  platform::SourceInfo info() override;
  std::vector<std::shared_ptr<platform::FrameFormat>> supported_formats() override;
  std::shared_ptr<platform::FrameFormat> current_format() override;
  void set_format(const std::shared_ptr<platform::FrameFormat>& format) override;
  std::shared_ptr<platform::SourceController> controller() override;
  platform::ExclusiveControlStatus exclusive_control_status() override;

  const ComPtr<abi::IMediaFrameSource>& abi() const { return source_; }

 private:
  ComPtr<abi::IMediaFrameSource> source_;
  ExclusiveStatusCell status_;
};

}  // namespace vexcap::windows
