// The library's process-wide context: the request thread and what its requests leave behind.
#pragma once

#include <functional>
#include <memory>
#include <mutex>

#include "api/deferred_requests.h"
#include "api/request_transport.h"
#include "api/requests.h"
#include "common/manual_reset_event.h"
#include "common/reentrant_mutex.h"
#include "device/open_devices.h"

namespace vexcap::capture {
class CaptureClient;
}

namespace vexcap::api {

struct Context {
  std::shared_ptr<RequestSlots> slots = std::make_shared<RequestSlots>();
  // Set by vexcap_exit before it waits for anything: an open that keeps retrying gives up.
  std::shared_ptr<ManualResetEvent> exit_requested = std::make_shared<ManualResetEvent>();
  std::shared_ptr<device::OpenDevices> devices = std::make_shared<device::OpenDevices>();
  std::unique_ptr<RequestTransport> transport;
  // Held by every export around its send, never by the request thread. Recursive, like the
  // critical section hosts expect.
  ReentrantMutex request_lock;
  bool stopped = false;  // guarded by request_lock: the exit request has run, nothing more is sent
  // Stops, closes and event (un)registrations asked for from inside callbacks, and recoveries.
  // Declared last: it is closed first, while everything its requests use still stands.
  DeferredRequests deferred;
};

// Null while the library is not initialized. Callers keep the context alive while they use it.
std::shared_ptr<Context> current_context();

// vexcap_init / vexcap_exit: serialized process-wide, so racing calls leave one request thread
// or none.
int initialize_library();
int exit_library();

// Sends one request under the request lock and returns the HRESULT its handler left (read
// before the lock is left, so a caller always reads its own request's result). `before_send`
// runs inside the lock right before the send. HR_INVALID_STATE, with nothing sent, once the
// library has exited.
template <typename R>
hresult send_request(Context& context, typename R::WRecord* wparam, typename R::LRecord* lparam,
                     const std::function<void()>& before_send = {});
// A host's own request: first waits for the requests deferred before it (outside callbacks),
// so requests run in the order they were asked for.
template <typename R>
hresult send_direct_request(Context& context, typename R::WRecord* wparam, typename R::LRecord* lparam,
                            const std::function<void()>& before_send = {});
// The bare send on the transport, for the requests that read their answer elsewhere than in the
// result slot; the caller holds the request lock.
template <typename R>
void send_on_transport(Context& context, typename R::WRecord* wparam, typename R::LRecord* lparam) {
  context.transport->send(R::id, to_wparam(wparam), to_lparam(lparam));
}

namespace detail {
hresult send_message(Context& context, std::uint32_t message, std::uintptr_t wparam, std::intptr_t lparam,
                     const std::function<void()>& before_send);
hresult send_direct_message(Context& context, std::uint32_t message, std::uintptr_t wparam,
                            std::intptr_t lparam, const std::function<void()>& before_send);
}  // namespace detail

template <typename R>
hresult send_request(Context& context, typename R::WRecord* wparam, typename R::LRecord* lparam,
                     const std::function<void()>& before_send) {
  return detail::send_message(context, R::id, to_wparam(wparam), to_lparam(lparam), before_send);
}

template <typename R>
hresult send_direct_request(Context& context, typename R::WRecord* wparam, typename R::LRecord* lparam,
                            const std::function<void()>& before_send) {
  return detail::send_direct_message(context, R::id, to_wparam(wparam), to_lparam(lparam), before_send);
}

// Hands a capture failure to the request thread (message 1054, in order with the deferred
// requests) and returns at once; false when there is no request thread.
bool notify_capture_failure(const std::weak_ptr<capture::CaptureClient>& client);

}  // namespace vexcap::api
