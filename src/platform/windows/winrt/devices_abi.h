// Windows.Media.Devices: the video device controller and its controls.
// Declared from the published metadata; the slot order is checked by the ABI test.
#pragma once

#include "platform/windows/winrt/generics_abi.h"

namespace vexcap::windows::abi {

// Windows.Media.Devices.IMediaDeviceController
struct IMediaDeviceController : IInspectable {
  static constexpr GUID iid = {0xf6f8f5ce, 0x209a, 0x48fb, {0x86, 0xfc, 0xd4, 0x45, 0x78, 0xf3, 0x17, 0xe6}};
  virtual HRESULT STDMETHODCALLTYPE GetAvailableMediaStreamProperties(MediaStreamType mediaStreamType, IInspectable** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetMediaStreamProperties(MediaStreamType mediaStreamType, IInspectable** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetMediaStreamPropertiesAsync(MediaStreamType mediaStreamType, IInspectable* mediaEncodingProperties, IAsyncAction** asyncInfo) = 0;
};

// Windows.Media.Devices.IVideoDeviceController
// requires IMediaDeviceController; those 3 methods are NOT in this vtable (QueryInterface for IMediaDeviceController)
struct IVideoDeviceController : IInspectable {
  static constexpr GUID iid = {0x99555575, 0x2e2e, 0x40b8, {0xb6, 0xc7, 0xf8, 0x2d, 0x10, 0x01, 0x32, 0x10}};
  virtual HRESULT STDMETHODCALLTYPE get_Brightness(IMediaDeviceControl** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Contrast(IMediaDeviceControl** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Hue(IMediaDeviceControl** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_WhiteBalance(IMediaDeviceControl** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_BacklightCompensation(IMediaDeviceControl** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Pan(IMediaDeviceControl** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Tilt(IMediaDeviceControl** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Zoom(IMediaDeviceControl** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Roll(IMediaDeviceControl** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Exposure(IMediaDeviceControl** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Focus(IMediaDeviceControl** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE TrySetPowerlineFrequency(PowerlineFrequency value, boolean* succeeded) = 0;
  virtual HRESULT STDMETHODCALLTYPE TryGetPowerlineFrequency(PowerlineFrequency* value, boolean* succeeded) = 0;
};

// Windows.Media.Devices.IMediaDeviceControl
struct IMediaDeviceControl : IInspectable {
  static constexpr GUID iid = {0xefa8dfa9, 0x6f75, 0x4863, {0xba, 0x0b, 0x58, 0x3f, 0x30, 0x36, 0xb4, 0xde}};
  virtual HRESULT STDMETHODCALLTYPE get_Capabilities(IMediaDeviceControlCapabilities** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE TryGetValue(DOUBLE* value, boolean* succeeded) = 0;
  virtual HRESULT STDMETHODCALLTYPE TrySetValue(DOUBLE value, boolean* succeeded) = 0;
  virtual HRESULT STDMETHODCALLTYPE TryGetAuto(boolean* value, boolean* succeeded) = 0;
  virtual HRESULT STDMETHODCALLTYPE TrySetAuto(boolean value, boolean* succeeded) = 0;
};

// Windows.Media.Devices.IMediaDeviceControlCapabilities
struct IMediaDeviceControlCapabilities : IInspectable {
  static constexpr GUID iid = {0x23005816, 0xeb85, 0x43e2, {0xb9, 0x2b, 0x82, 0x40, 0xd5, 0xee, 0x70, 0xec}};
  virtual HRESULT STDMETHODCALLTYPE get_Supported(boolean* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Min(DOUBLE* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Max(DOUBLE* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Step(DOUBLE* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Default(DOUBLE* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_AutoModeSupported(boolean* value) = 0;
};

// Windows.Media.Devices.IAdvancedVideoCaptureDeviceController
struct IAdvancedVideoCaptureDeviceController : IInspectable {
  static constexpr GUID iid = {0xde6ff4d3, 0x2b96, 0x4583, {0x80, 0xab, 0xb5, 0xb0, 0x1d, 0xc6, 0xa8, 0xd7}};
  virtual HRESULT STDMETHODCALLTYPE SetDeviceProperty(HSTRING propertyId, IInspectable* propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetDeviceProperty(HSTRING propertyId, IInspectable** propertyValue) = 0;
};

// Windows.Media.Devices.IAdvancedVideoCaptureDeviceController2
struct IAdvancedVideoCaptureDeviceController2 : IInspectable {
  static constexpr GUID iid = {0x8bb94f8f, 0xf11a, 0x43db, {0xb4, 0x02, 0x11, 0x93, 0x0b, 0x80, 0xae, 0x56}};
  virtual HRESULT STDMETHODCALLTYPE get_LowLagPhotoSequence(IInspectable** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_LowLagPhoto(IInspectable** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_SceneModeControl(IInspectable** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_TorchControl(ITorchControl** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_FlashControl(IInspectable** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_WhiteBalanceControl(IInspectable** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_ExposureControl(IExposureControl** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_FocusControl(IInspectable** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_ExposureCompensationControl(IInspectable** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_IsoSpeedControl(IIsoSpeedControl** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_RegionsOfInterestControl(IInspectable** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_PrimaryUse(CaptureUse* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_PrimaryUse(CaptureUse value) = 0;
};

// Windows.Media.Devices.IAdvancedVideoCaptureDeviceController5
struct IAdvancedVideoCaptureDeviceController5 : IInspectable {
  static constexpr GUID iid = {0x33512b17, 0xb9cb, 0x4a23, {0xb8, 0x75, 0xf9, 0xea, 0xab, 0x53, 0x54, 0x92}};
  virtual HRESULT STDMETHODCALLTYPE get_Id(HSTRING* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetDevicePropertyById(HSTRING propertyId, IReference<UINT32>* maxPropertyValueSize, IInspectable** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetDevicePropertyById(HSTRING propertyId, IInspectable* propertyValue, VideoDeviceControllerSetDevicePropertyStatus* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetDevicePropertyByExtendedId(UINT32 extendedPropertyIdLength, BYTE* extendedPropertyId, IReference<UINT32>* maxPropertyValueSize, IInspectable** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetDevicePropertyByExtendedId(UINT32 extendedPropertyIdLength, BYTE* extendedPropertyId, UINT32 propertyValueLength, BYTE* propertyValue, VideoDeviceControllerSetDevicePropertyStatus* value) = 0;
};

// Windows.Media.Devices.IAdvancedVideoCaptureDeviceController7
// only member: InfraredTorchControl
struct IAdvancedVideoCaptureDeviceController7 : IInspectable {
  static constexpr GUID iid = {0x8d2927f0, 0xa054, 0x50e7, {0xb7, 0xdf, 0x7c, 0x04, 0x23, 0x4d, 0x10, 0xf0}};
  virtual HRESULT STDMETHODCALLTYPE get_InfraredTorchControl(IInfraredTorchControl** value) = 0;
};

// Windows.Media.Devices.IExposureControl
struct IExposureControl : IInspectable {
  static constexpr GUID iid = {0x09e8cbe2, 0xad96, 0x4f28, {0xa0, 0xe0, 0x96, 0xed, 0x7e, 0x1b, 0x5f, 0xd2}};
  virtual HRESULT STDMETHODCALLTYPE get_Supported(boolean* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Auto(boolean* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetAutoAsync(boolean value, IAsyncAction** asyncInfo) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Min(TimeSpan* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Max(TimeSpan* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Step(TimeSpan* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Value(TimeSpan* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetValueAsync(TimeSpan shutterDuration, IAsyncAction** asyncInfo) = 0;
};

// Windows.Media.Devices.IIsoSpeedControl
struct IIsoSpeedControl : IInspectable {
  static constexpr GUID iid = {0x27b6c322, 0x25ad, 0x4f1b, {0xaa, 0xab, 0x52, 0x4a, 0xb3, 0x76, 0xca, 0x33}};
  virtual HRESULT STDMETHODCALLTYPE get_Supported(boolean* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_SupportedPresets(IVectorView<IsoSpeedPreset>** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Preset(IsoSpeedPreset* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetPresetAsync(IsoSpeedPreset preset, IAsyncAction** asyncInfo) = 0;
};

// Windows.Media.Devices.IIsoSpeedControl2
// SetAutoAsync takes no input parameter
struct IIsoSpeedControl2 : IInspectable {
  static constexpr GUID iid = {0x6f1578f2, 0x6d77, 0x4f8a, {0x8c, 0x2f, 0x61, 0x30, 0xb6, 0x39, 0x50, 0x53}};
  virtual HRESULT STDMETHODCALLTYPE get_Min(UINT32* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Max(UINT32* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Step(UINT32* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Value(UINT32* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetValueAsync(UINT32 isoSpeed, IAsyncAction** asyncInfo) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Auto(boolean* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetAutoAsync(IAsyncAction** asyncInfo) = 0;
};

// Windows.Media.Devices.ITorchControl
struct ITorchControl : IInspectable {
  static constexpr GUID iid = {0xa6053665, 0x8250, 0x416c, {0x91, 0x9a, 0x72, 0x42, 0x96, 0xaf, 0xa3, 0x06}};
  virtual HRESULT STDMETHODCALLTYPE get_Supported(boolean* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_PowerSupported(boolean* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Enabled(boolean* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_Enabled(boolean value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_PowerPercent(FLOAT* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_PowerPercent(FLOAT value) = 0;
};

// Windows.Media.Devices.IInfraredTorchControl
struct IInfraredTorchControl : IInspectable {
  static constexpr GUID iid = {0x1cba2c83, 0x6cb6, 0x5a04, {0xa6, 0xfc, 0x3b, 0xe7, 0xb3, 0x3f, 0xf0, 0x56}};
  virtual HRESULT STDMETHODCALLTYPE get_IsSupported(boolean* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_SupportedModes(IVectorView<InfraredTorchMode>** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_CurrentMode(InfraredTorchMode* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_CurrentMode(InfraredTorchMode value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_MinPower(INT32* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_MaxPower(INT32* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_PowerStep(INT32* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Power(INT32* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_Power(INT32 value) = 0;
};

}  // namespace vexcap::windows::abi
