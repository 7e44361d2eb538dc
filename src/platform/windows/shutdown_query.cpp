#include "platform/windows/shutdown_query.h"

#include <mfidl.h>

#include "platform/windows/com_ptr.h"

namespace vexcap::windows {

std::optional<hresult> shutdown_if_supported(IUnknown* object) {
  ComPtr<IMFShutdown> shutdown;
  if (FAILED(ComPtr<IUnknown>::copy_from(object).query(shutdown)) || !shutdown) return std::nullopt;
  return shutdown->Shutdown();
}

}  // namespace vexcap::windows
