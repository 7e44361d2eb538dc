#include "platform/virtual/virtual_runtime.h"

namespace vexcap::virtual_camera {

void VirtualRuntime::reset() {
  ro_initialize_result_ = HR_OK;
  mf_startup_result_ = HR_OK;
  mf_shutdown_result_ = HR_OK;
  ro_initialize_calls_ = 0;
  ro_uninitialize_calls_ = 0;
  mf_startup_calls_ = 0;
  mf_shutdown_calls_ = 0;
  sessions_open_at_mf_shutdown_ = -1;
}

hresult VirtualRuntime::ro_initialize_multithreaded() {
  ++ro_initialize_calls_;
  return ro_initialize_result_;
}

void VirtualRuntime::ro_uninitialize() { ++ro_uninitialize_calls_; }

hresult VirtualRuntime::mf_startup() {
  ++mf_startup_calls_;
  return mf_startup_result_;
}

hresult VirtualRuntime::mf_shutdown() {
  ++mf_shutdown_calls_;
  if (count_sessions_) sessions_open_at_mf_shutdown_ = count_sessions_();
  return mf_shutdown_result_;
}

}  // namespace vexcap::virtual_camera
