// The capture's output folder, made ready before any camera opens: it exists, files can be
// written in it, and it holds no frames of an earlier capture that the new frames.csv would not
// list (--overwrite removes them).
#pragma once

#include <filesystem>
#include <string>

namespace vexcap::tool {

// Throws ToolError naming the folder and the system's reason.
std::filesystem::path prepare_output_folder(const std::string& out, bool overwrite);

// frame-000000.png and the like, frames.csv, and what a run that died left as .part files.
bool is_capture_output(const std::filesystem::path& file);

}  // namespace vexcap::tool
