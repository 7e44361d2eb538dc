// Polls the camera's RGB status every 100 ms on its own thread and reports changes to the
// host's callback. The lock guards the callback, its context and the last status; the callback
// is called with the lock held.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "common/hresult.h"
#include "vexcap/vexcap.h"

namespace vexcap::controls {

class RgbStatusNotifier {
 public:
  // Reads the status; a failed read leaves `status` as it was.
  using StatusReader = std::function<hresult(std::uint32_t& status)>;

  explicit RgbStatusNotifier(StatusReader read_status);
  ~RgbStatusNotifier();  // stops and joins every polling thread
  RgbStatusNotifier(const RgbStatusNotifier&) = delete;
  RgbStatusNotifier& operator=(const RgbStatusNotifier&) = delete;

  // Stores the callback, its context and the current status unless a callback is already
  // registered, then starts a polling thread either way. HR_OUTOFMEMORY when no thread starts.
  hresult start(vexcap_rgb_status_callback callback, void* context);
  // Clears the callback, then waits without limit for the polling threads to end.
  void stop();

 private:
  void poll();

  StatusReader read_status_;
  std::mutex lock_;
  std::condition_variable cleared_;
  vexcap_rgb_status_callback callback_ = nullptr;  // guarded by lock_
  void* context_ = nullptr;                        // guarded by lock_
  std::uint32_t last_status_ = 0;                  // guarded by lock_

  // A registration over a running one starts another thread; all are joined by stop().
  std::mutex threads_lock_;
  std::vector<std::thread> threads_;
};

}  // namespace vexcap::controls
