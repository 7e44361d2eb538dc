// A library call that never returns (a camera that keeps failing to initialize makes
// vexcap_device_open retry forever) must not hang the tool: past the limit the watchdog names
// the call, removes unfinished output files and ends the process.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace vexcap::tool {

// Exit code of a run the watchdog ended.
inline constexpr int kExitCallHung = 3;

void set_call_time_limit(std::chrono::milliseconds limit);

class CallWatchdog {
 public:
  explicit CallWatchdog(const char* call);
  ~CallWatchdog();
  CallWatchdog(const CallWatchdog&) = delete;
  CallWatchdog& operator=(const CallWatchdog&) = delete;

 private:
  std::mutex mutex_;
  std::condition_variable returned_;
  bool done_ = false;
  std::thread thread_;
};

// Runs one library call under a watchdog and gives its result.
template <typename Call>
int guarded(const char* name, Call&& call) {
  CallWatchdog watchdog(name);
  return call();
}

}  // namespace vexcap::tool
