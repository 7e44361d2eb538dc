// The request thread on Windows: a hidden top-level window of the class "VXDCTWindow" whose
// message loop runs every request; exports reach it with SendMessageW.
#include <windows.h>

#include <process.h>

#include <cerrno>
#include <utility>

#include "api/messages.h"
#include "api/request_transport.h"
#include "log/log.h"

namespace vexcap::api {

namespace {

constexpr wchar_t kWindowClass[] = L"VXDCTWindow";

// Set by a send from the request thread to its own window, which calls the window procedure
// directly; every other request reaching the procedure comes from another thread.
thread_local bool direct_send_pending = false;

// The window's state: lives on the request thread's stack; its address is the window's
// creation parameter and then its user data.
struct WindowState {
  HWND window = nullptr;
  RequestHandler* handler = nullptr;
  bool quit = false;
  std::uint32_t running = 0;  // the request being handled, 0 between requests
};

// Shared with the thread so an abandoned thread never outlives what it uses.
struct ThreadShared {
  explicit ThreadShared(RequestHandlerFactory factory) : make_handler(std::move(factory)) {}
  RequestHandlerFactory make_handler;
  HANDLE created = nullptr;  // auto-reset creation event
  HWND window = nullptr;     // set by the thread before it signals `created`
};

LRESULT CALLBACK window_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_NCCREATE:
      return TRUE;
    case WM_CREATE: {
      auto* create = reinterpret_cast<CREATESTRUCTW*>(lparam);
      auto* state = static_cast<WindowState*>(create->lpCreateParams);
      SetLastError(0);
      if (SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(state)) == 0) {
        const DWORD error = GetLastError();
        if (error != 0) {
          VXLOG('E', "Failed setting the user data pointer: %lu", error);
          return -1;
        }
      }
      state->window = window;
      return 0;
    }
    case WM_DESTROY: {
      SetLastError(1);  // kept as the window has always done it
      auto* state = reinterpret_cast<WindowState*>(GetWindowLongPtrW(window, GWLP_USERDATA));
      if (state != nullptr) {
        state->quit = true;
        PostQuitMessage(0);
      }
      return DefWindowProcW(window, message, wparam, lparam);
    }
    default:
      break;
  }
  if (is_request_message(message)) {
    auto* state = reinterpret_cast<WindowState*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (state == nullptr || state->handler == nullptr) return 0;
    // A waiting request answers messages sent from other threads; a request among them would
    // run inside the waiting one. (A send from the request thread itself runs directly.)
    const bool direct = std::exchange(direct_send_pending, false);
    if (state->running != 0 && !direct) {
      VXLOG('W', "Request %u refused: request %u is still running", message, state->running);
      return 0;
    }
    const std::uint32_t outer = std::exchange(state->running, message);
    const bool exit = state->handler->dispatch(message, static_cast<std::uintptr_t>(wparam),
                                               static_cast<std::intptr_t>(lparam));
    state->running = outer;
    if (exit) DestroyWindow(window);  // the exit request: WM_DESTROY ends the loop
    return 0;
  }
  return DefWindowProcW(window, message, wparam, lparam);
}

void signal_created(HANDLE event, const char* failure_text) {
  if (!SetEvent(event)) VXLOG('W', failure_text, GetLastError());
}

