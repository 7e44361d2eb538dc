// Failures of Windows calls, carried to the core as the port's PlatformError.
#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string>

#include "platform/port.h"

namespace vexcap::windows {

// The system's text for a message number, as FormatMessageW gives it; nullopt when none.
std::optional<std::wstring> system_message(std::uint32_t message_id);

// The error for a failed call: the message of the restricted error info the call left on this
// thread when it describes the same failure, else the system's text for the code.
platform::PlatformError platform_error(HRESULT code);

[[noreturn]] void throw_platform_error(HRESULT code);

// Throws PlatformError when the call failed; success codes (S_FALSE included) pass.
inline void check(HRESULT code) {
  if (FAILED(code)) throw_platform_error(code);
}

// For a result the platform must have produced: a missing one reads as E_POINTER.
template <class Pointer>
void check_present(const Pointer& result) {
  if (!result) throw_platform_error(E_POINTER);
}

}  // namespace vexcap::windows
