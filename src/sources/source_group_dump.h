// Writes one source group's description to the diagnostic log at initialization.
#pragma once

#include <cstdint>

#include "platform/port.h"

namespace vexcap::sources {

void dump_source_group(const platform::SourceGroup* group, std::uint32_t index);

}  // namespace vexcap::sources
