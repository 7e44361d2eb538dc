// Enumerations, structures, interface names and runtime classes of the Windows Runtime ABI
// this adapter speaks. Values are the platform's own.
#pragma once

#include "platform/windows/winrt/abi_base.h"
#include "platform/windows/winrt/signature.h"

namespace vexcap::windows::abi {

enum class DeviceClass : INT32 { All = 0, AudioCapture = 1, AudioRender = 2, PortableStorageDevice = 3, VideoCapture = 4, ImageScanner = 5, Location = 6 };
VEXCAP_WINRT_VALUE_TYPE(DeviceClass, "DeviceClass", "enum(Windows.Devices.Enumeration.DeviceClass;i4)");
enum class DeviceInformationKind : INT32 { Unknown = 0, DeviceInterface = 1, DeviceContainer = 2, Device = 3, DeviceInterfaceClass = 4, AssociationEndpoint = 5, AssociationEndpointContainer = 6, AssociationEndpointService = 7, DevicePanel = 8 };
VEXCAP_WINRT_VALUE_TYPE(DeviceInformationKind, "DeviceInformationKind", "enum(Windows.Devices.Enumeration.DeviceInformationKind;i4)");
enum class DevicePairingProtectionLevel : INT32 { Default = 0, None = 1, Encryption = 2, EncryptionAndAuthentication = 3 };
VEXCAP_WINRT_VALUE_TYPE(DevicePairingProtectionLevel, "DevicePairingProtectionLevel", "enum(Windows.Devices.Enumeration.DevicePairingProtectionLevel;i4)");
enum class DeviceWatcherStatus : INT32 { Created = 0, Started = 1, EnumerationCompleted = 2, Stopping = 3, Stopped = 4, Aborted = 5 };
VEXCAP_WINRT_VALUE_TYPE(DeviceWatcherStatus, "DeviceWatcherStatus", "enum(Windows.Devices.Enumeration.DeviceWatcherStatus;i4)");
enum class Panel : INT32 { Unknown = 0, Front = 1, Back = 2, Top = 3, Bottom = 4, Left = 5, Right = 6 };
VEXCAP_WINRT_VALUE_TYPE(Panel, "Panel", "enum(Windows.Devices.Enumeration.Panel;i4)");
enum class AsyncStatus : INT32 { Started = 0, Completed = 1, Canceled = 2, Error = 3 };
VEXCAP_WINRT_VALUE_TYPE(AsyncStatus, "AsyncStatus", "enum(Windows.Foundation.AsyncStatus;i4)");
enum class PropertyType : INT32 { Empty = 0, UInt8 = 1, Int16 = 2, UInt16 = 3, Int32 = 4, UInt32 = 5, Int64 = 6, UInt64 = 7, Single = 8, Double = 9, Char16 = 10, Boolean = 11, String = 12, Inspectable = 13, DateTime = 14, TimeSpan = 15, Guid = 16, Point = 17, Size = 18, Rect = 19, OtherType = 20, UInt8Array = 1025, Int16Array = 1026, UInt16Array = 1027, Int32Array = 1028, UInt32Array = 1029, Int64Array = 1030, UInt64Array = 1031, SingleArray = 1032, DoubleArray = 1033, Char16Array = 1034, BooleanArray = 1035, StringArray = 1036, InspectableArray = 1037, DateTimeArray = 1038, TimeSpanArray = 1039, GuidArray = 1040, PointArray = 1041, SizeArray = 1042, RectArray = 1043, OtherTypeArray = 1044 };
VEXCAP_WINRT_VALUE_TYPE(PropertyType, "PropertyType", "enum(Windows.Foundation.PropertyType;i4)");
enum class BitmapAlphaMode : INT32 { Premultiplied = 0, Straight = 1, Ignore = 2 };
VEXCAP_WINRT_VALUE_TYPE(BitmapAlphaMode, "BitmapAlphaMode", "enum(Windows.Graphics.Imaging.BitmapAlphaMode;i4)");
enum class BitmapBufferAccessMode : INT32 { Read = 0, ReadWrite = 1, Write = 2 };
VEXCAP_WINRT_VALUE_TYPE(BitmapBufferAccessMode, "BitmapBufferAccessMode", "enum(Windows.Graphics.Imaging.BitmapBufferAccessMode;i4)");
enum class BitmapPixelFormat : INT32 { Unknown = 0, Rgba16 = 12, Rgba8 = 30, Gray16 = 57, Gray8 = 62, Bgra8 = 87, Nv12 = 103, P010 = 104, Yuy2 = 107 };
VEXCAP_WINRT_VALUE_TYPE(BitmapPixelFormat, "BitmapPixelFormat", "enum(Windows.Graphics.Imaging.BitmapPixelFormat;i4)");
enum class AudioProcessing : INT32 { Default = 0, Raw = 1 };
VEXCAP_WINRT_VALUE_TYPE(AudioProcessing, "AudioProcessing", "enum(Windows.Media.AudioProcessing;i4)");
enum class MediaFrameReaderAcquisitionMode : INT32 { Realtime = 0, Buffered = 1 };
VEXCAP_WINRT_VALUE_TYPE(MediaFrameReaderAcquisitionMode, "MediaFrameReaderAcquisitionMode", "enum(Windows.Media.Capture.Frames.MediaFrameReaderAcquisitionMode;i4)");
enum class MediaFrameReaderStartStatus : INT32 { Success = 0, UnknownFailure = 1, DeviceNotAvailable = 2, OutputFormatNotSupported = 3, ExclusiveControlNotAvailable = 4 };
VEXCAP_WINRT_VALUE_TYPE(MediaFrameReaderStartStatus, "MediaFrameReaderStartStatus", "enum(Windows.Media.Capture.Frames.MediaFrameReaderStartStatus;i4)");
enum class MediaFrameSourceGetPropertyStatus : INT32 { Success = 0, UnknownFailure = 1, NotSupported = 2, DeviceNotAvailable = 3, MaxPropertyValueSizeTooSmall = 4, MaxPropertyValueSizeRequired = 5 };
VEXCAP_WINRT_VALUE_TYPE(MediaFrameSourceGetPropertyStatus, "MediaFrameSourceGetPropertyStatus", "enum(Windows.Media.Capture.Frames.MediaFrameSourceGetPropertyStatus;i4)");
enum class MediaFrameSourceKind : INT32 { Custom = 0, Color = 1, Infrared = 2, Depth = 3, Audio = 4, Image = 5, Metadata = 6 };
VEXCAP_WINRT_VALUE_TYPE(MediaFrameSourceKind, "MediaFrameSourceKind", "enum(Windows.Media.Capture.Frames.MediaFrameSourceKind;i4)");
enum class MediaFrameSourceSetPropertyStatus : INT32 { Success = 0, UnknownFailure = 1, NotSupported = 2, InvalidValue = 3, DeviceNotAvailable = 4, NotInControl = 5 };
VEXCAP_WINRT_VALUE_TYPE(MediaFrameSourceSetPropertyStatus, "MediaFrameSourceSetPropertyStatus", "enum(Windows.Media.Capture.Frames.MediaFrameSourceSetPropertyStatus;i4)");
enum class MediaCaptureDeviceExclusiveControlStatus : INT32 { ExclusiveControlAvailable = 0, SharedReadOnlyAvailable = 1 };
VEXCAP_WINRT_VALUE_TYPE(MediaCaptureDeviceExclusiveControlStatus, "MediaCaptureDeviceExclusiveControlStatus", "enum(Windows.Media.Capture.MediaCaptureDeviceExclusiveControlStatus;i4)");
enum class MediaCaptureMemoryPreference : INT32 { Auto = 0, Cpu = 1 };
VEXCAP_WINRT_VALUE_TYPE(MediaCaptureMemoryPreference, "MediaCaptureMemoryPreference", "enum(Windows.Media.Capture.MediaCaptureMemoryPreference;i4)");
enum class MediaCaptureSharingMode : INT32 { ExclusiveControl = 0, SharedReadOnly = 1 };
VEXCAP_WINRT_VALUE_TYPE(MediaCaptureSharingMode, "MediaCaptureSharingMode", "enum(Windows.Media.Capture.MediaCaptureSharingMode;i4)");
enum class MediaCaptureThermalStatus : INT32 { Normal = 0, Overheated = 1 };
VEXCAP_WINRT_VALUE_TYPE(MediaCaptureThermalStatus, "MediaCaptureThermalStatus", "enum(Windows.Media.Capture.MediaCaptureThermalStatus;i4)");
enum class MediaCategory : INT32 { Other = 0, Communications = 1, Media = 2, GameChat = 3, Speech = 4, FarFieldSpeech = 5, UniformSpeech = 6, VoiceTyping = 7 };
VEXCAP_WINRT_VALUE_TYPE(MediaCategory, "MediaCategory", "enum(Windows.Media.Capture.MediaCategory;i4)");
enum class MediaStreamType : INT32 { VideoPreview = 0, VideoRecord = 1, Audio = 2, Photo = 3, Metadata = 4 };
VEXCAP_WINRT_VALUE_TYPE(MediaStreamType, "MediaStreamType", "enum(Windows.Media.Capture.MediaStreamType;i4)");
enum class PhotoCaptureSource : INT32 { Auto = 0, VideoPreview = 1, Photo = 2 };
VEXCAP_WINRT_VALUE_TYPE(PhotoCaptureSource, "PhotoCaptureSource", "enum(Windows.Media.Capture.PhotoCaptureSource;i4)");
enum class PowerlineFrequency : INT32 { Disabled = 0, FiftyHertz = 1, SixtyHertz = 2, Auto = 3 };
VEXCAP_WINRT_VALUE_TYPE(PowerlineFrequency, "PowerlineFrequency", "enum(Windows.Media.Capture.PowerlineFrequency;i4)");
enum class StreamingCaptureMode : INT32 { AudioAndVideo = 0, Audio = 1, Video = 2 };
VEXCAP_WINRT_VALUE_TYPE(StreamingCaptureMode, "StreamingCaptureMode", "enum(Windows.Media.Capture.StreamingCaptureMode;i4)");
enum class VideoRotation : INT32 { None = 0, Clockwise90Degrees = 1, Clockwise180Degrees = 2, Clockwise270Degrees = 3 };
VEXCAP_WINRT_VALUE_TYPE(VideoRotation, "VideoRotation", "enum(Windows.Media.Capture.VideoRotation;i4)");
enum class CameraStreamState : INT32 { NotStreaming = 0, Streaming = 1, BlockedForPrivacy = 2, Shutdown = 3 };
VEXCAP_WINRT_VALUE_TYPE(CameraStreamState, "CameraStreamState", "enum(Windows.Media.Devices.CameraStreamState;i4)");
enum class CaptureUse : INT32 { None = 0, Photo = 1, Video = 2 };
VEXCAP_WINRT_VALUE_TYPE(CaptureUse, "CaptureUse", "enum(Windows.Media.Devices.CaptureUse;i4)");
enum class InfraredTorchMode : INT32 { Off = 0, On = 1, AlternatingFrameIllumination = 2 };
VEXCAP_WINRT_VALUE_TYPE(InfraredTorchMode, "InfraredTorchMode", "enum(Windows.Media.Devices.InfraredTorchMode;i4)");
enum class IsoSpeedPreset : INT32 { Auto = 0, Iso50 = 1, Iso80 = 2, Iso100 = 3, Iso200 = 4, Iso400 = 5, Iso800 = 6, Iso1600 = 7, Iso3200 = 8, Iso6400 = 9, Iso12800 = 10, Iso25600 = 11 };
VEXCAP_WINRT_VALUE_TYPE(IsoSpeedPreset, "IsoSpeedPreset", "enum(Windows.Media.Devices.IsoSpeedPreset;i4)");
enum class MediaCapturePauseBehavior : INT32 { RetainHardwareResources = 0, ReleaseHardwareResources = 1 };
VEXCAP_WINRT_VALUE_TYPE(MediaCapturePauseBehavior, "MediaCapturePauseBehavior", "enum(Windows.Media.Devices.MediaCapturePauseBehavior;i4)");
enum class VideoDeviceControllerSetDevicePropertyStatus : INT32 { Success = 0, UnknownFailure = 1, NotSupported = 2, InvalidValue = 3, DeviceNotAvailable = 4, NotInControl = 5 };
VEXCAP_WINRT_VALUE_TYPE(VideoDeviceControllerSetDevicePropertyStatus, "VideoDeviceControllerSetDevicePropertyStatus", "enum(Windows.Media.Devices.VideoDeviceControllerSetDevicePropertyStatus;i4)");

struct BitmapPlaneDescription {
  INT32 StartIndex;
  INT32 Width;
  INT32 Height;
  INT32 Stride;
};
struct BitmapSize {
  UINT32 Width;
  UINT32 Height;
};

struct IMediaCapture;
struct IMediaCapture4;
struct IMediaCapture5;
struct IMediaCapture6;
struct IMediaCaptureInitializationSettings;
struct IMediaCaptureInitializationSettings2;
struct IMediaCaptureInitializationSettings3;
struct IMediaCaptureInitializationSettings4;
struct IMediaCaptureInitializationSettings5;
struct IMediaCaptureFailedEventArgs;
struct IMediaCaptureDeviceExclusiveControlStatusChangedEventArgs;
struct IMediaFrameSourceGroupStatics;
struct IMediaFrameSourceGroup;
struct IMediaFrameSourceInfo;
struct IMediaFrameSourceInfo2;
struct IMediaFrameSourceInfo3;
struct IMediaFrameSourceInfo4;
struct IMediaFrameSource;
struct IMediaFrameSourceController;
struct IMediaFrameSourceController2;
struct IMediaFrameSourceGetPropertyResult;
struct IMediaFrameFormat;
struct IVideoMediaFrameFormat;
struct IMediaFrameReader;
struct IMediaFrameReader2;
struct IMediaFrameArrivedEventArgs;
struct IMediaFrameReference;
struct IVideoMediaFrame;
struct IBufferMediaFrame;
struct IMediaDeviceController;
struct IVideoDeviceController;
struct IMediaDeviceControl;
struct IMediaDeviceControlCapabilities;
struct IAdvancedVideoCaptureDeviceController;
struct IAdvancedVideoCaptureDeviceController2;
struct IAdvancedVideoCaptureDeviceController5;
struct IAdvancedVideoCaptureDeviceController7;
struct IExposureControl;
struct IIsoSpeedControl;
struct IIsoSpeedControl2;
struct ITorchControl;
struct IInfraredTorchControl;
struct IDeviceInformation;
struct IDeviceInformation2;
struct IDeviceInformationPairing;
struct IDeviceInformationStatics;
struct IDeviceWatcher;
struct IDeviceInformationUpdate;
struct IEnclosureLocation;
struct IEnclosureLocation2;
struct ISoftwareBitmap;
struct ISoftwareBitmapStatics;
struct ISoftwareBitmapFactory;
struct IBitmapBuffer;
struct IAsyncAction;
struct IClosable;
struct IPropertyValue;
struct IPropertyValueStatics;
struct IMemoryBuffer;
struct IMemoryBufferReference;
struct IBuffer;
struct IBufferFactory;
struct IBufferStatics;
struct IAsyncInfo;
struct IMediaCaptureFailedEventHandler;
struct IAsyncActionCompletedHandler;
struct IMemoryBufferByteAccess;
struct IMediaRatio;
struct IInfraredMediaFrame;
struct IBufferByteAccess;

// Runtime classes: their names and default interfaces enter the signatures of the
// parameterized interfaces they are arguments of.
struct MediaCapture {
  static constexpr fixed_string name{"Windows.Media.Capture.MediaCapture"};
  using default_interface = IMediaCapture;
};
struct MediaCaptureInitializationSettings {
  static constexpr fixed_string name{"Windows.Media.Capture.MediaCaptureInitializationSettings"};
  using default_interface = IMediaCaptureInitializationSettings;
};
struct MediaCaptureFailedEventArgs {
  static constexpr fixed_string name{"Windows.Media.Capture.MediaCaptureFailedEventArgs"};
  using default_interface = IMediaCaptureFailedEventArgs;
};
struct MediaCaptureDeviceExclusiveControlStatusChangedEventArgs {
  static constexpr fixed_string name{"Windows.Media.Capture.MediaCaptureDeviceExclusiveControlStatusChangedEventArgs"};
  using default_interface = IMediaCaptureDeviceExclusiveControlStatusChangedEventArgs;
};
struct MediaFrameSourceGroup {
  static constexpr fixed_string name{"Windows.Media.Capture.Frames.MediaFrameSourceGroup"};
  using default_interface = IMediaFrameSourceGroup;
};
struct MediaFrameSourceInfo {
  static constexpr fixed_string name{"Windows.Media.Capture.Frames.MediaFrameSourceInfo"};
  using default_interface = IMediaFrameSourceInfo;
};
struct MediaFrameSource {
  static constexpr fixed_string name{"Windows.Media.Capture.Frames.MediaFrameSource"};
  using default_interface = IMediaFrameSource;
};
struct MediaFrameSourceController {
  static constexpr fixed_string name{"Windows.Media.Capture.Frames.MediaFrameSourceController"};
  using default_interface = IMediaFrameSourceController;
};
struct MediaFrameSourceGetPropertyResult {
  static constexpr fixed_string name{"Windows.Media.Capture.Frames.MediaFrameSourceGetPropertyResult"};
  using default_interface = IMediaFrameSourceGetPropertyResult;
};
struct MediaFrameFormat {
  static constexpr fixed_string name{"Windows.Media.Capture.Frames.MediaFrameFormat"};
  using default_interface = IMediaFrameFormat;
};
struct VideoMediaFrameFormat {
  static constexpr fixed_string name{"Windows.Media.Capture.Frames.VideoMediaFrameFormat"};
  using default_interface = IVideoMediaFrameFormat;
};
struct MediaFrameReader {
  static constexpr fixed_string name{"Windows.Media.Capture.Frames.MediaFrameReader"};
  using default_interface = IMediaFrameReader;
};
struct MediaFrameArrivedEventArgs {
  static constexpr fixed_string name{"Windows.Media.Capture.Frames.MediaFrameArrivedEventArgs"};
  using default_interface = IMediaFrameArrivedEventArgs;
};
struct MediaFrameReference {
  static constexpr fixed_string name{"Windows.Media.Capture.Frames.MediaFrameReference"};
  using default_interface = IMediaFrameReference;
};
struct VideoMediaFrame {
  static constexpr fixed_string name{"Windows.Media.Capture.Frames.VideoMediaFrame"};
  using default_interface = IVideoMediaFrame;
};
struct BufferMediaFrame {
  static constexpr fixed_string name{"Windows.Media.Capture.Frames.BufferMediaFrame"};
  using default_interface = IBufferMediaFrame;
};
struct VideoDeviceController {
  static constexpr fixed_string name{"Windows.Media.Devices.VideoDeviceController"};
  using default_interface = IVideoDeviceController;
};
struct MediaDeviceControl {
  static constexpr fixed_string name{"Windows.Media.Devices.MediaDeviceControl"};
  using default_interface = IMediaDeviceControl;
};
struct MediaDeviceControlCapabilities {
  static constexpr fixed_string name{"Windows.Media.Devices.MediaDeviceControlCapabilities"};
  using default_interface = IMediaDeviceControlCapabilities;
};
struct ExposureControl {
  static constexpr fixed_string name{"Windows.Media.Devices.ExposureControl"};
  using default_interface = IExposureControl;
};
struct IsoSpeedControl {
  static constexpr fixed_string name{"Windows.Media.Devices.IsoSpeedControl"};
  using default_interface = IIsoSpeedControl;
};
struct TorchControl {
  static constexpr fixed_string name{"Windows.Media.Devices.TorchControl"};
  using default_interface = ITorchControl;
};
struct InfraredTorchControl {
  static constexpr fixed_string name{"Windows.Media.Devices.InfraredTorchControl"};
  using default_interface = IInfraredTorchControl;
};
struct SoftwareBitmap {
  static constexpr fixed_string name{"Windows.Graphics.Imaging.SoftwareBitmap"};
  using default_interface = ISoftwareBitmap;
};
struct BitmapBuffer {
  static constexpr fixed_string name{"Windows.Graphics.Imaging.BitmapBuffer"};
  using default_interface = IBitmapBuffer;
};
struct DeviceInformation {
  static constexpr fixed_string name{"Windows.Devices.Enumeration.DeviceInformation"};
  using default_interface = IDeviceInformation;
};
struct DeviceInformationUpdate {
  static constexpr fixed_string name{"Windows.Devices.Enumeration.DeviceInformationUpdate"};
  using default_interface = IDeviceInformationUpdate;
};
struct DeviceInformationPairing {
  static constexpr fixed_string name{"Windows.Devices.Enumeration.DeviceInformationPairing"};
  using default_interface = IDeviceInformationPairing;
};
struct DeviceWatcher {
  static constexpr fixed_string name{"Windows.Devices.Enumeration.DeviceWatcher"};
  using default_interface = IDeviceWatcher;
};
struct EnclosureLocation {
  static constexpr fixed_string name{"Windows.Devices.Enumeration.EnclosureLocation"};
  using default_interface = IEnclosureLocation;
};
struct Buffer {
  static constexpr fixed_string name{"Windows.Storage.Streams.Buffer"};
  using default_interface = IBuffer;
};
struct MemoryBuffer {
  static constexpr fixed_string name{"Windows.Foundation.MemoryBuffer"};
  using default_interface = IMemoryBuffer;
};

}  // namespace vexcap::windows::abi
