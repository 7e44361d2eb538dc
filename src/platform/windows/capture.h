// MediaCapture behind the port. The instance is not agile, so it is held as an agile reference
// and resolved on whichever thread uses it (the request thread, the failure handler's thread).
#pragma once

#include "platform/port.h"
#include "platform/windows/agile_reference.h"
#include "platform/windows/frame_source.h"
#include "platform/windows/winrt/capture_abi.h"

namespace vexcap::windows {

class WinrtCapture final : public platform::Capture {
 public:
  WinrtCapture();  // activates MediaCapture; throws PlatformError

  void initialize(const platform::CaptureSettings& settings) override;
  std::vector<std::shared_ptr<platform::FrameSource>> frame_sources() override;
  void close_frame_sources() override;
  std::shared_ptr<platform::FrameReader> create_frame_reader(const std::shared_ptr<platform::FrameSource>& source,
                                                             const std::optional<std::wstring>& subtype) override;
  platform::EventToken add_failed(FailedHandler handler) override;
  void remove_failed(platform::EventToken token) override;
  platform::EventToken add_exclusive_control_status_changed(ExclusiveControlHandler handler) override;
  void remove_exclusive_control_status_changed(platform::EventToken token) override;
  std::optional<hresult> shutdown_if_supported() override;
  void close() override;

 private:
  ComPtr<abi::IMediaCapture> capture() const { return capture_.resolve(); }

  AgileReference<abi::IMediaCapture> capture_;
  // Created by the first initialization and reused by later ones.
  ComPtr<abi::IMediaCaptureInitializationSettings> settings_;
  ExclusiveStatusCell exclusive_status_;
};

}  // namespace vexcap::windows
