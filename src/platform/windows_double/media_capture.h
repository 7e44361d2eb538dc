// Windows.Media.Capture.MediaCapture and its initialization settings, over the virtual
// camera's capture sessions. The capture is not agile: the multithreaded apartment only.
#pragma once

#include <memory>
#include <mutex>

#include "platform/port.h"
#include "platform/windows_double/activation_factory.h"
#include "platform/windows_double/source_group.h"
#include "platform/windows_double/unmodelled.h"

namespace vexcap::windows_double {

class InitializationSettings final
    : public Object<InitializationSettings, Threading::Agile,
                    abi::UnmodelledIMediaCaptureInitializationSettings<InitializationSettings>,
                    abi::UnmodelledIMediaCaptureInitializationSettings5<InitializationSettings>> {
 public:
  InitializationSettings() : Object("Windows.Media.Capture.MediaCaptureInitializationSettings") {}
  HRESULT STDMETHODCALLTYPE put_StreamingCaptureMode(abi::StreamingCaptureMode value) override;
  HRESULT STDMETHODCALLTYPE get_StreamingCaptureMode(abi::StreamingCaptureMode* value) override;
  HRESULT STDMETHODCALLTYPE get_SourceGroup(abi::IMediaFrameSourceGroup** value) override;
  HRESULT STDMETHODCALLTYPE put_SourceGroup(abi::IMediaFrameSourceGroup* value) override;
  HRESULT STDMETHODCALLTYPE get_SharingMode(abi::MediaCaptureSharingMode* value) override;
  HRESULT STDMETHODCALLTYPE put_SharingMode(abi::MediaCaptureSharingMode value) override;
  HRESULT STDMETHODCALLTYPE get_MemoryPreference(abi::MediaCaptureMemoryPreference* value) override;
  HRESULT STDMETHODCALLTYPE put_MemoryPreference(abi::MediaCaptureMemoryPreference value) override;

  // What InitializeWithSettingsAsync reads, as the port takes it.
  platform::CaptureSettings port_settings();

 private:
  void retire() override;
  std::mutex mutex_;
  Ref<SourceGroup> group_;
  platform::CaptureSettings settings_{nullptr, platform::SharingMode::ExclusiveControl,
                                      platform::StreamingCaptureMode::AudioAndVideo, platform::MemoryPreference::Auto};
};

class MediaCapture final
    : public Object<MediaCapture, Threading::MtaOnly, abi::UnmodelledIMediaCapture<MediaCapture>,
                    abi::UnmodelledIMediaCapture5<MediaCapture>, abi::UnmodelledIMediaCapture6<MediaCapture>,
                    abi::UnmodelledIClosable<MediaCapture>> {
  using ExclusiveHandler =
      abi::ITypedEventHandler<abi::MediaCapture, abi::MediaCaptureDeviceExclusiveControlStatusChangedEventArgs>;

 public:
  explicit MediaCapture(std::shared_ptr<platform::Capture> capture)
      : Object("Windows.Media.Capture.MediaCapture"), capture_(std::move(capture)) {}
  HRESULT STDMETHODCALLTYPE InitializeWithSettingsAsync(abi::IMediaCaptureInitializationSettings* settings,
                                                        abi::IAsyncAction** action) override;
  HRESULT STDMETHODCALLTYPE add_Failed(abi::IMediaCaptureFailedEventHandler* handler,
                                       abi::EventRegistrationToken* token) override;
  HRESULT STDMETHODCALLTYPE remove_Failed(abi::EventRegistrationToken token) override;
  HRESULT STDMETHODCALLTYPE get_FrameSources(abi::IMapView<HSTRING, abi::MediaFrameSource>** value) override;
  HRESULT STDMETHODCALLTYPE CreateFrameReaderAsync(abi::IMediaFrameSource* source,
                                                   abi::IAsyncOperation<abi::MediaFrameReader>** value) override;
  HRESULT STDMETHODCALLTYPE CreateFrameReaderWithSubtypeAsync(abi::IMediaFrameSource* source, HSTRING subtype,
                                                              abi::IAsyncOperation<abi::MediaFrameReader>** value) override;
  HRESULT STDMETHODCALLTYPE add_CaptureDeviceExclusiveControlStatusChanged(ExclusiveHandler* handler,
                                                                          abi::EventRegistrationToken* token) override;
  HRESULT STDMETHODCALLTYPE remove_CaptureDeviceExclusiveControlStatusChanged(abi::EventRegistrationToken token) override;
  HRESULT STDMETHODCALLTYPE Close() override;

 private:
  std::shared_ptr<platform::Capture> capture();
  HRESULT create_reader(abi::IMediaFrameSource* source, std::optional<std::wstring> subtype,
                        abi::IAsyncOperation<abi::MediaFrameReader>** value);
  void retire() override;

  std::mutex mutex_;
  std::shared_ptr<platform::Capture> capture_;  // held until Close or the last release
};

class MediaCaptureFactory final
    : public Object<MediaCaptureFactory, Threading::Agile, UnmodelledActivationFactory<MediaCaptureFactory>> {
 public:
  MediaCaptureFactory() : Object("Windows.Media.Capture.MediaCapture") {}
  HRESULT STDMETHODCALLTYPE ActivateInstance(IInspectable** instance) override;
};

class InitializationSettingsFactory final
    : public Object<InitializationSettingsFactory, Threading::Agile,
                    UnmodelledActivationFactory<InitializationSettingsFactory>> {
 public:
  InitializationSettingsFactory() : Object("Windows.Media.Capture.MediaCaptureInitializationSettings") {}
  HRESULT STDMETHODCALLTYPE ActivateInstance(IInspectable** instance) override;
};

}  // namespace vexcap::windows_double
