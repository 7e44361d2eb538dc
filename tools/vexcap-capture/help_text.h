// The texts of --help and --version beyond the option lists the parser writes itself.
#pragma once

#include <string>

#include "options.h"

namespace vexcap::tool {

std::string tool_summary();
std::string tool_footer();  // examples, exit codes, the virtual camera's scenarios
std::string command_footer(Command command);
std::string version_text();

}  // namespace vexcap::tool
