// Builds with the virtual platform: the built-in camera systems --scenario picks from (the
// virtual camera's catalogue). This is the one file of the tool that reaches past the public
// header.
#include "options.h"
#include "platform/virtual/scenario_catalogue.h"
#include "platform/virtual/virtual_camera.h"
#include "scenario_choice.h"

namespace vexcap::tool {

namespace vc = vexcap::virtual_camera;

std::vector<ScenarioInfo> built_in_scenarios() {
  std::vector<ScenarioInfo> infos;
  for (const vc::CatalogueEntry& entry : vc::scenario_catalogue()) infos.push_back({entry.name, entry.description});
  return infos;
}

void choose_scenario(const std::optional<std::string>& name) {
  const std::string wanted = name.value_or("default");
  auto scenario = vc::named_scenario(wanted);
  if (!scenario) throw UsageError("--scenario: no built-in scenario named " + wanted + " (see --help)");
  vc::use_scenario(std::move(*scenario));
}

}  // namespace vexcap::tool