unsigned __stdcall request_thread_main(void* argument) {
  // The thread holds its own reference to everything it touches.
  std::shared_ptr<ThreadShared> shared = *static_cast<std::shared_ptr<ThreadShared>*>(argument);
  delete static_cast<std::shared_ptr<ThreadShared>*>(argument);

  // The host process's instance, not the library's module.
  const HINSTANCE instance = GetModuleHandleW(nullptr);
  WNDCLASSEXW window_class{};
  window_class.cbSize = sizeof window_class;
  window_class.style = 0;
  window_class.lpfnWndProc = window_procedure;
  window_class.hInstance = instance;
  window_class.hbrBackground = reinterpret_cast<HBRUSH>(static_cast<INT_PTR>(COLOR_WINDOW));
  window_class.lpszClassName = kWindowClass;
  if (!RegisterClassExW(&window_class)) {
    signal_created(shared->created, "Failed setting window create event for registration failure: %lu");
    return 0;
  }

  std::unique_ptr<RequestHandler> handler = shared->make_handler();
  WindowState state;
  state.handler = handler.get();
  HWND window = CreateWindowExW(0, kWindowClass, L"", WS_MINIMIZE, 0, 0, 0, 0, nullptr, nullptr,
                                instance, &state);
  shared->window = window;
  if (window == nullptr) {
    UnregisterClassW(kWindowClass, instance);
    signal_created(shared->created, "Failed setting window create event for failure: %lu");
    return 0;
  }
  signal_created(shared->created, "Failed setting window create event for success: %lu");

  MSG message;
  while (!state.quit) {
    if (GetMessageW(&message, nullptr, 0, 0) <= 0) break;
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
  if (!UnregisterClassW(kWindowClass, instance)) VXLOG('W', "E: UnregisterClass failed");
  return 0;
}

class Win32RequestThread final : public RequestTransport {
 public:
  explicit Win32RequestThread(RequestHandlerFactory make_handler)
      : shared_(std::make_shared<ThreadShared>(std::move(make_handler))) {}
  ~Win32RequestThread() override { stop(); }

  bool start() {
    shared_->created = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    if (shared_->created == nullptr) {
      VXLOG('E', "Failed creating device client thread event: %lu", GetLastError());
      return false;
    }
    auto* argument = new std::shared_ptr<ThreadShared>(shared_);
    thread_ = reinterpret_cast<HANDLE>(
        _beginthreadex(nullptr, 0, request_thread_main, argument, 0, nullptr));
    if (thread_ == nullptr) {
      delete argument;
      VXLOG('E', "Failed creating device client thread: %d", errno);
      return false;
    }
    switch (const DWORD wait = WaitForSingleObject(shared_->created, INFINITE)) {
      case WAIT_OBJECT_0:
        window_ = shared_->window;
        if (window_ != nullptr) return true;
        VXLOG('E', "Failed creating the window handle");
        return false;
      case WAIT_FAILED:
        VXLOG('E', "Failed waiting for the creation event: %lu", GetLastError());
        return false;
      default:
        VXLOG('E', "Unknown wait result: %lu", wait);
        return false;
    }
  }

  void send(std::uint32_t message, std::uintptr_t wparam, std::intptr_t lparam) override {
    direct_send_pending = GetWindowThreadProcessId(window_, nullptr) == GetCurrentThreadId();
    SendMessageW(window_, message, static_cast<WPARAM>(wparam), static_cast<LPARAM>(lparam));
    direct_send_pending = false;
  }

  void stop() override {
    if (window_ != nullptr) {
      // After a normal exit the window is already gone and this post fails, which is expected.
      if (!PostMessageW(window_, kMsgExit, 0, 0))
        VXLOG('W', "Failed posting exit message to the window thread: %lu", GetLastError());
      window_ = nullptr;
    }
    if (shared_->created != nullptr) {
      if (!CloseHandle(shared_->created))
        VXLOG('W', "Failed closing create event handle: %lu!", GetLastError());
      shared_->created = nullptr;
    }
    if (thread_ != nullptr) {
      const DWORD wait = WaitForSingleObject(thread_, kRequestThreadStopTimeoutMs);
      if (wait == WAIT_TIMEOUT) {
        VXLOG('W', "Time out waiting for thread to close!");
      } else if (wait == WAIT_FAILED) {
        VXLOG('W', "Error waiting for thread to close: %lu!", GetLastError());
      } else if (wait != WAIT_OBJECT_0) {
        VXLOG('W', "Unknown wait result for thread to close: %lu!", wait);
      }
      if (!CloseHandle(thread_)) VXLOG('W', "Failed closing thread: %lu!", GetLastError());
      thread_ = nullptr;  // a thread that did not end is abandoned, never killed
    }
  }

 private:
  std::shared_ptr<ThreadShared> shared_;
  HANDLE thread_ = nullptr;
  HWND window_ = nullptr;
};

}  // namespace

void answer_sent_messages() {
  // Peeking dispatches every message sent to this thread's windows and removes nothing posted.
  MSG message;
  PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
}

std::unique_ptr<RequestTransport> start_request_thread(RequestHandlerFactory make_handler) {
  auto thread = std::make_unique<Win32RequestThread>(std::move(make_handler));
  if (!thread->start()) return nullptr;  // the destructor runs Stop
  return thread;
}

}  // namespace vexcap::api
