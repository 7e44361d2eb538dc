#include "platform/windows/hstring.h"

#include "platform/windows/platform_error.h"

namespace vexcap::windows {

HString::HString(std::wstring_view text) {
  check(WindowsCreateString(text.data(), static_cast<UINT32>(text.size()), &value_));
}

void HString::reset() {
  if (value_) WindowsDeleteString(std::exchange(value_, nullptr));
}

std::wstring HString::text() const { return to_wstring(value_); }

std::wstring to_wstring(HSTRING value) {
  UINT32 length = 0;
  const wchar_t* raw = WindowsGetStringRawBuffer(value, &length);
  return raw ? std::wstring(raw, length) : std::wstring();
}

}  // namespace vexcap::windows
