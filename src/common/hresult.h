// HRESULT values the library speaks internally, the same on every platform.
#pragma once

#include <cstdint>

namespace vexcap {

using hresult = std::int32_t;

constexpr hresult hr(std::uint32_t bits) { return static_cast<hresult>(bits); }

constexpr hresult HR_OK = 0;
constexpr hresult HR_FALSE = 1;
constexpr hresult HR_NOTIMPL = hr(0x80004001);
constexpr hresult HR_NOINTERFACE = hr(0x80004002);
constexpr hresult HR_POINTER = hr(0x80004003);
constexpr hresult HR_ABORT = hr(0x80004004);
constexpr hresult HR_FAIL = hr(0x80004005);
constexpr hresult HR_UNEXPECTED = hr(0x8000FFFF);
constexpr hresult HR_BOUNDS = hr(0x8000000B);
constexpr hresult HR_ACCESSDENIED = hr(0x80070005);
constexpr hresult HR_OUTOFMEMORY = hr(0x8007000E);
constexpr hresult HR_INVALIDARG = hr(0x80070057);
constexpr hresult HR_CHANGED_MODE = hr(0x80010106);
constexpr hresult HR_DISCONNECTED = hr(0x80010108);
constexpr hresult HR_MF_NOT_FOUND = hr(0xC00D36D5);

// HRESULT_FROM_WIN32 of the Win32 errors the library names.
constexpr hresult HR_INVALID_STATE = hr(0x8007139F);       // ERROR_INVALID_STATE
constexpr hresult HR_TIMEOUT = hr(0x800705B4);             // ERROR_TIMEOUT
constexpr hresult HR_NOT_FOUND = hr(0x80070490);           // ERROR_NOT_FOUND
constexpr hresult HR_SET_NOT_FOUND = hr(0x80070492);       // ERROR_SET_NOT_FOUND
constexpr hresult HR_DEVICE_NOT_AVAILABLE = hr(0x800710DF);  // ERROR_DEVICE_NOT_AVAILABLE
constexpr hresult HR_NOT_FOUND_ENUM = hr(0x80000016);      // what the capabilities query answers
constexpr hresult HR_ACTIVATION_TIMEOUT = hr(0x8027025A);  // app activation timed out

// The bare Win32 ERROR_TIMEOUT, left unwrapped by some handlers on purpose.
constexpr hresult WIN32_ERROR_TIMEOUT = 1460;

constexpr bool failed(hresult value) { return value < 0; }
constexpr bool succeeded(hresult value) { return value >= 0; }

// HRESULT_FROM_WIN32: values of 0 or less pass unchanged.
constexpr hresult hresult_from_win32(std::uint32_t error) {
  return static_cast<hresult>(error) <= 0 ? static_cast<hresult>(error)
                                          : hr((error & 0x0000FFFFu) | 0x80070000u);
}

}  // namespace vexcap
