#include "controls/rgb_status_notifier.h"

#include <chrono>
#include <system_error>
#include <utility>

#include "common/host_callback.h"

namespace vexcap::controls {

namespace {
constexpr std::chrono::milliseconds kPollInterval{100};
}  // namespace

RgbStatusNotifier::RgbStatusNotifier(StatusReader read_status)
    : read_status_(std::move(read_status)) {}

RgbStatusNotifier::~RgbStatusNotifier() { stop(); }

hresult RgbStatusNotifier::start(vexcap_rgb_status_callback callback, void* context) {
  {
    std::lock_guard<std::mutex> guard(lock_);
    if (callback_ == nullptr) {
      callback_ = callback;
      context_ = context;
      read_status_(last_status_);
    }
  }
  try {
    std::lock_guard<std::mutex> guard(threads_lock_);
    threads_.emplace_back(&RgbStatusNotifier::poll, this);
  } catch (const std::system_error&) {
    return HR_OUTOFMEMORY;
  }
  return HR_OK;
}

void RgbStatusNotifier::stop() {
  {
    std::lock_guard<std::mutex> guard(lock_);
    callback_ = nullptr;
  }
  cleared_.notify_all();
  std::vector<std::thread> threads;
  {
    std::lock_guard<std::mutex> guard(threads_lock_);
    threads.swap(threads_);
  }
  for (std::thread& thread : threads) thread.join();
}

void RgbStatusNotifier::poll() {
  std::uint32_t status = 0;
  for (;;) {
    read_status_(status);
    std::unique_lock<std::mutex> guard(lock_);
    if (status != last_status_ && callback_ != nullptr) {
      HostCallbackScope marked;
      callback_(status != 0, context_);
      last_status_ = status;
    }
    // The poll interval, cut short when the callback is cleared.
    if (cleared_.wait_for(guard, kPollInterval, [this] { return callback_ == nullptr; })) return;
  }
}

}  // namespace vexcap::controls
