// MFEnumDeviceSources: one activation object per capture device of a category.
#pragma once

#include <memory>
#include <vector>

#include "platform/port.h"

namespace vexcap::windows {

// `attributes` must come from create_attributes; E_INVALIDARG otherwise.
hresult enum_device_sources(platform::Attributes& attributes,
                            std::vector<std::shared_ptr<platform::DeviceActivate>>& activates);

}  // namespace vexcap::windows
