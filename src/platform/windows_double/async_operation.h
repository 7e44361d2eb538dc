// IAsyncAction and IAsyncOperation<T> as the platform implements them: the work runs on a
// thread of the double's own and completes there. Per operation (seeded), it completes either
// before the caller can set its Completed handler (the method returns once the work is done,
// within 100 ms; the handler then runs at once on the setting thread, as Windows does) or
// after (the handler runs on the completing thread). A second
// put_Completed and GetResults before completion are violations with the platform's errors.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <type_traits>

#include "common/worker_thread.h"
#include "platform/port.h"
#include "platform/windows_double/object.h"
#include "platform/windows_double/thread_stacks.h"
#include "platform/windows_double/unmodelled.h"
#include "platform/windows_double/violations.h"

namespace vexcap::windows_double {

inline constexpr HRESULT kIllegalMethodCall = HRESULT(0x8000000Eu);
inline constexpr HRESULT kIllegalDelegateAssignment = HRESULT(0x80000018u);

// Whether the next operation completes before its caller can set the handler.
bool next_operation_completes_early();

// How long an operation that waits for the platform's own event handlers (StopAsync, Close)
// may take before the wait counts as a deadlock with a handler that waits on the caller.
inline constexpr std::chrono::seconds kHandlerWaitLimit{10};

// What the work of an operation produced: a failure code, or a way to hand out its results.
template <class Result>
struct Outcome {
  HRESULT error = S_OK;
  std::function<HRESULT(Result*)> results;  // unused for actions
};

// Runs `work`, turning the port's PlatformError into the operation's error code.
template <class Result, class Work>
Outcome<Result> run_work(Work& work) {
  try {
    return work();
  } catch (const platform::PlatformError& error) {
    return {error.code() < 0 ? HRESULT(error.code()) : E_FAIL, {}};
  } catch (...) {
    return {E_FAIL, {}};
  }
}

template <class Operation, class Handler, class Result>
class AsyncBase {
 public:
  using Work = std::function<Outcome<Result>()>;

 protected:
  // The caller keeps the creation reference; the worker (and the watch) hold their own.
  void start(Operation* self, const char* name, Work work, std::optional<std::chrono::seconds> watch) {
    name_ = name;
    const bool early = next_operation_completes_early();
    self->internal_add_ref();
    run_detached([self, work = std::move(work), early]() mutable {
      Ref<Operation> keep = Ref<Operation>::adopt(self);
      if (!early) keep->wait_for_handler();
      keep->complete(run_work<Result>(work));
    });
    if (watch) {
      self->internal_add_ref();
      run_detached([self, limit = *watch] {
        Ref<Operation> keep = Ref<Operation>::adopt(self);
        keep->watch(limit);
      });
    }
    if (early) wait_until_completed();
  }

  HRESULT put_completed(Operation* self, Handler* handler) {
    if (handler == nullptr) return E_POINTER;
    std::unique_lock lock(mutex_);
    if (handler_set_) {
      lock.unlock();
      record_violation(std::string(name_) + ": Completed handler assigned twice");
      return kIllegalDelegateAssignment;
    }
    handler_set_ = true;
    handler_ = ComPtr<Handler>::copy_from(handler);
    changed_.notify_all();
    if (status_ == abi::AsyncStatus::Started) return S_OK;
    // Completed already: the handler runs now, on the thread that sets it.
    return invoke_handler(self, lock);
  }

  HRESULT get_completed(Handler** handler) {
    if (handler == nullptr) return E_POINTER;
    std::lock_guard lock(mutex_);
    *handler = handler_.get();
    if (*handler) (*handler)->AddRef();
    return S_OK;
  }

  // Before GetResults hands anything out.
  HRESULT check_results() {
    std::lock_guard lock(mutex_);
    if (closed_) return kIllegalMethodCall;
    if (status_ == abi::AsyncStatus::Started) {
      record_violation(std::string(name_) + ": GetResults called before the operation completed");
      return kIllegalMethodCall;
    }
    if (status_ == abi::AsyncStatus::Error) return error_;
    return S_OK;
  }
  Outcome<Result> outcome() {
    std::lock_guard lock(mutex_);
    return outcome_;
  }

