#include "platform/windows/windows_runtime.h"

#include <windows.h>

#include <mfapi.h>
#include <roapi.h>

namespace vexcap::windows {

hresult WindowsRuntime::ro_initialize_multithreaded() { return RoInitialize(RO_INIT_MULTITHREADED); }

void WindowsRuntime::ro_uninitialize() { RoUninitialize(); }

// Version argument 0 and flags 0 (MFSTARTUP_FULL), as the library has always called it.
hresult WindowsRuntime::mf_startup() { return MFStartup(0, MFSTARTUP_FULL); }

hresult WindowsRuntime::mf_shutdown() { return MFShutdown(); }

}  // namespace vexcap::windows
