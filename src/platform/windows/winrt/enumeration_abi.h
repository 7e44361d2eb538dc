// Windows.Devices.Enumeration: device information and the device watcher.
// Declared from the published metadata; the slot order is checked by the ABI test.
#pragma once

#include "platform/windows/winrt/generics_abi.h"

namespace vexcap::windows::abi {

// Windows.Devices.Enumeration.IDeviceInformation
struct IDeviceInformation : IInspectable {
  static constexpr GUID iid = {0xaba0fb95, 0x4398, 0x489d, {0x8e, 0x44, 0xe6, 0x13, 0x09, 0x27, 0x01, 0x1f}};
  virtual HRESULT STDMETHODCALLTYPE get_Id(HSTRING* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Name(HSTRING* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_IsEnabled(boolean* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_IsDefault(boolean* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_EnclosureLocation(IEnclosureLocation** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Properties(IMapView<HSTRING, IInspectable>** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE Update(IDeviceInformationUpdate* updateInfo) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetThumbnailAsync(IInspectable** asyncOp) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetGlyphThumbnailAsync(IInspectable** asyncOp) = 0;
};

// Windows.Devices.Enumeration.IDeviceInformation2
struct IDeviceInformation2 : IInspectable {
  static constexpr GUID iid = {0xf156a638, 0x7997, 0x48d9, {0xa1, 0x0c, 0x26, 0x9d, 0x46, 0x53, 0x3f, 0x48}};
  virtual HRESULT STDMETHODCALLTYPE get_Kind(DeviceInformationKind* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Pairing(IDeviceInformationPairing** value) = 0;
};

// Windows.Devices.Enumeration.IDeviceInformationPairing
struct IDeviceInformationPairing : IInspectable {
  static constexpr GUID iid = {0x2c4769f5, 0xf684, 0x40d5, {0x84, 0x69, 0xe8, 0xdb, 0xaa, 0xb7, 0x04, 0x85}};
  virtual HRESULT STDMETHODCALLTYPE get_IsPaired(boolean* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_CanPair(boolean* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE PairAsync(IInspectable** result) = 0;
  virtual HRESULT STDMETHODCALLTYPE PairWithProtectionLevelAsync(DevicePairingProtectionLevel minProtectionLevel, IInspectable** result) = 0;
};

// Windows.Devices.Enumeration.IDeviceInformationStatics
struct IDeviceInformationStatics : IInspectable {
  static constexpr GUID iid = {0xc17f100e, 0x3a46, 0x4a78, {0x80, 0x13, 0x76, 0x9d, 0xc9, 0xb9, 0x73, 0x90}};
  virtual HRESULT STDMETHODCALLTYPE CreateFromIdAsync(HSTRING deviceId, IAsyncOperation<DeviceInformation>** asyncOp) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateFromIdAsyncAdditionalProperties(HSTRING deviceId, IIterable<HSTRING>* additionalProperties, IAsyncOperation<DeviceInformation>** asyncOp) = 0;
  virtual HRESULT STDMETHODCALLTYPE FindAllAsync(IInspectable** asyncOp) = 0;
  virtual HRESULT STDMETHODCALLTYPE FindAllAsyncDeviceClass(DeviceClass deviceClass, IInspectable** asyncOp) = 0;
  virtual HRESULT STDMETHODCALLTYPE FindAllAsyncAqsFilter(HSTRING aqsFilter, IInspectable** asyncOp) = 0;
  virtual HRESULT STDMETHODCALLTYPE FindAllAsyncAqsFilterAndAdditionalProperties(HSTRING aqsFilter, IIterable<HSTRING>* additionalProperties, IInspectable** asyncOp) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateWatcher(IDeviceWatcher** watcher) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateWatcherDeviceClass(DeviceClass deviceClass, IDeviceWatcher** watcher) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateWatcherAqsFilter(HSTRING aqsFilter, IDeviceWatcher** watcher) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateWatcherAqsFilterAndAdditionalProperties(HSTRING aqsFilter, IIterable<HSTRING>* additionalProperties, IDeviceWatcher** watcher) = 0;
};

// Windows.Devices.Enumeration.IDeviceWatcher
struct IDeviceWatcher : IInspectable {
  static constexpr GUID iid = {0xc9eab97d, 0x8f6b, 0x4f96, {0xa9, 0xf4, 0xab, 0xc8, 0x14, 0xe2, 0x22, 0x71}};
  virtual HRESULT STDMETHODCALLTYPE add_Added(ITypedEventHandler<DeviceWatcher, DeviceInformation>* handler, EventRegistrationToken* token) = 0;
  virtual HRESULT STDMETHODCALLTYPE remove_Added(EventRegistrationToken token) = 0;
  virtual HRESULT STDMETHODCALLTYPE add_Updated(ITypedEventHandler<DeviceWatcher, DeviceInformationUpdate>* handler, EventRegistrationToken* token) = 0;
  virtual HRESULT STDMETHODCALLTYPE remove_Updated(EventRegistrationToken token) = 0;
  virtual HRESULT STDMETHODCALLTYPE add_Removed(ITypedEventHandler<DeviceWatcher, DeviceInformationUpdate>* handler, EventRegistrationToken* token) = 0;
  virtual HRESULT STDMETHODCALLTYPE remove_Removed(EventRegistrationToken token) = 0;
  virtual HRESULT STDMETHODCALLTYPE add_EnumerationCompleted(ITypedEventHandler<DeviceWatcher, IInspectable>* handler, EventRegistrationToken* token) = 0;
  virtual HRESULT STDMETHODCALLTYPE remove_EnumerationCompleted(EventRegistrationToken token) = 0;
  virtual HRESULT STDMETHODCALLTYPE add_Stopped(ITypedEventHandler<DeviceWatcher, IInspectable>* handler, EventRegistrationToken* token) = 0;
  virtual HRESULT STDMETHODCALLTYPE remove_Stopped(EventRegistrationToken token) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Status(DeviceWatcherStatus* status) = 0;
  virtual HRESULT STDMETHODCALLTYPE Start() = 0;
  virtual HRESULT STDMETHODCALLTYPE Stop() = 0;
};

// Windows.Devices.Enumeration.IDeviceInformationUpdate
struct IDeviceInformationUpdate : IInspectable {
  static constexpr GUID iid = {0x8f315305, 0xd972, 0x44b7, {0xa3, 0x7e, 0x9e, 0x82, 0x2c, 0x78, 0x21, 0x3b}};
  virtual HRESULT STDMETHODCALLTYPE get_Id(HSTRING* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Properties(IMapView<HSTRING, IInspectable>** value) = 0;
};

// Windows.Devices.Enumeration.IEnclosureLocation
struct IEnclosureLocation : IInspectable {
  static constexpr GUID iid = {0x42340a27, 0x5810, 0x459c, {0xaa, 0xbb, 0xc6, 0x5e, 0x1f, 0x81, 0x3e, 0xcf}};
  virtual HRESULT STDMETHODCALLTYPE get_InDock(boolean* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_InLid(boolean* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Panel(Panel* value) = 0;
};

// Windows.Devices.Enumeration.IEnclosureLocation2
struct IEnclosureLocation2 : IInspectable {
  static constexpr GUID iid = {0x2885995b, 0xe07d, 0x485d, {0x8a, 0x9e, 0xbd, 0xf2, 0x9a, 0xef, 0x4f, 0x66}};
  virtual HRESULT STDMETHODCALLTYPE get_RotationAngleInDegreesClockwise(UINT32* value) = 0;
};

}  // namespace vexcap::windows::abi
