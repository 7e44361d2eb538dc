#include "platform/windows/windows_runtime.h"

#include <windows.h>

#include <mfapi.h>
#include <mferror.h>
#include <roapi.h>

#include "platform/windows/activation.h"
#include "platform/windows/media_foundation_library.h"

namespace vexcap::windows {

hresult WindowsRuntime::ro_initialize_multithreaded() { return RoInitialize(RO_INIT_MULTITHREADED); }

// The cached activation factories belong to the runtime: they go before it stops.
void WindowsRuntime::ro_uninitialize() {
  release_cached_factories();
  RoUninitialize();
}

// Version argument 0 and flags 0 (MFSTARTUP_FULL), as the library has always called it.
// Implementations that insist on the header's version (Wine) refuse 0: they get MF_VERSION.
// Without Media Foundation (mfplat.dll or mf.dll missing) the result says so:
// ERROR_MOD_NOT_FOUND (0x8007007e) or ERROR_PROC_NOT_FOUND (0x8007007f).
hresult WindowsRuntime::mf_startup() {
  const MediaFoundationBinding& mf = media_foundation();
  if (!mf.functions) return mf.result;
  const HRESULT result = mf.functions->startup(0, MFSTARTUP_FULL);
  if (result != MF_E_BAD_STARTUP_VERSION) return result;
  return mf.functions->startup(MF_VERSION, MFSTARTUP_FULL);
}

hresult WindowsRuntime::mf_shutdown() {
  const MediaFoundationBinding& mf = media_foundation();
  return mf.functions ? mf.functions->shutdown() : mf.result;
}

}  // namespace vexcap::windows
