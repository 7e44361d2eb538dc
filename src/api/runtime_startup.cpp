#include "api/runtime_startup.h"

#include "log/log.h"

namespace vexcap::api {

hresult RuntimeLifetime::start() {
  shutdown();

  const hresult ro = runtime_.ro_initialize_multithreaded();
  if (ro != HR_OK && ro != HR_FALSE && ro != HR_CHANGED_MODE) {
    VXLOG('E', "Failed initializing Windows Foundation: %08x", ro);
    return ro;
  }
  // Kept after RPC_E_CHANGED_MODE too, so shutdown uninitializes all the same.
  ro_initialized_ = true;

  const hresult mf = runtime_.mf_startup();
  if (succeeded(mf)) {
    mf_started_ = true;
    return HR_OK;
  }
  VXLOG('E', "Failed initializing Media Foundation: %08x", mf);
  shutdown();
  return mf;
}

void RuntimeLifetime::shutdown() {
  if (mf_started_) {
    const hresult mf = runtime_.mf_shutdown();
    if (failed(mf)) {
      VXLOG('E', "Failed shutting down MF: %08x", mf);
    } else {
      mf_started_ = false;
    }
  }
  if (ro_initialized_) {
    runtime_.ro_uninitialize();
    ro_initialized_ = false;
  }
}

RuntimeLifetime& process_runtime() {
  static RuntimeLifetime lifetime(platform::current().runtime());
  return lifetime;
}

}  // namespace vexcap::api
