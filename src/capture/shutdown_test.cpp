#include "capture/shutdown_test.h"

#include "log/log.h"

namespace vexcap::capture {

hresult run_shutdown_test(platform::Capture& reporter) {
  const std::optional<hresult> result = reporter.shutdown_if_supported();
  if (!result) {
    VXLOG('I', "Not a shutdown\n");
    return 0;
  }
  VXLOG('I', "Yes a shutdown\n");
  return *result;
}

}  // namespace vexcap::capture
