// The Media Foundation sample behind a frame reference and its capture metadata.
#pragma once

#include <unknwn.h>

#include "platform/port.h"

namespace vexcap::windows {

// IMFGetService on the frame reference -> the wrapped IMFSample -> its capture metadata store
// -> the frame-illumination flag. Each step keeps its own result; the first failure ends it.
platform::IlluminationRead read_illumination_from_sample(IUnknown* frame_reference);

}  // namespace vexcap::windows
