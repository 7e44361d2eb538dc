#include "api/client_init_thread.h"

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

}  // namespace

hresult run_client_initialization(std::function<hresult()> initialize, std::uint32_t timeout_ms) {
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
  const bool finished = record->done.wait_for(lock, std::chrono::milliseconds(timeout_ms),
                                              [&] { return record->finished; });
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
