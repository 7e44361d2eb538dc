#include "api/client_init_thread.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <new>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "log/log.h"

namespace vexcap::api {

namespace {

// Shared by the waiting side and the thread: the thread may still write it after a time-out.
struct InitRecord {
  std::mutex mutex;  // guards result and finished
  std::condition_variable done;
  // Stands when the thread never gets to store its own result.
  hresult result = HR_ACTIVATION_TIMEOUT;
  bool finished = false;
};

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

constexpr auto kExitCheck = std::chrono::milliseconds(20);

}  // namespace

hresult run_client_initialization(std::function<hresult()> initialize, std::uint32_t timeout_ms,
                                  const ManualResetEvent* exit_requested) {
  auto record = std::make_shared<InitRecord>();
  std::thread thread;
  try {
    thread = std::thread([record, initialize = std::move(initialize)] {
      const hresult result = initialize_guarded(initialize);
      std::lock_guard<std::mutex> lock(record->mutex);
      record->result = result;
      record->finished = true;
      record->done.notify_all();
    });
  } catch (const std::system_error& error) {
    VXLOG('E', "Failed creating init_thread: %d", error.code().value());
    return HR_OUTOFMEMORY;
  }

  std::unique_lock<std::mutex> lock(record->mutex);
  // Waited for in short slices when vexcap_exit may end the wait.
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
  bool finished = false;
  while (!finished && std::chrono::steady_clock::now() < deadline) {
    const auto slice = exit_requested ? std::min(deadline, std::chrono::steady_clock::now() + kExitCheck) : deadline;
    finished = record->done.wait_until(lock, slice, [&] { return record->finished; });
    if (!finished && exit_requested && exit_requested->is_set()) {
      lock.unlock();
      thread.detach();  // it finishes on its own, as after a time-out
      return HR_ABORT;
    }
  }
  if (!finished) {
    lock.unlock();
    VXLOG('E', "Time out waiting for init thread to finish");
    thread.detach();  // it keeps running on its own
    return HR_TIMEOUT;
  }
  const hresult result = record->result;
  lock.unlock();
  thread.join();
  return result;
}

}  // namespace vexcap::api
