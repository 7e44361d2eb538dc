// The format table: which of a source's supported formats a host can pick, keyed by the
// library's format codes (the values of the stream-type device properties).
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/port.h"

namespace vexcap::sources {

struct FormatEntry {
  std::wstring subtype;
  std::uint32_t position = 0;  // index in the source's supported formats
};

using FormatTable = std::map<std::uint32_t, FormatEntry>;

// The code of a format of the given size and frame-rate numerator (the denominator is never
// consulted). Colour sources: 11..17 at the open parameters' size for 30..1 fps, else 18
// (1920 wide), 19 (1280x720), 20 (3840 wide), all at 30. Other sources: 2..8 at 640 wide for
// 30..1 fps, 1 for 320 wide at 60, other widths below 640: 0 at 30 and 9 at 60.
std::optional<std::uint32_t> format_code(bool colour, std::uint32_t width, std::uint32_t height,
                                         std::uint32_t frame_rate_numerator, std::uint16_t preferred_width,
                                         std::uint16_t preferred_height);

// Builds the table in four passes over the supported formats: one for "NV12", "GRAY8" and
// "L8" (which logs every format it sees), then one each for "NV12", "YUY2" and "RGB24".
//
// Each pass collects the formats of its subtypes into a fresh table. One that accepted
// something replaces the table, so the last pass that accepted a format decides it: RGB24
// (converted by the library) over YUY2 over NV12 over the grey formats. A pass that accepted
// nothing, even where its subtype is offered at sizes without a code, leaves the table as it
// was: the codes a host can select stay those of formats the camera has. (Replacing the table
// with an empty one would leave a camera without formats to select, and the high-resolution
// answer, property 22, at "none" on a camera with 1080p NV12 whose RGB24 is only 640x480.)
// Within a pass the first format in list order keeps a code.
FormatTable collect_format_table(const std::vector<std::shared_ptr<platform::FrameFormat>>& formats,
                                 bool colour, std::uint16_t preferred_width, std::uint16_t preferred_height);

bool table_has_subtype(const FormatTable& table, const std::wstring& subtype);

}  // namespace vexcap::sources
