#include "platform/windows/windows_runtime.h"

#include <windows.h>

#include <mfapi.h>
#include <mferror.h>
#include <roapi.h>

namespace vexcap::windows {

hresult WindowsRuntime::ro_initialize_multithreaded() { return RoInitialize(RO_INIT_MULTITHREADED); }

void WindowsRuntime::ro_uninitialize() { RoUninitialize(); }

// Version argument 0 and flags 0 (MFSTARTUP_FULL), as the library has always called it.
// Implementations that insist on the header's version (Wine) refuse 0: they get MF_VERSION.
hresult WindowsRuntime::mf_startup() {
  const HRESULT result = MFStartup(0, MFSTARTUP_FULL);
  if (result != MF_E_BAD_STARTUP_VERSION) return result;
  return MFStartup(MF_VERSION, MFSTARTUP_FULL);
}

hresult WindowsRuntime::mf_shutdown() { return MFShutdown(); }

}  // namespace vexcap::windows
