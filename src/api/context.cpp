#include "api/context.h"

#include <utility>

#include "api/dispatcher.h"
#include "api/messages.h"
#include "api/result_codes.h"
#include "common/host_callback.h"
#include "log/log.h"
#include "vexcap/vexcap.h"

namespace vexcap::api {

namespace {

// The context is process-wide: one request thread serves every device of the process.
struct LibraryState {
  std::mutex lifecycle;  // held through every vexcap_init and vexcap_exit
  std::mutex pointer;    // guards context
  std::shared_ptr<Context> context;
};

LibraryState& library() {
  static LibraryState state;
  return state;
}

void publish(std::shared_ptr<Context> context) {
  std::lock_guard<std::mutex> lock(library().pointer);
  library().context = std::move(context);
}

RequestThreadStarter& starter_override() {
  static RequestThreadStarter starter;
  return starter;
}

std::unique_ptr<RequestTransport> start_configured_request_thread(const Context& context) {
  // The dispatcher is built on the request thread and keeps what it shares with the exports.
  RequestHandlerFactory make_dispatcher = [slots = context.slots, devices = context.devices,
                                           exit_requested = context.exit_requested] {
    device::DeviceEnvironment environment{&platform::current(), exit_requested, notify_capture_failure,
                                          answer_sent_messages, std::this_thread::get_id()};
    return std::make_unique<Dispatcher>(slots, devices, std::move(environment));
  };
  if (starter_override()) return starter_override()(std::move(make_dispatcher));
  return start_request_thread(std::move(make_dispatcher));
}

// Sends the exit request (which ends the request thread's loop), then stops the thread. The
// queue of deferred requests is run and closed first, while the request thread still serves it.
hresult shut_down(Context& context) {
  context.exit_requested->set();
  context.deferred.close();
  hresult result = HR_OK;
  {
    std::lock_guard<ReentrantMutex> lock(context.request_lock);
    send_on_transport<ExitRequest>(context, nullptr, nullptr);
    result = context.slots->result.load();
    context.stopped = true;
  }
  context.transport->stop();
  return result;
}

}  // namespace

void set_request_thread_starter_for_testing(RequestThreadStarter starter) {
  starter_override() = std::move(starter);
}

std::shared_ptr<Context> current_context() {
  std::lock_guard<std::mutex> lock(library().pointer);
  return library().context;
}

namespace detail {

hresult send_message(Context& context, std::uint32_t message, std::uintptr_t wparam, std::intptr_t lparam,
                     const std::function<void()>& before_send) {
  std::lock_guard<ReentrantMutex> lock(context.request_lock);
  if (context.stopped) return HR_INVALID_STATE;  // exited meanwhile: as if never initialized
  if (before_send) before_send();
  context.transport->send(message, wparam, lparam);
  return context.slots->result.load();
}

hresult send_direct_message(Context& context, std::uint32_t message, std::uintptr_t wparam,
                            std::intptr_t lparam, const std::function<void()>& before_send) {
  // From inside a callback the deferred requests may be waiting for this very thread.
  if (!inside_host_callback()) context.deferred.wait_for_earlier();
  return send_message(context, message, wparam, lparam, before_send);
}

}  // namespace detail

bool notify_capture_failure(const std::weak_ptr<capture::CaptureClient>& client) {
  const std::shared_ptr<Context> context = current_context();
  if (!context) return false;
  // The queue is the context's own: it runs its requests before the context can go.
  Context* const target = context.get();
  return context->deferred.post([target, client] {
    std::weak_ptr<capture::CaptureClient> failed = client;  // resolved on the request thread
    send_request<CaptureFailedRequest>(*target, nullptr, &failed);
  });
}

int initialize_library() {
  std::lock_guard<std::mutex> lifecycle(library().lifecycle);
  if (current_context()) return VEXCAP_OK;  // a second init is a no-op

  auto context = std::make_shared<Context>();
  context->transport = start_configured_request_thread(*context);
  if (!context->transport) {
    VXLOG('E', "Failed initializing the VXC thread");
    return static_cast<int>(HR_FAIL);  // raw, not mapped
  }
  publish(context);

  const hresult result = send_request<RuntimeStartupRequest>(*context, nullptr, nullptr);
  if (failed(result)) {
    VXLOG('E', "Failed initializing the VexCap: %08x", result);
    publish(nullptr);
    shut_down(*context);
  }
  // A positive result is reported but the library stays up.
  return to_result_code(result);
}

int exit_library() {
  std::lock_guard<std::mutex> lifecycle(library().lifecycle);
  const std::shared_ptr<Context> context = current_context();
  if (!context) return VEXCAP_OK;
  publish(nullptr);  // requests from now on find no library
  return to_result_code(shut_down(*context));
}

}  // namespace vexcap::api
