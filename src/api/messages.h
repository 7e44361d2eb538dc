// Request messages: one per exported request, sent to the request thread.
#pragma once

#include <cstdint>

namespace vexcap::api {

enum Message : std::uint32_t {
  kMsgExit = 1024,
  kMsgRuntimeStartup = 1025,
  kMsgDeviceCapabilities = 1026,
  kMsgDeviceLocations = 1027,
  kMsgSourceGroupType = 1028,
  kMsgTargetedLocation = 1029,
  kMsgVidPidUsed = 1030,
  kMsgDeviceOpen = 1031,
  kMsgDeviceClose = 1032,
  kMsgStartStreaming = 1033,
  kMsgStopStreaming = 1034,
  kMsgSetExposure = 1035,
  kMsgSetIsoSpeed = 1036,
  kMsgSetLedPower = 1037,
  kMsgGetExposure = 1038,
  kMsgGetIsoSpeed = 1039,
  kMsgGetLedPower = 1040,
  kMsgSetDeviceProperty = 1041,
  kMsgGetDeviceProperty = 1042,
  kMsgRegisterExclusiveControl = 1043,
  kMsgUnregisterExclusiveControl = 1044,
  kMsgRegisterRgbStatus = 1045,
  kMsgUnregisterRgbStatus = 1046,
  kMsgRegisterUnsupportedFormat = 1047,
  kMsgUnregisterUnsupportedFormat = 1048,
  kMsgRegisterRgbStopped = 1049,
  kMsgUnregisterRgbStopped = 1050,
  kMsgStartStreamingEx = 1051,
  kMsgStopStreamingEx = 1052,
  kMsgSourceGroupTypeForVidPid = 1053,
  kMsgCaptureFailed = 1054,
};

constexpr bool is_request_message(std::uint32_t message) {
  return message >= kMsgExit && message <= kMsgCaptureFailed;
}

}  // namespace vexcap::api
