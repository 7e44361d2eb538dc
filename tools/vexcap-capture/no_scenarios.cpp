// Builds for real cameras: the system's cameras are the only ones.
#include "options.h"
#include "scenario_choice.h"

namespace vexcap::tool {

std::vector<ScenarioInfo> built_in_scenarios() { return {}; }

void choose_scenario(const std::optional<std::string>& name) {
  if (name) throw UsageError("--scenario: this build drives real cameras and has no virtual scenarios");
}

}  // namespace vexcap::tool
