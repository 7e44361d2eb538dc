// What a prefix chooses for the double, read once from
// HKCU\Software\VexcapLib\WindowsDouble: `Scenario` (REG_SZ, a name from the scenario
// catalogue; "default" when absent) and `Seed` (REG_DWORD, the order in which asynchronous
// operations complete; 1 when absent).
#pragma once

#include <cstdint>
#include <string>

namespace vexcap::windows_double {

struct Settings {
  std::string scenario = "default";
  std::uint64_t seed = 1;
};

const Settings& settings();

// Puts the prefix's scenario in place; called once when the double is loaded.
void apply_prefix_scenario();

}  // namespace vexcap::windows_double
