// The built-in camera systems, by name: what the capture tool's --scenario and a Windows
// double prefix's Scenario setting choose from.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/virtual/scenario.h"

namespace vexcap::virtual_camera {

struct CatalogueEntry {
  std::string name;
  std::string description;
};

VEXCAP_VIRTUAL_CAMERA_API std::vector<CatalogueEntry> scenario_catalogue();
// nullopt for a name the catalogue does not hold.
VEXCAP_VIRTUAL_CAMERA_API std::optional<Scenario> named_scenario(const std::string& name);

}  // namespace vexcap::virtual_camera