 public:
  HRESULT status(abi::AsyncStatus* status) {
    if (status == nullptr) return E_POINTER;
    std::lock_guard lock(mutex_);
    *status = status_;
    return S_OK;
  }
  HRESULT error_code(HRESULT* code) {
    if (code == nullptr) return E_POINTER;
    std::lock_guard lock(mutex_);
    *code = error_;
    return S_OK;
  }
  HRESULT close() {
    std::lock_guard lock(mutex_);
    if (status_ == abi::AsyncStatus::Started) {
      record_violation(std::string(name_) + ": Close called before the operation completed");
      return kIllegalMethodCall;
    }
    closed_ = true;
    return S_OK;
  }

  // What an operation released by everyone still held: its results and its handler.
  void drop_outcome() {
    Outcome<Result> outcome;
    ComPtr<Handler> handler;
    std::lock_guard lock(mutex_);
    std::swap(outcome, outcome_);
    std::swap(handler, handler_);
  }

  void wait_for_handler() {
    // A caller that never sets a handler (it polls, or abandons the operation) is not kept
    // waiting for ever.
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, std::chrono::seconds(2), [&] { return handler_set_; });
  }

  void complete(Outcome<Result> outcome) {
    std::unique_lock lock(mutex_);
    if (status_ != abi::AsyncStatus::Started) return;  // the watch ended it already
    status_ = FAILED(outcome.error) ? abi::AsyncStatus::Error : abi::AsyncStatus::Completed;
    error_ = outcome.error;
    outcome_ = std::move(outcome);
    changed_.notify_all();
    if (handler_) invoke_handler(static_cast<Operation*>(this), lock);
  }

  void watch(std::chrono::seconds limit) {
    std::unique_lock lock(mutex_);
    if (changed_.wait_for(lock, limit, [&] { return status_ != abi::AsyncStatus::Started; })) return;
    lock.unlock();
    record_violation(std::string(name_) + " did not complete within " + std::to_string(limit.count()) +
                     " s: it waits for an event handler that is itself blocked (a synchronous wait "
                     "inside a handler the platform waits for)");
    print_every_thread_stack();
    complete({HRESULT_FROM_WIN32(ERROR_TIMEOUT), {}});
  }

 private:
  // An operation that completes early is usually done before its method returns; one whose
  // work takes long (a slow device) returns started all the same, as the platform's methods
  // never block their caller.
  void wait_until_completed() {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, std::chrono::milliseconds(100), [&] { return status_ != abi::AsyncStatus::Started; });
  }

  // Called with the lock held; runs the handler without it, once.
  HRESULT invoke_handler(Operation* self, std::unique_lock<std::mutex>& lock) {
    if (invoked_) return S_OK;
    invoked_ = true;
    ComPtr<Handler> handler = std::move(handler_);
    const abi::AsyncStatus status = status_;
    lock.unlock();
    handler->Invoke(self, status);
    return S_OK;
  }

  const char* name_ = "";
  std::mutex mutex_;
  std::condition_variable changed_;
  abi::AsyncStatus status_ = abi::AsyncStatus::Started;
  HRESULT error_ = S_OK;
  Outcome<Result> outcome_;
  bool handler_set_ = false;
  bool invoked_ = false;
  bool closed_ = false;
  ComPtr<Handler> handler_;
};

