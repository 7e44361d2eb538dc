// MediaFrameFormat behind the port.
#pragma once

#include "platform/port.h"
#include "platform/windows/com_ptr.h"
#include "platform/windows/winrt/frames_abi.h"

namespace vexcap::windows {

class WinrtFrameFormat final : public platform::FrameFormat {
 public:
  explicit WinrtFrameFormat(ComPtr<abi::IMediaFrameFormat> format) : format_(std::move(format)) {}

  std::wstring major_type() const override;
  std::wstring subtype() const override;
  std::uint32_t width() const override;
  std::uint32_t height() const override;
  std::uint32_t frame_rate_numerator() const override;
  std::uint32_t frame_rate_denominator() const override;
  std::optional<std::wstring> rotation_text() const override;

  const ComPtr<abi::IMediaFrameFormat>& abi() const { return format_; }

 private:
  ComPtr<abi::IMediaFrameFormat> format_;
};

// Null for a null format.
std::shared_ptr<platform::FrameFormat> frame_format_of(ComPtr<abi::IMediaFrameFormat> format);

}  // namespace vexcap::windows
