// MediaFrameReader and the frames it hands out (MediaFrameReference with its video, buffer and
// infrared views), over the virtual camera's readers. FrameArrived is raised on the reader's
// own thread. A frame reference answers what Microsoft documents for it: no IMFGetService.
#pragma once

#include <memory>
#include <mutex>

#include "platform/port.h"
#include "platform/windows_double/unmodelled.h"

namespace vexcap::windows_double {

class FrameReader final : public Object<FrameReader, Threading::Agile, abi::UnmodelledIMediaFrameReader<FrameReader>,
                                        abi::UnmodelledIMediaFrameReader2<FrameReader>,
                                        abi::UnmodelledIClosable<FrameReader>> {
  using ArrivedHandler = abi::ITypedEventHandler<abi::MediaFrameReader, abi::MediaFrameArrivedEventArgs>;

 public:
  FrameReader(std::shared_ptr<platform::FrameReader> reader, platform::SourceKind kind)
      : Object("Windows.Media.Capture.Frames.MediaFrameReader"), reader_(std::move(reader)), kind_(kind) {}
  HRESULT STDMETHODCALLTYPE add_FrameArrived(ArrivedHandler* handler, abi::EventRegistrationToken* token) override;
  HRESULT STDMETHODCALLTYPE remove_FrameArrived(abi::EventRegistrationToken token) override;
  HRESULT STDMETHODCALLTYPE TryAcquireLatestFrame(abi::IMediaFrameReference** value) override;
  HRESULT STDMETHODCALLTYPE StartAsync(abi::IAsyncOperation<abi::MediaFrameReaderStartStatus>** operation) override;
  HRESULT STDMETHODCALLTYPE StopAsync(abi::IAsyncAction** action) override;
  HRESULT STDMETHODCALLTYPE put_AcquisitionMode(abi::MediaFrameReaderAcquisitionMode value) override;
  HRESULT STDMETHODCALLTYPE get_AcquisitionMode(abi::MediaFrameReaderAcquisitionMode* value) override;
  HRESULT STDMETHODCALLTYPE Close() override;

 private:
  std::shared_ptr<platform::FrameReader> reader();
  void retire() override;

  std::mutex mutex_;
  std::shared_ptr<platform::FrameReader> reader_;
  const platform::SourceKind kind_;
  abi::MediaFrameReaderAcquisitionMode mode_ = abi::MediaFrameReaderAcquisitionMode::Realtime;
};

}  // namespace vexcap::windows_double
