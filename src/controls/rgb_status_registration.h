// Registration of the host's RGB-status callback on a capture client: waits until the camera
// is ready, then starts the extension unit's notifier.
#pragma once

#include <cstdint>

#include "common/hresult.h"
#include "controls/extension_unit.h"
#include "controls/face_auth_wait.h"
#include "vexcap/vexcap.h"

namespace vexcap::controls {

// With no extension unit or an uninitialized client nothing is registered and HR_OK returns.
// Otherwise blocks, without limit, while the camera reports a non-zero RGB status and, for an
// infrared source, while a camera offering the disabled face-auth mode is in another mode;
// the host relies on the callback starting from a quiet camera.
hresult register_rgb_status_notifier(ExtensionUnit* unit, bool initialized, bool is_infrared,
                                     const FaceAuthReader& read_face_auth,
                                     vexcap_rgb_status_callback callback, void* context);

// Clears the callback and waits for the notifier to end; no-op without an extension unit.
void unregister_rgb_status_notifier(ExtensionUnit* unit);

}  // namespace vexcap::controls
