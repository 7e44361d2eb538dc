// The platform's names of the extended-property statuses, as the log prints them.
#pragma once

#include <string>

#include "platform/port.h"

namespace vexcap::controls {

// MediaFrameSourceGetPropertyStatus / MediaFrameSourceSetPropertyStatus names; a value the
// platform does not name comes out as its number.
std::wstring status_name(platform::GetPropertyStatus status);
std::wstring status_name(platform::SetPropertyStatus status);

}  // namespace vexcap::controls
