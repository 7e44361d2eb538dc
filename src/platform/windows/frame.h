// MediaFrameReference behind the port.
#pragma once

#include "platform/port.h"
#include "platform/windows/com_ptr.h"
#include "platform/windows/winrt/frames_abi.h"

namespace vexcap::windows {

class WinrtFrame final : public platform::Frame {
 public:
  explicit WinrtFrame(ComPtr<abi::IMediaFrameReference> frame) : frame_(std::move(frame)) {}

  std::int64_t system_relative_time() override;
  std::shared_ptr<platform::FrameFormat> format() override;
  std::shared_ptr<platform::Bitmap> software_bitmap() override;
  std::shared_ptr<platform::Buffer> buffer() override;
  std::shared_ptr<platform::Bitmap> bitmap_from_buffer() override;
  platform::IlluminationRead read_illumination() override;
  void close() override;

 private:
  ComPtr<abi::IMediaFrameReference> frame_;
};

}  // namespace vexcap::windows
