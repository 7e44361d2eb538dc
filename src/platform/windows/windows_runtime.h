// The Windows Runtime and Media Foundation start-up calls.
#pragma once

#include "platform/port.h"

namespace vexcap::windows {

class WindowsRuntime final : public platform::Runtime {
 public:
  hresult ro_initialize_multithreaded() override;
  void ro_uninitialize() override;
  hresult mf_startup() override;
  hresult mf_shutdown() override;
};

}  // namespace vexcap::windows
