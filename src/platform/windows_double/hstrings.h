// HSTRINGs the double hands out and takes.
#pragma once

#include <winstring.h>

#include <string>

namespace vexcap::windows_double {

// A new HSTRING for the caller (WindowsCreateString); E_POINTER for a null out parameter.
inline HRESULT hand_out_string(const std::wstring& text, HSTRING* out) {
  if (out == nullptr) return E_POINTER;
  return WindowsCreateString(text.c_str(), UINT32(text.size()), out);
}

inline std::wstring text_of(HSTRING value) {
  UINT32 length = 0;
  const wchar_t* raw = WindowsGetStringRawBuffer(value, &length);
  return raw ? std::wstring(raw, length) : std::wstring();
}

}  // namespace vexcap::windows_double
