// The shipped DLL's version resource carries the project version hosts and installers read.
#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "vexcap/vexcap.h"

namespace {

std::wstring module_path(const wchar_t* name) {
  wchar_t path[MAX_PATH] = {};
  GetModuleFileNameW(GetModuleHandleW(name), path, MAX_PATH);
  return path;
}

TEST(ProductDll, CarriesTheProjectVersionInItsVersionResource) {
  ASSERT_NE(reinterpret_cast<void*>(&vexcap_init), nullptr);  // the DLL is loaded
  const std::wstring path = module_path(L"VexcapLib.dll");
  DWORD ignored = 0;
  const DWORD size = GetFileVersionInfoSizeW(path.c_str(), &ignored);
  ASSERT_GT(size, 0u);
  std::vector<char> info(size);
  ASSERT_TRUE(GetFileVersionInfoW(path.c_str(), 0, size, info.data()));

  VS_FIXEDFILEINFO* fixed = nullptr;
  UINT length = 0;
  ASSERT_TRUE(VerQueryValueW(info.data(), L"\\", reinterpret_cast<void**>(&fixed), &length));
  const std::string version = std::to_string(HIWORD(fixed->dwFileVersionMS)) + "." +
                              std::to_string(LOWORD(fixed->dwFileVersionMS)) + "." +
                              std::to_string(HIWORD(fixed->dwFileVersionLS));
  EXPECT_EQ(version, VEXCAP_PROJECT_VERSION);

  wchar_t* text = nullptr;
  ASSERT_TRUE(VerQueryValueW(info.data(), L"\\StringFileInfo\\040904B0\\ProductVersion",
                             reinterpret_cast<void**>(&text), &length));
  const std::string expected = VEXCAP_PROJECT_VERSION;
  EXPECT_EQ(std::wstring(text), std::wstring(expected.begin(), expected.end()));
}

}  // namespace
