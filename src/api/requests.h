// Every request, declared once: its message number and the records its wParam and lParam carry.
// The exports send through these declarations and the dispatcher's handlers are looked up by
// them, so a record that does not match its request does not compile. The records are built on
// the sender's stack and live only during the call.
#pragma once

#include <cstdint>
#include <memory>

#include "api/messages.h"
#include "vexcap/vexcap.h"

namespace vexcap::capture {
class CaptureClient;
}

namespace vexcap::api {

// A parameter the request does not use: sent as 0.
struct Unused {};

struct CallbackArgs {  // the streaming and event registrations
  void* callback;
  void* context;
};

template <typename T>
struct ResultPointer {  // where a discovery query writes its answer
  T* result;
};

struct VidPid {  // the two texts the vid/pid queries look for
  const wchar_t* vid;
  const wchar_t* pid;
};

template <typename T>
struct Value {  // a control setter's value
  T value;
};

template <Message Id, typename WParam, typename LParam>
struct Request {
  static constexpr Message id = Id;
  using WRecord = WParam;
  using LRecord = LParam;
};

using RuntimeStartupRequest = Request<kMsgRuntimeStartup, Unused, Unused>;
using ExitRequest = Request<kMsgExit, Unused, Unused>;
using DeviceCapabilitiesRequest = Request<kMsgDeviceCapabilities, const wchar_t, ResultPointer<std::uint8_t>>;
using DeviceLocationsRequest = Request<kMsgDeviceLocations, const wchar_t, ResultPointer<std::uint8_t>>;
using SourceGroupTypeRequest = Request<kMsgSourceGroupType, Unused, ResultPointer<std::uint32_t>>;
using TargetedLocationRequest = Request<kMsgTargetedLocation, Unused, ResultPointer<std::uint32_t>>;
using VidPidUsedRequest = Request<kMsgVidPidUsed, const wchar_t, VidPid>;  // answers in the boolean slot
using SourceGroupTypeForVidPidRequest =
    Request<kMsgSourceGroupTypeForVidPid, VidPid, ResultPointer<std::uint32_t>>;
using DeviceOpenRequest = Request<kMsgDeviceOpen, const wchar_t, const vexcap_open_params>;
using DeviceCloseRequest = Request<kMsgDeviceClose, Unused, vexcap_device>;
using StartStreamingRequest = Request<kMsgStartStreaming, CallbackArgs, vexcap_device>;
using StartStreamingExRequest = Request<kMsgStartStreamingEx, CallbackArgs, vexcap_device>;
using StopStreamingRequest = Request<kMsgStopStreaming, Unused, vexcap_device>;
using StopStreamingExRequest = Request<kMsgStopStreamingEx, Unused, vexcap_device>;
using SetExposureRequest = Request<kMsgSetExposure, Value<std::int64_t>, vexcap_device>;
using SetIsoSpeedRequest = Request<kMsgSetIsoSpeed, Value<std::uint32_t>, vexcap_device>;
using SetLedPowerRequest = Request<kMsgSetLedPower, Value<std::uint32_t>, vexcap_device>;
using GetExposureRequest = Request<kMsgGetExposure, std::uint64_t, vexcap_device>;
using GetIsoSpeedRequest = Request<kMsgGetIsoSpeed, std::uint32_t, vexcap_device>;
using GetLedPowerRequest = Request<kMsgGetLedPower, std::uint32_t, vexcap_device>;
using SetDevicePropertyRequest = Request<kMsgSetDeviceProperty, vexcap_property, vexcap_device>;
using GetDevicePropertyRequest = Request<kMsgGetDeviceProperty, vexcap_property, vexcap_device>;
using RegisterExclusiveControlRequest = Request<kMsgRegisterExclusiveControl, CallbackArgs, vexcap_device>;
using UnregisterExclusiveControlRequest = Request<kMsgUnregisterExclusiveControl, Unused, vexcap_device>;
using RegisterRgbStatusRequest = Request<kMsgRegisterRgbStatus, CallbackArgs, vexcap_device>;
using UnregisterRgbStatusRequest = Request<kMsgUnregisterRgbStatus, Unused, vexcap_device>;
using RegisterUnsupportedFormatRequest = Request<kMsgRegisterUnsupportedFormat, CallbackArgs, vexcap_device>;
using UnregisterUnsupportedFormatRequest = Request<kMsgUnregisterUnsupportedFormat, Unused, vexcap_device>;
using RegisterRgbStoppedRequest = Request<kMsgRegisterRgbStopped, CallbackArgs, vexcap_device>;
using UnregisterRgbStoppedRequest = Request<kMsgUnregisterRgbStopped, Unused, vexcap_device>;
// Resolved on the request thread, so a client's last release (a device closed meanwhile) is there.
using CaptureFailedRequest = Request<kMsgCaptureFailed, Unused, std::weak_ptr<capture::CaptureClient>>;

// The message's two words for a request's records: the records' addresses, 0 for an unused one.
template <typename T>
std::uintptr_t to_wparam(T* record) {
  return reinterpret_cast<std::uintptr_t>(record);
}
inline std::uintptr_t to_wparam(Unused*) { return 0; }
template <typename T>
std::intptr_t to_lparam(T* record) {
  return reinterpret_cast<std::intptr_t>(record);
}
inline std::intptr_t to_lparam(Unused*) { return 0; }

// The records back from the two words, typed by the request's declaration.
template <typename R>
typename R::WRecord* wparam_record(std::uintptr_t wparam) {
  return reinterpret_cast<typename R::WRecord*>(wparam);
}
template <typename R>
typename R::LRecord* lparam_record(std::intptr_t lparam) {
  return reinterpret_cast<typename R::LRecord*>(lparam);
}

}  // namespace vexcap::api
