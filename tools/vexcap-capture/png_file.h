// A delivered frame as a PNG a person can open: Gray8 and Gray16 as grey of the same depth,
// NV12 converted to RGB. The tool's own encoder over zlib: no filters, light compression, so
// that it keeps up with the camera and builds wherever zlib does.
#pragma once

#include <filesystem>

#include "vexcap/vexcap.h"

namespace vexcap::tool {

// Written through an OutputFile: the PNG is complete or absent. Throws ToolError.
void write_frame_png(const std::filesystem::path& path, const vexcap_frame& frame);

}  // namespace vexcap::tool
