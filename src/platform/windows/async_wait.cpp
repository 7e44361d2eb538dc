#include "platform/windows/async_wait.h"

namespace vexcap::windows {

namespace detail {

CompletionEvent::CompletionEvent() : handle_(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
  if (handle_ == nullptr) throw_platform_error(HRESULT_FROM_WIN32(GetLastError()));
}

CompletionEvent::~CompletionEvent() { CloseHandle(handle_); }

void CompletionEvent::set() { SetEvent(handle_); }

void CompletionEvent::wait() { WaitForSingleObject(handle_, INFINITE); }

}  // namespace detail

void wait_for(const ComPtr<abi::IAsyncAction>& action) {
  check_present(action);
  detail::wait_until_completed<abi::IAsyncActionCompletedHandler>(action.get());
  detail::throw_unless_completed(action.get(), [&] { action->GetResults(); });
  check(action->GetResults());
}

}  // namespace vexcap::windows
