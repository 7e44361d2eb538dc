// Media Foundation, bound at run time: mfplat.dll and mf.dll are loaded from the system folder
// the first time the library needs them, and their functions resolved. Editions of Windows
// without Media Foundation (the N editions) then still load the library; its start-up fails
// with ERROR_MOD_NOT_FOUND (or ERROR_PROC_NOT_FOUND) as MFStartup's result instead.
#pragma once

#include <mfidl.h>
#include <mfobjects.h>

namespace vexcap::windows {

struct MediaFoundationFunctions {
  HRESULT(WINAPI* startup)(ULONG version, DWORD flags) = nullptr;
  HRESULT(WINAPI* shutdown)() = nullptr;
  HRESULT(WINAPI* create_attributes)(IMFAttributes** attributes, UINT32 initial_size) = nullptr;
  HRESULT(WINAPI* enum_device_sources)(IMFAttributes* attributes, IMFActivate*** activates, UINT32* count) = nullptr;
  HRESULT(WINAPI* create_device_source)(IMFAttributes* attributes, IMFMediaSource** source) = nullptr;
};

// The process's binding: S_OK with every function, or why not (then `functions` is null).
struct MediaFoundationBinding {
  HRESULT result = S_OK;
  const MediaFoundationFunctions* functions = nullptr;
};

const MediaFoundationBinding& media_foundation();

}  // namespace vexcap::windows
