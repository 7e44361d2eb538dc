#include "wide_text.h"

#include <cstdint>

namespace vexcap::tool {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

void append_wide(std::wstring& out, char32_t code) {
  if constexpr (sizeof(wchar_t) == 2) {
    if (code >= 0x10000) {
      code -= 0x10000;
      out.push_back(static_cast<wchar_t>(0xD800 + (code >> 10)));
      out.push_back(static_cast<wchar_t>(0xDC00 + (code & 0x3FF)));
      return;
    }
  }
  out.push_back(static_cast<wchar_t>(code));
}

void append_utf8(std::string& out, char32_t code) {
  if (code < 0x80) {
    out.push_back(static_cast<char>(code));
  } else if (code < 0x800) {
    out.push_back(static_cast<char>(0xC0 | (code >> 6)));
    out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
  } else if (code < 0x10000) {
    out.push_back(static_cast<char>(0xE0 | (code >> 12)));
    out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xF0 | (code >> 18)));
    out.push_back(static_cast<char>(0x80 | ((code >> 12) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
  }
}

}  // namespace

std::wstring widen(std::string_view utf8) {
  std::wstring out;
  for (std::size_t i = 0; i < utf8.size();) {
    const auto lead = static_cast<std::uint8_t>(utf8[i]);
    const std::size_t length = lead < 0x80 ? 1 : (lead >> 5) == 0x6 ? 2 : (lead >> 4) == 0xE ? 3
                               : (lead >> 3) == 0x1E ? 4 : 0;
    if (length == 0 || i + length > utf8.size()) {
      append_wide(out, kReplacement);
      ++i;
      continue;
    }
    char32_t code = length == 1 ? lead : lead & (0x7F >> length);
    bool valid = true;
    for (std::size_t k = 1; k < length; ++k) {
      const auto next = static_cast<std::uint8_t>(utf8[i + k]);
      valid = valid && (next >> 6) == 0x2;
      code = (code << 6) | (next & 0x3F);
    }
    append_wide(out, valid ? code : kReplacement);
    i += valid ? length : 1;
  }
  return out;
}

std::string narrow(std::wstring_view wide) {
  std::string out;
  for (std::size_t i = 0; i < wide.size(); ++i) {
    char32_t code = static_cast<char32_t>(wide[i]);
    if constexpr (sizeof(wchar_t) == 2) {
      if (code >= 0xD800 && code < 0xDC00 && i + 1 < wide.size()) {
        const auto low = static_cast<char32_t>(wide[i + 1]);
        if (low >= 0xDC00 && low < 0xE000) {
          code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
          ++i;
        }
      }
    }
    if ((code >= 0xD800 && code < 0xE000) || code > 0x10FFFF) code = kReplacement;
    append_utf8(out, code);
  }
  return out;
}

}  // namespace vexcap::tool
