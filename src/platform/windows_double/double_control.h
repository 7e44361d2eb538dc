// The double's own queries, exported beside the virtual camera's control functions: what a test
// program asks after driving the product library.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/virtual/camera_api.h"

namespace vexcap::windows_double {

// Misuse caught so far, in order ("windows double: violation: ..." was printed for each).
VEXCAP_VIRTUAL_CAMERA_API std::vector<std::string> violations();
VEXCAP_VIRTUAL_CAMERA_API void clear_violations();
// Objects the double handed out that are still referenced, by runtime class name.
VEXCAP_VIRTUAL_CAMERA_API std::map<std::string, long> live_objects();
// DllGetActivationFactory requests for one runtime class since the last clear.
VEXCAP_VIRTUAL_CAMERA_API long factory_requests(const std::string& runtime_class);
VEXCAP_VIRTUAL_CAMERA_API void clear_factory_requests();

}  // namespace vexcap::windows_double
