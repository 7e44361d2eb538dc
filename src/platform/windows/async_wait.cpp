#include "platform/windows/async_wait.h"

namespace vexcap::windows {

namespace detail {

CompletionEvent::CompletionEvent() : handle_(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
  if (handle_ == nullptr) throw_platform_error(HRESULT_FROM_WIN32(GetLastError()));
}

CompletionEvent::~CompletionEvent() { CloseHandle(handle_); }

void CompletionEvent::set() { SetEvent(handle_); }

// The request thread owns a window: while it waits, messages other threads send to it are
// answered (its window procedure runs no second request inside a waiting one).
void CompletionEvent::wait() {
  for (;;) {
    const DWORD woken = MsgWaitForMultipleObjectsEx(1, &handle_, INFINITE, QS_SENDMESSAGE, 0);
    if (woken == WAIT_OBJECT_0) return;
    if (woken != WAIT_OBJECT_0 + 1) {  // the wait itself failed: wait without answering
      WaitForSingleObject(handle_, INFINITE);
      return;
    }
    MSG message;
    PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
  }
}

}  // namespace detail

void wait_for(const ComPtr<abi::IAsyncAction>& action) {
  check_present(action);
  detail::wait_until_completed<abi::IAsyncActionCompletedHandler>(action.get());
  detail::throw_unless_completed(action.get(), [&] { action->GetResults(); });
  check(action->GetResults());
}

}  // namespace vexcap::windows
