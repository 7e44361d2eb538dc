// The tool's commands; each returns the process's exit code or throws ToolError.
#pragma once

#include "options.h"

namespace vexcap::tool {

int run_list(const Options& options);
int run_capture(const Options& options);
int run_info(const Options& options);
int run_check(const Options& options);

}  // namespace vexcap::tool
