// UTF-8 on the command line and in files, wchar_t (UTF-16 or UTF-32) at the library's boundary.
#pragma once

#include <string>
#include <string_view>

namespace vexcap::tool {

std::wstring widen(std::string_view utf8);
std::string narrow(std::wstring_view wide);

}  // namespace vexcap::tool
