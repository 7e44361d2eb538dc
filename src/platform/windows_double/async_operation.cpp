#include "platform/windows_double/async_operation.h"

#include <atomic>

#include "platform/windows_double/double_settings.h"

namespace vexcap::windows_double {

bool next_operation_completes_early() {
  // A 64-bit mix of the seed and the operation's number: the order is the same on every run
  // with the same seed, and varies from operation to operation.
  static std::atomic<std::uint64_t> counter{0};
  std::uint64_t x = settings().seed * 0x9E3779B97F4A7C15ull + ++counter;
  x ^= x >> 31;
  x *= 0xBF58476D1CE4E5B9ull;
  x ^= x >> 29;
  return (x & 1) != 0;
}

abi::IAsyncAction* AsyncAction::start(const char* name, std::function<void()> work,
                                      std::optional<std::chrono::seconds> watch) {
  auto* action = new AsyncAction();
  action->AsyncBase::start(action, name, [work = std::move(work)]() -> Outcome<void*> {
    work();
    return {};
  }, watch);
  return action;
}

HRESULT AsyncAction::put_Completed(abi::IAsyncActionCompletedHandler* handler) {
  DOUBLE_ENTER("put_Completed");
  return put_completed(this, handler);
}

HRESULT AsyncAction::get_Completed(abi::IAsyncActionCompletedHandler** handler) {
  DOUBLE_ENTER("get_Completed");
  return get_completed(handler);
}

HRESULT AsyncAction::GetResults() {
  DOUBLE_ENTER("GetResults");
  return check_results();
}

HRESULT AsyncAction::get_Id(UINT32* id) {
  DOUBLE_ENTER("get_Id");
  return give(id, 1);
}

HRESULT AsyncAction::get_Status(abi::AsyncStatus* value) {
  DOUBLE_ENTER("get_Status");
  return status(value);
}

HRESULT AsyncAction::get_ErrorCode(HRESULT* code) {
  DOUBLE_ENTER("get_ErrorCode");
  return error_code(code);
}

HRESULT AsyncAction::Close() {
  DOUBLE_ENTER("Close");
  return close();
}

}  // namespace vexcap::windows_double