class AsyncAction final
    : public Object<AsyncAction, Threading::Agile, Implements<abi::IAsyncAction>, UnmodelledIAsyncInfo<AsyncAction>>,
      public AsyncBase<AsyncAction, abi::IAsyncActionCompletedHandler, void*> {
 public:
  AsyncAction() : Object("Windows.Foundation.IAsyncAction") {}

  // A new action running `work`; the caller owns the returned reference.
  static abi::IAsyncAction* start(const char* name, std::function<void()> work,
                                  std::optional<std::chrono::seconds> watch = std::nullopt);

  HRESULT STDMETHODCALLTYPE put_Completed(abi::IAsyncActionCompletedHandler* handler) override;
  HRESULT STDMETHODCALLTYPE get_Completed(abi::IAsyncActionCompletedHandler** handler) override;
  HRESULT STDMETHODCALLTYPE GetResults() override;
  HRESULT STDMETHODCALLTYPE get_Id(UINT32* id) override;
  HRESULT STDMETHODCALLTYPE get_Status(abi::AsyncStatus* value) override;
  HRESULT STDMETHODCALLTYPE get_ErrorCode(HRESULT* code) override;
  HRESULT STDMETHODCALLTYPE Close() override;

 private:
  void retire() override { drop_outcome(); }
};

template <class T>
class AsyncOperation final
    : public Object<AsyncOperation<T>, Threading::Agile, Implements<abi::IAsyncOperation<T>>,
                    UnmodelledIAsyncInfo<AsyncOperation<T>>>,
      public AsyncBase<AsyncOperation<T>, abi::IAsyncOperationCompletedHandler<T>, abi::abi_t<T>> {
  using Base = AsyncBase<AsyncOperation<T>, abi::IAsyncOperationCompletedHandler<T>, abi::abi_t<T>>;

 public:
  using Result = abi::abi_t<T>;

  AsyncOperation() : Object<AsyncOperation<T>, Threading::Agile, Implements<abi::IAsyncOperation<T>>,
                            UnmodelledIAsyncInfo<AsyncOperation<T>>>("Windows.Foundation.IAsyncOperation`1") {}

  // A new operation whose work yields the outcome; the caller owns the returned reference.
  static abi::IAsyncOperation<T>* start(const char* name, std::function<Outcome<Result>()> work) {
    auto* operation = new AsyncOperation<T>();
    operation->Base::start(operation, name, std::move(work), std::nullopt);
    return operation;
  }

  HRESULT STDMETHODCALLTYPE put_Completed(abi::IAsyncOperationCompletedHandler<T>* handler) override {
    DOUBLE_ENTER("put_Completed");
    return this->put_completed(this, handler);
  }
  HRESULT STDMETHODCALLTYPE get_Completed(abi::IAsyncOperationCompletedHandler<T>** handler) override {
    DOUBLE_ENTER("get_Completed");
    return this->get_completed(handler);
  }
  HRESULT STDMETHODCALLTYPE GetResults(Result* results) override {
    DOUBLE_ENTER("GetResults");
    if (results == nullptr) return E_POINTER;
    if (HRESULT state = this->check_results(); state != S_OK) return state;
    auto outcome = this->outcome();
    return outcome.results ? outcome.results(results) : E_UNEXPECTED;
  }
  HRESULT STDMETHODCALLTYPE get_Id(UINT32* id) override {
    DOUBLE_ENTER("get_Id");
    return give(id, 1);
  }
  HRESULT STDMETHODCALLTYPE get_Status(abi::AsyncStatus* value) override {
    DOUBLE_ENTER("get_Status");
    return this->status(value);
  }
  HRESULT STDMETHODCALLTYPE get_ErrorCode(HRESULT* code) override {
    DOUBLE_ENTER("get_ErrorCode");
    return this->error_code(code);
  }
  HRESULT STDMETHODCALLTYPE Close() override {
    DOUBLE_ENTER("Close");
    return this->close();
  }

 private:
  void retire() override { this->drop_outcome(); }
};

// Outcomes of operations whose result is one of the double's objects or a plain value.
template <class I, class T>
Outcome<I*> object_outcome(Ref<T> object) {
  return {S_OK, [object](I** out) { return hand_out(object, out); }};
}
template <class V>
Outcome<V> value_outcome(V value) {
  return {S_OK, [value](V* out) {
            *out = value;
            return S_OK;
          }};
}

}  // namespace vexcap::windows_double
