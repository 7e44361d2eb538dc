// Waiting for the camera's face authentication to settle in its disabled mode, before the host
// is told about the camera's state.
#pragma once

#include <cstdint>
#include <functional>

#include "common/hresult.h"

namespace vexcap::controls {

// Reads the client's 40-byte face-auth buffer (get_face_auth_mode over the client's target).
using FaceAuthReader = std::function<hresult(std::uint8_t* buffer)>;

// Blocks, without limit, while a camera that offers the disabled mode reports another one,
// reading again every 200 ms. A camera without that mode, or a failed read, does not wait.
void wait_for_face_auth_disabled(const FaceAuthReader& read_face_auth);

}  // namespace vexcap::controls
