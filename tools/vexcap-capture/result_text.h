// What the library's result codes mean, in words a person can act on.
#pragma once

#include <string>

namespace vexcap::tool {

const char* result_name(int code);     // "VEXCAP_E_FAIL"
const char* result_meaning(int code);  // "failed, or not supported by this camera or library"
// "-1 VEXCAP_E_FAIL (failed, or not supported by this camera or library)"
std::string describe_result(int code);

// Requests a camera or this library build does not serve answer VEXCAP_E_FAIL (the library's
// answer to an unimplemented request) or VEXCAP_E_NO_INTERFACE.
bool means_not_supported(int code);

}  // namespace vexcap::tool
