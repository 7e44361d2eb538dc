// Waiting on the calling thread for an asynchronous action or operation: a Completed handler
// signals an event, with no time limit. A failed operation throws PlatformError with its error
// code and the platform's message; a cancelled one throws ERROR_CANCELLED.
#pragma once

#include <memory>
#include <type_traits>

#include "platform/windows/activation.h"
#include "platform/windows/delegate.h"
#include "platform/windows/winrt/foundation_abi.h"

namespace vexcap::windows {

namespace detail {

// A manual-reset Win32 event shared by the waiter and the Completed handler.
class CompletionEvent {
 public:
  CompletionEvent();
  CompletionEvent(const CompletionEvent&) = delete;
  CompletionEvent& operator=(const CompletionEvent&) = delete;
  ~CompletionEvent();
  void set();
  void wait();

 private:
  HANDLE handle_;
};

template <class Handler, class Async>
void wait_until_completed(Async* async) {
  auto completed = std::make_shared<CompletionEvent>();
  auto handler = make_delegate<Handler>([completed](auto*, abi::AsyncStatus) {
    completed->set();
    return S_OK;
  });
  check(async->put_Completed(handler.get()));
  completed->wait();
}

// Throws unless the operation completed; `results` re-reads the outcome so that the
// platform leaves its error details on this thread.
template <class Async, class Results>
void throw_unless_completed(Async* async, Results results) {
  ComPtr<abi::IAsyncInfo> info = query<abi::IAsyncInfo>(ComPtr<Async>::copy_from(async));
  abi::AsyncStatus status = abi::AsyncStatus::Started;
  check(info->get_Status(&status));
  if (status == abi::AsyncStatus::Completed) return;
  if (status == abi::AsyncStatus::Canceled) throw_platform_error(HRESULT_FROM_WIN32(ERROR_CANCELLED));
  HRESULT code = E_FAIL;
  check(info->get_ErrorCode(&code));
  results();
  throw_platform_error(FAILED(code) ? code : E_FAIL);
}

}  // namespace detail

void wait_for(const ComPtr<abi::IAsyncAction>& action);

// The operation's result: a ComPtr for classes and interfaces, the value for enumerations.
template <class T>
auto wait_for(const ComPtr<abi::IAsyncOperation<T>>& operation) {
  using Result = abi::abi_t<T>;
  check_present(operation);
  detail::wait_until_completed<abi::IAsyncOperationCompletedHandler<T>>(operation.get());
  if constexpr (std::is_pointer_v<Result>) {
    ComPtr<std::remove_pointer_t<Result>> result;
    detail::throw_unless_completed(operation.get(), [&] { operation->GetResults(result.put()); });
    check(operation->GetResults(result.put()));
    return result;
  } else {
    Result result{};
    detail::throw_unless_completed(operation.get(), [&] { operation->GetResults(&result); });
    check(operation->GetResults(&result));
    return result;
  }
}

}  // namespace vexcap::windows
