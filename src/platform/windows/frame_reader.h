// MediaFrameReader behind the port.
#pragma once

#include "platform/port.h"
#include "platform/windows/com_ptr.h"
#include "platform/windows/winrt/frames_abi.h"

namespace vexcap::windows {

class WinrtFrameReader final : public platform::FrameReader {
 public:
  explicit WinrtFrameReader(ComPtr<abi::IMediaFrameReader> reader) : reader_(std::move(reader)) {}

  platform::EventToken add_frame_arrived(FrameArrivedHandler handler) override;
  void remove_frame_arrived(platform::EventToken token) override;
  platform::ReaderStartStatus start() override;
  void stop() override;
  void close() override;
  void set_acquisition_mode(platform::AcquisitionMode mode) override;
  std::shared_ptr<platform::Frame> try_acquire_latest_frame() override;

 private:
  ComPtr<abi::IMediaFrameReader> reader_;
};

}  // namespace vexcap::windows
