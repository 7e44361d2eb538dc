// Windows Runtime and Media Foundation start-up and shutdown on the request thread.
#pragma once

#include "common/hresult.h"
#include "platform/port.h"

namespace vexcap::api {

class RuntimeLifetime {
 public:
  explicit RuntimeLifetime(platform::Runtime& runtime) : runtime_(runtime) {}

  // Request 1025: starts both runtimes from a clean state.
  hresult start();
  // Shuts down what is started; a failed MFShutdown keeps its flag so the next try repeats it.
  void shutdown();

 private:
  platform::Runtime& runtime_;
  bool ro_initialized_ = false;
  bool mf_started_ = false;
};

// The process's runtime state: the two flags are process-wide, so a shutdown that failed at one
// exit is tried again by the next start-up.
RuntimeLifetime& process_runtime();

}  // namespace vexcap::api
