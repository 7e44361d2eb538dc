// The request thread: one thread owns every capture object; exports reach it with one
// synchronous request at a time. Win32 builds use a hidden message window, others a mailbox.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>

#include "common/hresult.h"

namespace vexcap::api {

// What a request leaves behind for its caller.
struct RequestSlots {
  std::atomic<hresult> result{HR_OK};    // written by every handler
  std::atomic<std::uint8_t> boolean{0};  // written only by the vid/pid-in-use query
};

// Runs the requests on the request thread; created there and destroyed there.
class RequestHandler {
 public:
  virtual ~RequestHandler() = default;
  // Runs one request message; true for the exit request, which ends the thread's loop.
  virtual bool dispatch(std::uint32_t message, std::uintptr_t wparam, std::intptr_t lparam) = 0;
};

// Called once on the request thread to build its handler.
using RequestHandlerFactory = std::function<std::unique_ptr<RequestHandler>()>;

class RequestTransport {
 public:
  virtual ~RequestTransport() = default;
  // Runs the request's handler on the request thread and returns when it has finished.
  // Called on the request thread itself, the handler runs directly.
  virtual void send(std::uint32_t message, std::uintptr_t wparam, std::intptr_t lparam) = 0;
  // Posts the exit request, waits up to 10000 ms for the thread and releases its handles.
  // A thread that does not end in time is abandoned, not killed.
  virtual void stop() = 0;
};

// Starts the request thread; null (after logging and tearing down) when it cannot start.
// The factory (and what it holds) is kept by the thread, which may outlive the caller when
// abandoned.
std::unique_ptr<RequestTransport> start_request_thread(RequestHandlerFactory make_handler);

// Tests replace the starter to simulate a request thread that cannot start.
using RequestThreadStarter = std::function<std::unique_ptr<RequestTransport>(RequestHandlerFactory)>;
void set_request_thread_starter_for_testing(RequestThreadStarter starter);

constexpr std::uint32_t kRequestThreadStopTimeoutMs = 10000;

// Answers the messages other threads have sent to windows of the calling thread (on Windows;
// nothing elsewhere). The request thread's waits call it between slices, so that a thread
// sending it an ordinary message is not held up by a request that waits; the request window
// itself runs no second request inside a waiting one.
void answer_sent_messages();

}  // namespace vexcap::api
