// The virtual platform's runtime: start-up results chosen by tests, calls counted.
#pragma once

#include <atomic>

#include "platform/port.h"
#include "platform/virtual/camera_api.h"

namespace vexcap::virtual_camera {

class VEXCAP_VIRTUAL_CAMERA_API VirtualRuntime : public platform::Runtime {
 public:
  // Results the next calls return (they stay until changed).
  void set_ro_initialize_result(hresult result) { ro_initialize_result_ = result; }
  void set_mf_startup_result(hresult result) { mf_startup_result_ = result; }
  void set_mf_shutdown_result(hresult result) { mf_shutdown_result_ = result; }
  void reset();

  int ro_initialize_calls() const { return ro_initialize_calls_; }
  int ro_uninitialize_calls() const { return ro_uninitialize_calls_; }
  int mf_startup_calls() const { return mf_startup_calls_; }
  int mf_shutdown_calls() const { return mf_shutdown_calls_; }

  hresult ro_initialize_multithreaded() override;
  void ro_uninitialize() override;
  hresult mf_startup() override;
  hresult mf_shutdown() override;

 private:
  std::atomic<hresult> ro_initialize_result_{HR_OK};
  std::atomic<hresult> mf_startup_result_{HR_OK};
  std::atomic<hresult> mf_shutdown_result_{HR_OK};
  std::atomic<int> ro_initialize_calls_{0};
  std::atomic<int> ro_uninitialize_calls_{0};
  std::atomic<int> mf_startup_calls_{0};
  std::atomic<int> mf_shutdown_calls_{0};
};

}  // namespace vexcap::virtual_camera
