// The result an operation answers after catching a platform failure: the failure's own code,
// or E_FAIL when that code does not read as a failure, so callers never take it for success.
#pragma once

#include "common/hresult.h"
#include "platform/port.h"

namespace vexcap::controls {

inline hresult failure_code(const platform::PlatformError& error) {
  return failed(error.code()) ? error.code() : HR_FAIL;
}

}  // namespace vexcap::controls
