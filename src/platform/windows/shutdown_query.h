// The Media Foundation shutdown test on an object that reported a capture failure.
#pragma once

#include <unknwn.h>

#include <optional>

#include "common/hresult.h"

namespace vexcap::windows {

// nullopt when the object is no IMFShutdown; else the result of its Shutdown call.
std::optional<hresult> shutdown_if_supported(IUnknown* object);

}  // namespace vexcap::windows
