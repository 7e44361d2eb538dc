// Windows Runtime activation: instances of activatable classes and their factories.
#pragma once

#include <roapi.h>

#include "platform/windows/com_ptr.h"
#include "platform/windows/hstring.h"
#include "platform/windows/platform_error.h"

namespace vexcap::windows {

// The class ids the adapter activates.
namespace class_id {
inline constexpr wchar_t media_capture[] = L"Windows.Media.Capture.MediaCapture";
inline constexpr wchar_t media_capture_initialization_settings[] = L"Windows.Media.Capture.MediaCaptureInitializationSettings";
inline constexpr wchar_t media_frame_source_group[] = L"Windows.Media.Capture.Frames.MediaFrameSourceGroup";
inline constexpr wchar_t device_information[] = L"Windows.Devices.Enumeration.DeviceInformation";
inline constexpr wchar_t software_bitmap[] = L"Windows.Graphics.Imaging.SoftwareBitmap";
inline constexpr wchar_t buffer[] = L"Windows.Storage.Streams.Buffer";
inline constexpr wchar_t property_value[] = L"Windows.Foundation.PropertyValue";
}  // namespace class_id

// The factory or statics interface `iid` of a class: RoGetActivationFactory the first time,
// then the same object from a cache that lives as long as the runtime (frames and property
// reads use factories many times a second).
HRESULT cached_activation_factory(const wchar_t* id, REFIID iid, void** factory);
// Releases every cached factory; the runtime's shutdown calls it before RoUninitialize.
void release_cached_factories();

// The factory or statics interface I of a class; throws PlatformError.
template <class I>
ComPtr<I> activation_factory(const wchar_t* id) {
  ComPtr<I> factory;
  check(cached_activation_factory(id, iid_of<I>(), factory.put_void()));
  return factory;
}

// RoActivateInstance, answered as interface I; throws PlatformError.
template <class I>
ComPtr<I> activate_instance(const wchar_t* id) {
  HString name(id);
  ComPtr<IInspectable> instance;
  check(RoActivateInstance(name.get(), instance.put()));
  ComPtr<I> result;
  check(instance.query(result));
  return result;
}

// QueryInterface that throws PlatformError when the object lacks the interface.
template <class I, class From>
ComPtr<I> query(const ComPtr<From>& object) {
  ComPtr<I> result;
  check(object.query(result));
  return result;
}

}  // namespace vexcap::windows
