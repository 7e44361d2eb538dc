// The library's process-wide context: the request thread and what its requests leave behind.
#pragma once

#include <memory>
#include <mutex>

#include "api/deferred_requests.h"
#include "api/request_transport.h"
#include "common/reentrant_mutex.h"

namespace vexcap::client {
class VexCap;
}

namespace vexcap::api {

struct Context {
  std::shared_ptr<RequestSlots> slots = std::make_shared<RequestSlots>();
  std::unique_ptr<RequestTransport> transport;
  // Held by every export around its send, never by the request thread. Recursive, like the
  // critical section hosts expect.
  ReentrantMutex request_lock;
  // Stops and closes asked for from inside frame callbacks.
  DeferredRequests deferred;
};

// Null while the library is not initialized.
Context* current_context();

// vexcap_init / vexcap_exit.
int initialize_library();
int exit_library();

// Sends one request under the request lock and returns the HRESULT its handler left. The result
// is read before the lock is left, so a caller always reads its own request's result.
hresult send_request(Context& context, std::uint32_t message, std::uintptr_t wparam,
                     std::intptr_t lparam);

// Hands a capture failure to the request thread (message 1054, under the request lock); false
// when there is no request thread.
bool notify_capture_failure(const std::shared_ptr<client::VexCap>& client);

}  // namespace vexcap::api
