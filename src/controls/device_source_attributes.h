// The attribute stores that pick the camera out among Media Foundation's device sources.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "common/hresult.h"
#include "platform/port.h"

namespace vexcap::controls {

// Video capture sources of the reader kind's category: 1 (infrared) the sensor cameras,
// anything else the video cameras.
hresult create_enumeration_attributes(platform::Platform& platform, std::uint32_t reader_kind,
                                      std::shared_ptr<platform::Attributes>& attributes);

// The one video capture source behind `link`.
hresult create_selection_attributes(platform::Platform& platform, const std::wstring& link,
                                    std::shared_ptr<platform::Attributes>& attributes);

}  // namespace vexcap::controls
