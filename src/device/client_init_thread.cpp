#include "device/client_init_thread.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <system_error>
#include <utility>

#include "common/worker_thread.h"
#include "log/log.h"

namespace vexcap::device {

namespace {

// The initialization's own answer; an exception never leaves its thread.
hresult initialize_guarded(const std::function<hresult()>& initialize) {
  try {
    return initialize();
  } catch (const std::bad_alloc&) {
    VXLOG('E', "Client initialization failed: out of memory");
    return HR_OUTOFMEMORY;
  } catch (const std::exception& error) {
    VXLOG('E', "Client initialization failed: %s", error.what());
    return HR_FAIL;
  }
}

constexpr auto kSlice = std::chrono::milliseconds(10);

}  // namespace

hresult run_client_initialization(std::function<hresult()> initialize,
                                  const std::function<void()>& between_slices, std::uint32_t timeout_ms) {
  // Shared with the thread: an abandoned one still writes it after a time-out.
  auto result = std::make_shared<hresult>(HR_ACTIVATION_TIMEOUT);
  std::optional<WorkerThread> thread;
  try {
    thread.emplace(
        [result, initialize = std::move(initialize)] { *result = initialize_guarded(initialize); });
  } catch (const std::system_error& error) {
    VXLOG('E', "Failed creating init_thread: %d", error.code().value());
    return HR_OUTOFMEMORY;
  }

  // Waited for in slices: between them the request thread answers messages sent to it.
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
  for (;;) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (thread->join_for(std::clamp(left, std::chrono::milliseconds(0), kSlice))) return *result;
    if (std::chrono::steady_clock::now() >= deadline) break;
    if (between_slices) between_slices();
  }
  VXLOG('E', "Time out waiting for init thread to finish");
  return HR_TIMEOUT;  // the thread is abandoned here and keeps running on its own
}

}  // namespace vexcap::device
