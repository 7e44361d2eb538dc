// Windows.Media.Capture: the capture instance, its settings and its events.
// Declared from the published metadata; the slot order is checked by the ABI test.
#pragma once

#include "platform/windows/winrt/generics_abi.h"

namespace vexcap::windows::abi {

// Windows.Media.Capture.IMediaCapture
struct IMediaCapture : IInspectable {
  static constexpr GUID iid = {0xc61afbb4, 0xfb10, 0x4a34, {0xac, 0x18, 0xca, 0x80, 0xd9, 0xc8, 0xe7, 0xee}};
  virtual HRESULT STDMETHODCALLTYPE InitializeAsync(IAsyncAction** asyncInfo) = 0;
  virtual HRESULT STDMETHODCALLTYPE InitializeWithSettingsAsync(IMediaCaptureInitializationSettings* mediaCaptureInitializationSettings, IAsyncAction** asyncInfo) = 0;
  virtual HRESULT STDMETHODCALLTYPE StartRecordToStorageFileAsync(IInspectable* encodingProfile, IInspectable* file, IAsyncAction** asyncInfo) = 0;
  virtual HRESULT STDMETHODCALLTYPE StartRecordToStreamAsync(IInspectable* encodingProfile, IInspectable* stream, IAsyncAction** asyncInfo) = 0;
  virtual HRESULT STDMETHODCALLTYPE StartRecordToCustomSinkAsync(IInspectable* encodingProfile, IInspectable* customMediaSink, IAsyncAction** asyncInfo) = 0;
  virtual HRESULT STDMETHODCALLTYPE StartRecordToCustomSinkIdAsync(IInspectable* encodingProfile, HSTRING customSinkActivationId, IInspectable* customSinkSettings, IAsyncAction** asyncInfo) = 0;
  virtual HRESULT STDMETHODCALLTYPE StopRecordAsync(IAsyncAction** asyncInfo) = 0;
  virtual HRESULT STDMETHODCALLTYPE CapturePhotoToStorageFileAsync(IInspectable* type, IInspectable* file, IAsyncAction** asyncInfo) = 0;
  virtual HRESULT STDMETHODCALLTYPE CapturePhotoToStreamAsync(IInspectable* type, IInspectable* stream, IAsyncAction** asyncInfo) = 0;
  virtual HRESULT STDMETHODCALLTYPE AddEffectAsync(MediaStreamType mediaStreamType, HSTRING effectActivationID, IInspectable* effectSettings, IAsyncAction** asyncInfo) = 0;
  virtual HRESULT STDMETHODCALLTYPE ClearEffectsAsync(MediaStreamType mediaStreamType, IAsyncAction** asyncInfo) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetEncoderProperty(MediaStreamType mediaStreamType, GUID propertyId, IInspectable* propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetEncoderProperty(MediaStreamType mediaStreamType, GUID propertyId, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE add_Failed(IMediaCaptureFailedEventHandler* errorEventHandler, EventRegistrationToken* eventCookie) = 0;
  virtual HRESULT STDMETHODCALLTYPE remove_Failed(EventRegistrationToken eventCookie) = 0;
  virtual HRESULT STDMETHODCALLTYPE add_RecordLimitationExceeded(IInspectable* recordLimitationExceededEventHandler, EventRegistrationToken* eventCookie) = 0;
  virtual HRESULT STDMETHODCALLTYPE remove_RecordLimitationExceeded(EventRegistrationToken eventCookie) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_MediaCaptureSettings(IInspectable** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_AudioDeviceController(IInspectable** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_VideoDeviceController(IVideoDeviceController** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetPreviewMirroring(boolean value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetPreviewMirroring(boolean* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetPreviewRotation(VideoRotation value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetPreviewRotation(VideoRotation* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetRecordRotation(VideoRotation value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetRecordRotation(VideoRotation* value) = 0;
};

// Windows.Media.Capture.IMediaCapture4
struct IMediaCapture4 : IInspectable {
  static constexpr GUID iid = {0xbacd6fd6, 0xfb08, 0x4947, {0xae, 0xa2, 0xce, 0x14, 0xef, 0xf0, 0xce, 0x13}};
  virtual HRESULT STDMETHODCALLTYPE AddAudioEffectAsync(IInspectable* definition, IInspectable** op) = 0;
  virtual HRESULT STDMETHODCALLTYPE AddVideoEffectAsync(IInspectable* definition, MediaStreamType mediaStreamType, IInspectable** op) = 0;
  virtual HRESULT STDMETHODCALLTYPE PauseRecordAsync(MediaCapturePauseBehavior behavior, IAsyncAction** asyncInfo) = 0;
  virtual HRESULT STDMETHODCALLTYPE ResumeRecordAsync(IAsyncAction** asyncInfo) = 0;
  virtual HRESULT STDMETHODCALLTYPE add_CameraStreamStateChanged(ITypedEventHandler<MediaCapture, IInspectable>* handler, EventRegistrationToken* token) = 0;
  virtual HRESULT STDMETHODCALLTYPE remove_CameraStreamStateChanged(EventRegistrationToken token) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_CameraStreamState(CameraStreamState* streamState) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetPreviewFrameAsync(IInspectable** operation) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetPreviewFrameCopyAsync(IInspectable* destination, IInspectable** operation) = 0;
  virtual HRESULT STDMETHODCALLTYPE add_ThermalStatusChanged(ITypedEventHandler<MediaCapture, IInspectable>* handler, EventRegistrationToken* token) = 0;
  virtual HRESULT STDMETHODCALLTYPE remove_ThermalStatusChanged(EventRegistrationToken token) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_ThermalStatus(MediaCaptureThermalStatus* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE PrepareAdvancedPhotoCaptureAsync(IInspectable* encodingProperties, IInspectable** operation) = 0;
};

// Windows.Media.Capture.IMediaCapture5
struct IMediaCapture5 : IInspectable {
  static constexpr GUID iid = {0xda787c22, 0x3a9b, 0x4720, {0xa7, 0x1e, 0x97, 0x90, 0x0a, 0x31, 0x6e, 0x5a}};
  virtual HRESULT STDMETHODCALLTYPE RemoveEffectAsync(IInspectable* effect, IAsyncAction** asyncInfo) = 0;
  virtual HRESULT STDMETHODCALLTYPE PauseRecordWithResultAsync(MediaCapturePauseBehavior behavior, IInspectable** operation) = 0;
  virtual HRESULT STDMETHODCALLTYPE StopRecordWithResultAsync(IInspectable** operation) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_FrameSources(IMapView<HSTRING, MediaFrameSource>** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateFrameReaderAsync(IMediaFrameSource* inputSource, IAsyncOperation<MediaFrameReader>** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateFrameReaderWithSubtypeAsync(IMediaFrameSource* inputSource, HSTRING outputSubtype, IAsyncOperation<MediaFrameReader>** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateFrameReaderWithSubtypeAndSizeAsync(IMediaFrameSource* inputSource, HSTRING outputSubtype, BitmapSize outputSize, IAsyncOperation<MediaFrameReader>** value) = 0;
};

// Windows.Media.Capture.IMediaCapture6
// CaptureDeviceExclusiveControlStatusChanged lives here, not on IMediaCapture5
struct IMediaCapture6 : IInspectable {
  static constexpr GUID iid = {0x228948bd, 0x4b20, 0x4bb1, {0x9f, 0xd6, 0xa5, 0x83, 0x21, 0x2a, 0x10, 0x12}};
  virtual HRESULT STDMETHODCALLTYPE add_CaptureDeviceExclusiveControlStatusChanged(ITypedEventHandler<MediaCapture, MediaCaptureDeviceExclusiveControlStatusChangedEventArgs>* handler, EventRegistrationToken* token) = 0;
  virtual HRESULT STDMETHODCALLTYPE remove_CaptureDeviceExclusiveControlStatusChanged(EventRegistrationToken token) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateMultiSourceFrameReaderAsync(IIterable<MediaFrameSource>* inputSources, IInspectable** value) = 0;
};

// Windows.Media.Capture.IMediaCaptureInitializationSettings
// setter (put_) precedes getter (get_) for every property here; IMediaCaptureInitializationSettings4..7 use get_ then put_
struct IMediaCaptureInitializationSettings : IInspectable {
  static constexpr GUID iid = {0x9782ba70, 0xea65, 0x4900, {0x93, 0x56, 0x8c, 0xa8, 0x87, 0x72, 0x68, 0x84}};
  virtual HRESULT STDMETHODCALLTYPE put_AudioDeviceId(HSTRING value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_AudioDeviceId(HSTRING* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_VideoDeviceId(HSTRING value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_VideoDeviceId(HSTRING* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_StreamingCaptureMode(StreamingCaptureMode value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_StreamingCaptureMode(StreamingCaptureMode* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_PhotoCaptureSource(PhotoCaptureSource value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_PhotoCaptureSource(PhotoCaptureSource* value) = 0;
};

// Windows.Media.Capture.IMediaCaptureInitializationSettings2
struct IMediaCaptureInitializationSettings2 : IInspectable {
  static constexpr GUID iid = {0x404e0626, 0xc9dc, 0x43e9, {0xae, 0xe4, 0xe6, 0xbf, 0x1b, 0x57, 0xb4, 0x4c}};
  virtual HRESULT STDMETHODCALLTYPE put_MediaCategory(MediaCategory value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_MediaCategory(MediaCategory* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_AudioProcessing(AudioProcessing value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_AudioProcessing(AudioProcessing* value) = 0;
};

// Windows.Media.Capture.IMediaCaptureInitializationSettings3
struct IMediaCaptureInitializationSettings3 : IInspectable {
  static constexpr GUID iid = {0x4160519d, 0xbe48, 0x4730, {0x81, 0x04, 0x0c, 0xf6, 0xe9, 0xe9, 0x79, 0x48}};
  virtual HRESULT STDMETHODCALLTYPE put_AudioSource(IInspectable* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_AudioSource(IInspectable** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_VideoSource(IInspectable* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_VideoSource(IInspectable** value) = 0;
};

// Windows.Media.Capture.IMediaCaptureInitializationSettings4
struct IMediaCaptureInitializationSettings4 : IInspectable {
  static constexpr GUID iid = {0xf502a537, 0x4cb7, 0x4d28, {0x95, 0xed, 0x4f, 0x9f, 0x01, 0x2e, 0x05, 0x18}};
  virtual HRESULT STDMETHODCALLTYPE get_VideoProfile(IInspectable** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_VideoProfile(IInspectable* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_PreviewMediaDescription(IInspectable** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_PreviewMediaDescription(IInspectable* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_RecordMediaDescription(IInspectable** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_RecordMediaDescription(IInspectable* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_PhotoMediaDescription(IInspectable** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_PhotoMediaDescription(IInspectable* value) = 0;
};

// Windows.Media.Capture.IMediaCaptureInitializationSettings5
struct IMediaCaptureInitializationSettings5 : IInspectable {
  static constexpr GUID iid = {0xd5a2e3b8, 0x2626, 0x4e94, {0xb7, 0xb3, 0x53, 0x08, 0xa0, 0xf6, 0x4b, 0x1a}};
  virtual HRESULT STDMETHODCALLTYPE get_SourceGroup(IMediaFrameSourceGroup** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_SourceGroup(IMediaFrameSourceGroup* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_SharingMode(MediaCaptureSharingMode* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_SharingMode(MediaCaptureSharingMode value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_MemoryPreference(MediaCaptureMemoryPreference* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_MemoryPreference(MediaCaptureMemoryPreference value) = 0;
};

// Windows.Media.Capture.IMediaCaptureFailedEventArgs
struct IMediaCaptureFailedEventArgs : IInspectable {
  static constexpr GUID iid = {0x80fde3f4, 0x54c4, 0x42c0, {0x8d, 0x19, 0xce, 0xa1, 0xa8, 0x7c, 0xa1, 0x8b}};
  virtual HRESULT STDMETHODCALLTYPE get_Message(HSTRING* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Code(UINT32* value) = 0;
};

// Windows.Media.Capture.IMediaCaptureDeviceExclusiveControlStatusChangedEventArgs
struct IMediaCaptureDeviceExclusiveControlStatusChangedEventArgs : IInspectable {
  static constexpr GUID iid = {0x9d2f920d, 0xa588, 0x43c6, {0x89, 0xd6, 0x5a, 0xd3, 0x22, 0xaf, 0x00, 0x6a}};
  virtual HRESULT STDMETHODCALLTYPE get_DeviceId(HSTRING* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Status(MediaCaptureDeviceExclusiveControlStatus* value) = 0;
};

// Windows.Media.Capture.MediaCaptureFailedEventHandler
struct IMediaCaptureFailedEventHandler : IUnknown {
  static constexpr GUID iid = {0x2014effb, 0x5cd8, 0x4f08, {0xa3, 0x14, 0x0d, 0x36, 0x0d, 0xa5, 0x9f, 0x14}};
  static constexpr bool is_delegate = true;
  virtual HRESULT STDMETHODCALLTYPE Invoke(IMediaCapture* sender, IMediaCaptureFailedEventArgs* errorEventArgs) = 0;
};

}  // namespace vexcap::windows::abi
