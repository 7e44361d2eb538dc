// MediaFrameSource with its formats and its controller (extended-id properties, the video
// device controller and its typed controls), over the virtual camera's frame sources.
#pragma once

#include <memory>

#include "platform/port.h"
#include "platform/windows_double/unmodelled.h"

namespace vexcap::windows_double {

class FrameFormat final : public Object<FrameFormat, Threading::Agile, abi::UnmodelledIMediaFrameFormat<FrameFormat>> {
 public:
  explicit FrameFormat(std::shared_ptr<platform::FrameFormat> format)
      : Object("Windows.Media.Capture.Frames.MediaFrameFormat"), format_(std::move(format)) {}
  HRESULT STDMETHODCALLTYPE get_MajorType(HSTRING* value) override;
  HRESULT STDMETHODCALLTYPE get_Subtype(HSTRING* value) override;
  HRESULT STDMETHODCALLTYPE get_FrameRate(abi::IMediaRatio** value) override;
  HRESULT STDMETHODCALLTYPE get_Properties(abi::IMapView<GUID, IInspectable>** value) override;
  HRESULT STDMETHODCALLTYPE get_VideoFormat(abi::IVideoMediaFrameFormat** value) override;

  const std::shared_ptr<platform::FrameFormat>& port() const { return format_; }

 private:
  void retire() override { format_.reset(); }
  std::shared_ptr<platform::FrameFormat> format_;
};

class FrameSource final : public Object<FrameSource, Threading::Agile, abi::UnmodelledIMediaFrameSource<FrameSource>> {
 public:
  explicit FrameSource(std::shared_ptr<platform::FrameSource> source)
      : Object("Windows.Media.Capture.Frames.MediaFrameSource"), source_(std::move(source)) {}
  HRESULT STDMETHODCALLTYPE get_Info(abi::IMediaFrameSourceInfo** value) override;
  HRESULT STDMETHODCALLTYPE get_Controller(abi::IMediaFrameSourceController** value) override;
  HRESULT STDMETHODCALLTYPE get_SupportedFormats(abi::IVectorView<abi::MediaFrameFormat>** value) override;
  HRESULT STDMETHODCALLTYPE get_CurrentFormat(abi::IMediaFrameFormat** value) override;
  HRESULT STDMETHODCALLTYPE SetFormatAsync(abi::IMediaFrameFormat* format, abi::IAsyncAction** value) override;

  const std::shared_ptr<platform::FrameSource>& port() const { return source_; }

 private:
  void retire() override { source_.reset(); }
  std::shared_ptr<platform::FrameSource> source_;
};

// Calls a port operation that reports failure by throwing PlatformError; its code is the result.
template <class F>
HRESULT port_call(F f) {
  try {
    f();
    return S_OK;
  } catch (const platform::PlatformError& error) {
    return error.code() < 0 ? HRESULT(error.code()) : E_FAIL;
  }
}

}  // namespace vexcap::windows_double
