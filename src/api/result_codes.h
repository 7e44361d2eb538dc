// The boundary's small result codes.
#pragma once

#include "common/hresult.h"

namespace vexcap::api {

// Maps a handler's HRESULT to the exported result code, rows tested in the documented order.
int to_result_code(hresult value);

}  // namespace vexcap::api
