#include "device/client_init_thread.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <utility>

#include "log/log.h"

namespace vexcap::device {

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

}  // namespace

hresult run_client_initialization(std::function<hresult()> initialize,
                                  const std::function<void()>& between_slices, std::uint32_t timeout_ms) {
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

  // Waited for in slices: between them the request thread answers messages sent to it.
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
  std::unique_lock<std::mutex> lock(record->mutex);
  bool finished = false;
  for (;;) {
    const auto slice = std::min(deadline, std::chrono::steady_clock::now() + std::chrono::milliseconds(10));
    finished = record->done.wait_until(lock, slice, [&] { return record->finished; });
    if (finished || std::chrono::steady_clock::now() >= deadline) break;
    lock.unlock();
    if (between_slices) between_slices();
    lock.lock();
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

}  // namespace vexcap::device
