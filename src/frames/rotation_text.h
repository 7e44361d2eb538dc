// Reads the rotation a frame source declares: the MF_MT_VIDEO_ROTATION value rendered as text.
#pragma once

#include <optional>
#include <string_view>

#include "frames/rotation.h"

namespace vexcap::frames {

// Parses a leading base-10 integer the way the C runtime's wcstol does: leading white space
// (space, \t, \n, \v, \f, \r) is skipped, one optional sign is taken, then the digits up to the
// first other character; whatever follows is ignored ("90abc" is 90). No digits reads as 0.
// Returns the rotation for 90, 180 or 270 and nullopt for everything else (0, 45, -90, "abc").
std::optional<Rotation> parse_rotation_text(std::wstring_view text);

}  // namespace vexcap::frames
