// Boxed values: what extended-id properties take and give (Windows.Foundation.PropertyValue).
#pragma once

#include <cstdint>
#include <vector>

#include "platform/port.h"
#include "platform/windows/com_ptr.h"
#include "platform/windows/winrt/foundation_abi.h"

namespace vexcap::windows {

// IReference<UInt32>: the maximum value size of a property read.
ComPtr<abi::IReference<UINT32>> box_uint32(std::uint32_t value);

// A boxed value as the port reports it: the value's runtime class name and, when it is a
// UInt8 array, its bytes.
platform::PropertyValue unbox_property_value(const ComPtr<IInspectable>& value);

}  // namespace vexcap::windows
