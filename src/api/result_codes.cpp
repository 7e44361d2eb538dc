#include "api/result_codes.h"

#include "vexcap/vexcap.h"

namespace vexcap::api {

int to_result_code(hresult value) {
  if (value == HR_OK) return VEXCAP_OK;
  if (value == HR_INVALID_STATE) return VEXCAP_E_INVALID_STATE;
  if (value == HR_ACCESSDENIED) return VEXCAP_E_ACCESS_DENIED;
  if (value == WIN32_ERROR_TIMEOUT) return VEXCAP_E_TIMEOUT;  // the bare 1460 only
  if (value == HR_INVALIDARG) return VEXCAP_E_INVALID_ARG;
  if (value == HR_NOINTERFACE) return VEXCAP_E_NO_INTERFACE;
  return VEXCAP_E_FAIL;  // everything else, positive success codes included
}

}  // namespace vexcap::api
