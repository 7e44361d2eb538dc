// The camera system the tool runs on. Builds with the virtual platform run on a built-in
// virtual camera system (the default one unless --scenario names another); builds for real
// cameras have no scenarios.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vexcap::tool {

struct ScenarioInfo {
  std::string name;
  std::string description;
};

std::vector<ScenarioInfo> built_in_scenarios();  // empty on builds for real cameras

// Before vexcap_init. Throws UsageError for a name this build does not know.
void choose_scenario(const std::optional<std::string>& name);

}  // namespace vexcap::tool
