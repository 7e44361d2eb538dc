// What a device takes from the layers around it: the platform its clients open, vexcap_exit's
// signal, where its capture failures go, and what the request thread does between the slices of
// its waits.
#pragma once

#include <functional>
#include <memory>
#include <thread>

#include "capture/capture_client.h"
#include "common/manual_reset_event.h"
#include "platform/port.h"

namespace vexcap::device {

struct DeviceEnvironment {
  platform::Platform* platform = nullptr;
  // Set by vexcap_exit: an open that keeps retrying gives up.
  std::shared_ptr<const ManualResetEvent> exit_requested;
  // Hands a capture failure of an exclusive client to the request thread.
  capture::CaptureClient::FailureNotifier capture_failures;
  // Run by the request thread between the slices of its waits for a client's initialization
  // (answers the messages sent to its windows on Windows).
  std::function<void()> between_wait_slices;
  // The thread the device's requests run on (debug builds check it).
  std::thread::id request_thread;
};

}  // namespace vexcap::device
