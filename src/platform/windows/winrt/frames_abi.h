// Windows.Media.Capture.Frames: source groups, frame sources, readers and frames.
// Declared from the published metadata; the slot order is checked by the ABI test.
#pragma once

#include "platform/windows/winrt/generics_abi.h"

namespace vexcap::windows::abi {

// Windows.Media.Capture.Frames.IMediaFrameSourceGroupStatics
struct IMediaFrameSourceGroupStatics : IInspectable {
  static constexpr GUID iid = {0x1c48bfc5, 0x436f, 0x4508, {0x94, 0xcf, 0xd5, 0xd8, 0xb7, 0x32, 0x64, 0x45}};
  virtual HRESULT STDMETHODCALLTYPE FindAllAsync(IAsyncOperation<IVectorView<MediaFrameSourceGroup>>** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE FromIdAsync(HSTRING id, IAsyncOperation<MediaFrameSourceGroup>** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetDeviceSelector(HSTRING* value) = 0;
};

// Windows.Media.Capture.Frames.IMediaFrameSourceGroup
struct IMediaFrameSourceGroup : IInspectable {
  static constexpr GUID iid = {0x7f605b87, 0x4832, 0x4b5f, {0xae, 0x3d, 0x41, 0x2f, 0xaa, 0xb3, 0x7d, 0x34}};
  virtual HRESULT STDMETHODCALLTYPE get_Id(HSTRING* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_DisplayName(HSTRING* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_SourceInfos(IVectorView<MediaFrameSourceInfo>** value) = 0;
};

// Windows.Media.Capture.Frames.IMediaFrameSourceInfo
struct IMediaFrameSourceInfo : IInspectable {
  static constexpr GUID iid = {0x87bdc9cd, 0x4601, 0x408f, {0x91, 0xcf, 0x03, 0x83, 0x18, 0xcd, 0x0a, 0xf3}};
  virtual HRESULT STDMETHODCALLTYPE get_Id(HSTRING* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_MediaStreamType(MediaStreamType* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_SourceKind(MediaFrameSourceKind* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_SourceGroup(IMediaFrameSourceGroup** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_DeviceInformation(IDeviceInformation** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Properties(IMapView<GUID, IInspectable>** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_CoordinateSystem(IInspectable** value) = 0;
};

// Windows.Media.Capture.Frames.IMediaFrameSourceInfo2
struct IMediaFrameSourceInfo2 : IInspectable {
  static constexpr GUID iid = {0x195a7855, 0x6457, 0x42c6, {0xa7, 0x69, 0x19, 0xb6, 0x5b, 0xd3, 0x2e, 0x6e}};
  virtual HRESULT STDMETHODCALLTYPE get_ProfileId(HSTRING* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_VideoProfileMediaDescription(IInspectable** value) = 0;
};

// Windows.Media.Capture.Frames.IMediaFrameSourceInfo3
struct IMediaFrameSourceInfo3 : IInspectable {
  static constexpr GUID iid = {0xca824ab6, 0x66ea, 0x5885, {0xa2, 0xb6, 0x26, 0xc0, 0xee, 0xec, 0x3c, 0x7b}};
  virtual HRESULT STDMETHODCALLTYPE GetRelativePanel(IInspectable* displayRegion, Panel* result) = 0;
};

// Windows.Media.Capture.Frames.IMediaFrameSourceInfo4
struct IMediaFrameSourceInfo4 : IInspectable {
  static constexpr GUID iid = {0x4817d721, 0x85eb, 0x470c, {0x8f, 0x37, 0x43, 0xca, 0x54, 0x98, 0xe4, 0x1d}};
  virtual HRESULT STDMETHODCALLTYPE get_IsShareable(boolean* value) = 0;
};

// Windows.Media.Capture.Frames.IMediaFrameSource
struct IMediaFrameSource : IInspectable {
  static constexpr GUID iid = {0xd6782953, 0x90db, 0x46a8, {0x8a, 0xdd, 0x2a, 0xa8, 0x84, 0xa8, 0xd2, 0x53}};
  virtual HRESULT STDMETHODCALLTYPE get_Info(IMediaFrameSourceInfo** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Controller(IMediaFrameSourceController** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_SupportedFormats(IVectorView<MediaFrameFormat>** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_CurrentFormat(IMediaFrameFormat** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetFormatAsync(IMediaFrameFormat* format, IAsyncAction** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE add_FormatChanged(ITypedEventHandler<MediaFrameSource, IInspectable>* handler, EventRegistrationToken* token) = 0;
  virtual HRESULT STDMETHODCALLTYPE remove_FormatChanged(EventRegistrationToken token) = 0;
  virtual HRESULT STDMETHODCALLTYPE TryGetCameraIntrinsics(IMediaFrameFormat* format, IInspectable** value) = 0;
};

// Windows.Media.Capture.Frames.IMediaFrameSourceController
struct IMediaFrameSourceController : IInspectable {
  static constexpr GUID iid = {0x6d076635, 0x316d, 0x4b8f, {0xb7, 0xb6, 0xee, 0xb0, 0x4a, 0x8c, 0x65, 0x25}};
  virtual HRESULT STDMETHODCALLTYPE GetPropertyAsync(HSTRING propertyId, IAsyncOperation<MediaFrameSourceGetPropertyResult>** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetPropertyAsync(HSTRING propertyId, IInspectable* propertyValue, IAsyncOperation<MediaFrameSourceSetPropertyStatus>** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_VideoDeviceController(IVideoDeviceController** value) = 0;
};

// Windows.Media.Capture.Frames.IMediaFrameSourceController2
struct IMediaFrameSourceController2 : IInspectable {
  static constexpr GUID iid = {0xefc49fd4, 0xfcf2, 0x4a03, {0xb4, 0xe4, 0xac, 0x96, 0x28, 0x73, 0x9b, 0xee}};
  virtual HRESULT STDMETHODCALLTYPE GetPropertyByExtendedIdAsync(UINT32 extendedPropertyIdLength, BYTE* extendedPropertyId, IReference<UINT32>* maxPropertyValueSize, IAsyncOperation<MediaFrameSourceGetPropertyResult>** operation) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetPropertyByExtendedIdAsync(UINT32 extendedPropertyIdLength, BYTE* extendedPropertyId, UINT32 propertyValueLength, BYTE* propertyValue, IAsyncOperation<MediaFrameSourceSetPropertyStatus>** operation) = 0;
};

// Windows.Media.Capture.Frames.IMediaFrameSourceGetPropertyResult
struct IMediaFrameSourceGetPropertyResult : IInspectable {
  static constexpr GUID iid = {0x088616c2, 0x3a64, 0x4bd5, {0xbd, 0x2b, 0xe7, 0xc8, 0x98, 0xd2, 0xf3, 0x7a}};
  virtual HRESULT STDMETHODCALLTYPE get_Status(MediaFrameSourceGetPropertyStatus* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Value(IInspectable** value) = 0;
};

// Windows.Media.Capture.Frames.IMediaFrameFormat
struct IMediaFrameFormat : IInspectable {
  static constexpr GUID iid = {0x71902b4e, 0xb279, 0x4a97, {0xa9, 0xdb, 0xbd, 0x5a, 0x2f, 0xb7, 0x8f, 0x39}};
  virtual HRESULT STDMETHODCALLTYPE get_MajorType(HSTRING* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Subtype(HSTRING* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_FrameRate(IMediaRatio** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Properties(IMapView<GUID, IInspectable>** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_VideoFormat(IVideoMediaFrameFormat** value) = 0;
};

// Windows.Media.Capture.Frames.IVideoMediaFrameFormat
struct IVideoMediaFrameFormat : IInspectable {
  static constexpr GUID iid = {0x46027fc0, 0xd71b, 0x45c7, {0x8f, 0x14, 0x6d, 0x9a, 0x0a, 0xe6, 0x04, 0xe4}};
  virtual HRESULT STDMETHODCALLTYPE get_MediaFrameFormat(IMediaFrameFormat** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_DepthFormat(IInspectable** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Width(UINT32* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Height(UINT32* value) = 0;
};

// Windows.Media.Capture.Frames.IMediaFrameReader
struct IMediaFrameReader : IInspectable {
  static constexpr GUID iid = {0xe4c94395, 0x2028, 0x48ed, {0x90, 0xb0, 0xd1, 0xc1, 0xb1, 0x62, 0xe2, 0x4c}};
  virtual HRESULT STDMETHODCALLTYPE add_FrameArrived(ITypedEventHandler<MediaFrameReader, MediaFrameArrivedEventArgs>* handler, EventRegistrationToken* token) = 0;
  virtual HRESULT STDMETHODCALLTYPE remove_FrameArrived(EventRegistrationToken token) = 0;
  virtual HRESULT STDMETHODCALLTYPE TryAcquireLatestFrame(IMediaFrameReference** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE StartAsync(IAsyncOperation<MediaFrameReaderStartStatus>** operation) = 0;
  virtual HRESULT STDMETHODCALLTYPE StopAsync(IAsyncAction** action) = 0;
};

// Windows.Media.Capture.Frames.IMediaFrameReader2
struct IMediaFrameReader2 : IInspectable {
  static constexpr GUID iid = {0x871127b3, 0x8531, 0x4050, {0x87, 0xcc, 0xa1, 0x37, 0x33, 0xcf, 0x3e, 0x9b}};
  virtual HRESULT STDMETHODCALLTYPE put_AcquisitionMode(MediaFrameReaderAcquisitionMode value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_AcquisitionMode(MediaFrameReaderAcquisitionMode* value) = 0;
};

// Windows.Media.Capture.Frames.IMediaFrameArrivedEventArgs
struct IMediaFrameArrivedEventArgs : IInspectable {
  static constexpr GUID iid = {0x0b430add, 0xa490, 0x4435, {0xad, 0xa1, 0x9a, 0xff, 0xd5, 0x52, 0x39, 0xf7}};
};

// Windows.Media.Capture.Frames.IMediaFrameReference
struct IMediaFrameReference : IInspectable {
  static constexpr GUID iid = {0xf6b88641, 0xf0dc, 0x4044, {0x8d, 0xc9, 0x96, 0x1c, 0xed, 0xd0, 0x5b, 0xad}};
  virtual HRESULT STDMETHODCALLTYPE get_SourceKind(MediaFrameSourceKind* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Format(IMediaFrameFormat** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_SystemRelativeTime(IReference<TimeSpan>** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Duration(TimeSpan* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Properties(IMapView<GUID, IInspectable>** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_BufferMediaFrame(IBufferMediaFrame** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_VideoMediaFrame(IVideoMediaFrame** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_CoordinateSystem(IInspectable** value) = 0;
};

// Windows.Media.Capture.Frames.IVideoMediaFrame
struct IVideoMediaFrame : IInspectable {
  static constexpr GUID iid = {0x00dd4ccb, 0x32bd, 0x4fe1, {0xa0, 0x13, 0x7c, 0xc1, 0x3c, 0xf5, 0xdb, 0xcf}};
  virtual HRESULT STDMETHODCALLTYPE get_FrameReference(IMediaFrameReference** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_VideoFormat(IVideoMediaFrameFormat** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_SoftwareBitmap(ISoftwareBitmap** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Direct3DSurface(IInspectable** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_CameraIntrinsics(IInspectable** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_InfraredMediaFrame(IInfraredMediaFrame** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_DepthMediaFrame(IInspectable** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetVideoFrame(IInspectable** value) = 0;
};

// Windows.Media.Capture.Frames.IInfraredMediaFrame
// Not among the published facts the other declarations are checked against (Windows SDK
// windows.media.capture.frames.h); the ABI test carries its own entry.
struct IInfraredMediaFrame : IInspectable {
  static constexpr GUID iid = {0x3fd13503, 0x004b, 0x4f0e, {0x91, 0xac, 0x46, 0x52, 0x99, 0xb4, 0x16, 0x58}};
  virtual HRESULT STDMETHODCALLTYPE get_FrameReference(IMediaFrameReference** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_VideoMediaFrame(IVideoMediaFrame** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_IsIlluminated(boolean* value) = 0;
};

// Windows.Media.Capture.Frames.IBufferMediaFrame
struct IBufferMediaFrame : IInspectable {
  static constexpr GUID iid = {0xb5b153c7, 0x9b84, 0x4062, {0xb7, 0x9c, 0xa3, 0x65, 0xb2, 0x59, 0x68, 0x54}};
  virtual HRESULT STDMETHODCALLTYPE get_FrameReference(IMediaFrameReference** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Buffer(IBuffer** value) = 0;
};

}  // namespace vexcap::windows::abi
