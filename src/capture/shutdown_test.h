// The Media Foundation shutdown test a capture failure's recovery runs on the failed session,
// so that the session lets its camera go before the replacement opens.
#pragma once

#include "common/hresult.h"
#include "platform/port.h"

namespace vexcap::capture {

// 0 when the object that reported the failure is not a shutdown, else the result of its Shutdown.
hresult run_shutdown_test(platform::Capture& reporter);

}  // namespace vexcap::capture
