#include "api/context.h"

#include <atomic>
#include <utility>

#include "api/dispatcher.h"
#include "api/messages.h"
#include "api/result_codes.h"
#include "log/log.h"
#include "vexcap/vexcap.h"

namespace vexcap::api {

namespace {

// The contract makes the context process-wide: one request thread serves the whole process.
std::atomic<Context*> g_context{nullptr};

RequestThreadStarter& starter_override() {
  static RequestThreadStarter starter;
  return starter;
}

std::unique_ptr<RequestTransport> start_configured_request_thread(std::shared_ptr<RequestSlots> slots) {
  // The dispatcher is built on the request thread and keeps the slots alive with it.
  RequestHandlerFactory make_dispatcher = [slots] { return std::make_unique<Dispatcher>(*slots); };
  if (starter_override()) return starter_override()(std::move(make_dispatcher));
  return start_request_thread(std::move(make_dispatcher));
}

void tear_down(std::unique_ptr<Context> context) {
  context->transport->stop();
  context->transport.reset();
}

}  // namespace

void set_request_thread_starter_for_testing(RequestThreadStarter starter) {
  starter_override() = std::move(starter);
}

Context* current_context() { return g_context.load(std::memory_order_acquire); }

hresult send_request(Context& context, std::uint32_t message, std::uintptr_t wparam,
                     std::intptr_t lparam) {
  std::lock_guard<ReentrantMutex> lock(context.request_lock);
  context.transport->send(message, wparam, lparam);
  return context.slots->result.load();
}

bool notify_capture_failure(const std::shared_ptr<client::VexCap>& client) {
  Context* context = current_context();
  if (context == nullptr) return false;
  std::shared_ptr<client::VexCap> reference = client;  // held for the request
  send_request(*context, kMsgCaptureFailed, 0, reinterpret_cast<std::intptr_t>(&reference));
  return true;
}

int initialize_library() {
  if (current_context() != nullptr) return VEXCAP_OK;  // a second init is a no-op

  auto context = std::make_unique<Context>();
  context->transport = start_configured_request_thread(context->slots);
  if (!context->transport) {
    VXLOG('E', "Failed initializing the VXC thread");
    return static_cast<int>(HR_FAIL);  // raw, not mapped
  }
  Context* started = context.get();
  g_context.store(context.release(), std::memory_order_release);

  const hresult result = send_request(*started, kMsgRuntimeStartup, 0, 0);
  if (failed(result)) {
    VXLOG('E', "Failed initializing the VexCap: %08x", result);
    send_request(*started, kMsgExit, 0, 0);
    g_context.store(nullptr, std::memory_order_release);
    tear_down(std::unique_ptr<Context>(started));
  }
  // A positive result is reported but the library stays up.
  return to_result_code(result);
}

int exit_library() {
  Context* context = current_context();
  if (context == nullptr) return VEXCAP_OK;
  context->deferred.drain();
  const hresult result = send_request(*context, kMsgExit, 0, 0);
  g_context.store(nullptr, std::memory_order_release);
  tear_down(std::unique_ptr<Context>(context));
  return to_result_code(result);
}

}  // namespace vexcap::api
