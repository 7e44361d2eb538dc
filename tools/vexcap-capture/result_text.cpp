#include "result_text.h"

#include "vexcap/vexcap.h"

namespace vexcap::tool {

const char* result_name(int code) {
  switch (code) {
    case VEXCAP_OK: return "VEXCAP_OK";
    case VEXCAP_E_FAIL: return "VEXCAP_E_FAIL";
    case VEXCAP_E_INVALID_STATE: return "VEXCAP_E_INVALID_STATE";
    case VEXCAP_E_TIMEOUT: return "VEXCAP_E_TIMEOUT";
    case VEXCAP_E_ACCESS_DENIED: return "VEXCAP_E_ACCESS_DENIED";
    case VEXCAP_E_INVALID_ARG: return "VEXCAP_E_INVALID_ARG";
    case VEXCAP_E_NO_INTERFACE: return "VEXCAP_E_NO_INTERFACE";
    case VEXCAP_E_INIT_THREAD: return "VEXCAP_E_INIT_THREAD";
    default: return "unknown result code";
  }
}

const char* result_meaning(int code) {
  switch (code) {
    case VEXCAP_OK: return "success";
    case VEXCAP_E_FAIL: return "failed, or not supported by this camera or library build";
    case VEXCAP_E_INVALID_STATE: return "the camera is not in a state that allows this request";
    case VEXCAP_E_TIMEOUT: return "the camera did not answer in time";
    case VEXCAP_E_ACCESS_DENIED: return "access denied: another application may hold the camera";
    case VEXCAP_E_INVALID_ARG: return "an argument is out of range for this camera";
    case VEXCAP_E_NO_INTERFACE: return "the camera lacks the interface this request needs";
    case VEXCAP_E_INIT_THREAD: return "the library could not start its request thread";
    default: return "the library answered a code it does not document";
  }
}

std::string describe_result(int code) {
  return std::to_string(code) + " " + result_name(code) + " (" + result_meaning(code) + ")";
}

bool means_not_supported(int code) {
  return code == VEXCAP_E_FAIL || code == VEXCAP_E_NO_INTERFACE;
}

}  // namespace vexcap::tool
