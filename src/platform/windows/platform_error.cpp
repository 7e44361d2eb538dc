#include "platform/windows/platform_error.h"

#include <oleauto.h>

#include <cwctype>

#include "platform/windows/com_ptr.h"
#include "platform/windows/restricted_error_info.h"

namespace vexcap::windows {

namespace {

std::wstring without_trailing_space(std::wstring text) {
  while (!text.empty() && std::iswspace(text.back())) text.pop_back();
  return text;
}

// Owns a BSTR handed out by an error-info call.
class OwnedBstr {
 public:
  OwnedBstr() = default;
  OwnedBstr(const OwnedBstr&) = delete;
  OwnedBstr& operator=(const OwnedBstr&) = delete;
  ~OwnedBstr() { SysFreeString(value_); }
  BSTR* put() { return &value_; }
  std::wstring text() const { return value_ ? std::wstring(value_, SysStringLen(value_)) : L""; }

 private:
  BSTR value_ = nullptr;
};

// Takes the thread's restricted error info; its text when it describes `code`.
std::optional<std::wstring> restricted_message(HRESULT code) {
  ComPtr<IRestrictedErrorInfo> info;
  if (GetRestrictedErrorInfo(info.put()) != S_OK || !info) return std::nullopt;
  OwnedBstr description, restricted_description, capability_sid;
  HRESULT described = S_OK;
  if (FAILED(info->GetErrorDetails(description.put(), &described, restricted_description.put(),
                                   capability_sid.put())) ||
      described != code) {
    return std::nullopt;
  }
  std::wstring text = without_trailing_space(restricted_description.text());
  if (text.empty()) text = without_trailing_space(description.text());
  if (text.empty()) return std::nullopt;
  return text;
}

}  // namespace

std::optional<std::wstring> system_message(std::uint32_t message_id) {
  wchar_t* text = nullptr;
  const DWORD length = FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM,
                                      nullptr, message_id, 0x400,
                                      reinterpret_cast<wchar_t*>(&text), 0, nullptr);
  if (length == 0 || text == nullptr) return std::nullopt;
  std::wstring result(text, length);
  LocalFree(text);
  return result;
}

platform::PlatformError platform_error(HRESULT code) {
  if (auto restricted = restricted_message(code)) return {code, std::move(*restricted)};
  auto text = system_message(static_cast<std::uint32_t>(code));
  return {code, text ? without_trailing_space(std::move(*text)) : std::wstring()};
}

void throw_platform_error(HRESULT code) { throw platform_error(code); }

}  // namespace vexcap::windows
