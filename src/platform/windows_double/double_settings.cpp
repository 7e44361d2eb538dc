#include "platform/windows_double/double_settings.h"

#include <windows.h>

#include <cstdio>

#include "platform/virtual/scenario_catalogue.h"
#include "platform/virtual/virtual_camera.h"

namespace vexcap::windows_double {

namespace {

constexpr wchar_t kKey[] = L"Software\\VexcapLib\\WindowsDouble";

Settings read_settings() {
  Settings result;
  wchar_t name[128] = {};
  DWORD size = sizeof name;
  if (RegGetValueW(HKEY_CURRENT_USER, kKey, L"Scenario", RRF_RT_REG_SZ, nullptr, name, &size) == ERROR_SUCCESS) {
    result.scenario.clear();
    for (const wchar_t* c = name; *c; ++c) result.scenario.push_back(char(*c));
  }
  DWORD seed = 0;
  size = sizeof seed;
  if (RegGetValueW(HKEY_CURRENT_USER, kKey, L"Seed", RRF_RT_REG_DWORD, nullptr, &seed, &size) == ERROR_SUCCESS)
    result.seed = seed;
  return result;
}

}  // namespace

const Settings& settings() {
  static const Settings instance = read_settings();
  return instance;
}

void apply_prefix_scenario() {
  auto scenario = virtual_camera::named_scenario(settings().scenario);
  if (!scenario) {
    std::fprintf(stderr, "windows double: no built-in scenario named %s; the default one runs\n",
                 settings().scenario.c_str());
    return;
  }
  virtual_camera::use_scenario(std::move(*scenario));
}

}  // namespace vexcap::windows_double
