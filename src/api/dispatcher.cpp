#include "api/dispatcher.h"

#include "api/messages.h"
#include "api/request_args.h"
#include "platform/port.h"

namespace vexcap::api {

Dispatcher::Dispatcher(RequestSlots& slots)
    : slots_(slots), runtime_(process_runtime()) {}

Dispatcher::~Dispatcher() = default;

bool Dispatcher::dispatch(std::uint32_t message, std::uintptr_t wparam, std::intptr_t lparam) {
  switch (message) {
    case kMsgExit:
      runtime_.shutdown();
      slots_.result = HR_OK;
      return true;
    case kMsgVidPidUsed:
      handle_vid_pid_used(wparam, lparam);  // answers in the boolean slot only
      return false;
    case kMsgCaptureFailed:
      handle(message, wparam, lparam);  // recovery leaves the result slot alone
      return false;
    default:
      slots_.result = handle(message, wparam, lparam);
      return false;
  }
}

hresult Dispatcher::handle(std::uint32_t message, std::uintptr_t, std::intptr_t lparam) {
  switch (message) {
    case kMsgRuntimeStartup:
      return runtime_.start();
    case kMsgDeviceClose:
      return close_device(*from_param<vexcap_device>(lparam));

    // Requests whose handlers the library does not have yet.
    case kMsgDeviceCapabilities:
    case kMsgDeviceLocations:
    case kMsgSourceGroupType:
    case kMsgTargetedLocation:
    case kMsgSourceGroupTypeForVidPid:
    case kMsgDeviceOpen:
    case kMsgStartStreaming:
    case kMsgStopStreaming:
    case kMsgStartStreamingEx:
    case kMsgStopStreamingEx:
    case kMsgSetExposure:
    case kMsgSetIsoSpeed:
    case kMsgSetLedPower:
    case kMsgGetExposure:
    case kMsgGetIsoSpeed:
    case kMsgGetLedPower:
    case kMsgSetDeviceProperty:
    case kMsgGetDeviceProperty:
    case kMsgRegisterExclusiveControl:
    case kMsgUnregisterExclusiveControl:
    case kMsgRegisterRgbStatus:
    case kMsgUnregisterRgbStatus:
    case kMsgRegisterUnsupportedFormat:
    case kMsgUnregisterUnsupportedFormat:
    case kMsgRegisterRgbStopped:
    case kMsgUnregisterRgbStopped:
    case kMsgCaptureFailed:
      return HR_NOTIMPL;
    default:
      return HR_NOTIMPL;
  }
}

void Dispatcher::handle_vid_pid_used(std::uintptr_t, std::intptr_t) {
  // No platform query yet: the boolean keeps the 0 the export placed there.
}

hresult Dispatcher::close_device(const vexcap_device& handle) {
  std::shared_ptr<Device>& slot = device_slot(handle);
  if (!slot) return HR_FAIL;
  return HR_NOTIMPL;
}

std::shared_ptr<Device>& Dispatcher::device_slot(const vexcap_device& handle) {
  return handle.stream_mode != 0 ? non_zero_mode_device_ : mode_zero_device_;
}

}  // namespace vexcap::api
