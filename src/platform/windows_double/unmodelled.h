// Bases whose every method answers "unmodelled call": generated from the adapter's ABI
// declarations (cmake/double_unmodelled.cmake) for the Windows Runtime and kernel-streaming
// interfaces, and written here for the Media Foundation ones the system headers declare.
#pragma once

#include <mfidl.h>
#include <mfobjects.h>

#include "platform/windows/winrt/abi.h"
#include "platform/windows_double/object.h"

namespace vexcap::windows::abi {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-parameter"
#include "double_unmodelled.inc"
#pragma GCC diagnostic pop
}  // namespace vexcap::windows::abi

namespace vexcap::windows_double {

using windows::abi::UnmodelledIAsyncInfo;

#define DOUBLE_UNMODELLED(name, ...) \
  HRESULT STDMETHODCALLTYPE name(__VA_ARGS__) override { return static_cast<Self*>(this)->unmodelled(#name); }

// IMFAttributes with every method unmodelled; IMFActivate and IMFMediaSource build on it.
template <class Self, class Interface = IMFAttributes>
struct UnmodelledAttributes : Interface {
  using interface_type = Interface;
  DOUBLE_UNMODELLED(GetItem, REFGUID, PROPVARIANT*)
  DOUBLE_UNMODELLED(GetItemType, REFGUID, MF_ATTRIBUTE_TYPE*)
  DOUBLE_UNMODELLED(CompareItem, REFGUID, REFPROPVARIANT, BOOL*)
  DOUBLE_UNMODELLED(Compare, IMFAttributes*, MF_ATTRIBUTES_MATCH_TYPE, BOOL*)
  DOUBLE_UNMODELLED(GetUINT32, REFGUID, UINT32*)
  DOUBLE_UNMODELLED(GetUINT64, REFGUID, UINT64*)
  DOUBLE_UNMODELLED(GetDouble, REFGUID, double*)
  DOUBLE_UNMODELLED(GetGUID, REFGUID, GUID*)
  DOUBLE_UNMODELLED(GetStringLength, REFGUID, UINT32*)
  DOUBLE_UNMODELLED(GetString, REFGUID, LPWSTR, UINT32, UINT32*)
  DOUBLE_UNMODELLED(GetAllocatedString, REFGUID, LPWSTR*, UINT32*)
  DOUBLE_UNMODELLED(GetBlobSize, REFGUID, UINT32*)
  DOUBLE_UNMODELLED(GetBlob, REFGUID, UINT8*, UINT32, UINT32*)
  DOUBLE_UNMODELLED(GetAllocatedBlob, REFGUID, UINT8**, UINT32*)
  DOUBLE_UNMODELLED(GetUnknown, REFGUID, REFIID, LPVOID*)
  DOUBLE_UNMODELLED(SetItem, REFGUID, REFPROPVARIANT)
  DOUBLE_UNMODELLED(DeleteItem, REFGUID)
  DOUBLE_UNMODELLED(DeleteAllItems)
  DOUBLE_UNMODELLED(SetUINT32, REFGUID, UINT32)
  DOUBLE_UNMODELLED(SetUINT64, REFGUID, UINT64)
  DOUBLE_UNMODELLED(SetDouble, REFGUID, double)
  DOUBLE_UNMODELLED(SetGUID, REFGUID, REFGUID)
  DOUBLE_UNMODELLED(SetString, REFGUID, LPCWSTR)
  DOUBLE_UNMODELLED(SetBlob, REFGUID, const UINT8*, UINT32)
  DOUBLE_UNMODELLED(SetUnknown, REFGUID, IUnknown*)
  DOUBLE_UNMODELLED(LockStore)
  DOUBLE_UNMODELLED(UnlockStore)
  DOUBLE_UNMODELLED(GetCount, UINT32*)
  DOUBLE_UNMODELLED(GetItemByIndex, UINT32, GUID*, PROPVARIANT*)
  DOUBLE_UNMODELLED(CopyAllItems, IMFAttributes*)
};

template <class Self>
struct UnmodelledActivate : UnmodelledAttributes<Self, IMFActivate> {
  DOUBLE_UNMODELLED(ActivateObject, REFIID, void**)
  DOUBLE_UNMODELLED(ShutdownObject)
  DOUBLE_UNMODELLED(DetachObject)
};

template <class Self>
struct UnmodelledMediaSource : IMFMediaSource {
  using interface_type = IMFMediaSource;
  DOUBLE_UNMODELLED(GetEvent, DWORD, IMFMediaEvent**)
  DOUBLE_UNMODELLED(BeginGetEvent, IMFAsyncCallback*, IUnknown*)
  DOUBLE_UNMODELLED(EndGetEvent, IMFAsyncResult*, IMFMediaEvent**)
  DOUBLE_UNMODELLED(QueueEvent, MediaEventType, REFGUID, HRESULT, const PROPVARIANT*)
  DOUBLE_UNMODELLED(GetCharacteristics, DWORD*)
  DOUBLE_UNMODELLED(CreatePresentationDescriptor, IMFPresentationDescriptor**)
  DOUBLE_UNMODELLED(Start, IMFPresentationDescriptor*, const GUID*, const PROPVARIANT*)
  DOUBLE_UNMODELLED(Stop)
  DOUBLE_UNMODELLED(Pause)
  DOUBLE_UNMODELLED(Shutdown)
};

#undef DOUBLE_UNMODELLED

}  // namespace vexcap::windows_double
