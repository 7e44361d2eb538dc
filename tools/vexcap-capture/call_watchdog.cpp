#include "call_watchdog.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "output_file.h"

namespace vexcap::tool {
namespace {

std::atomic<long long> g_limit_ms{30000};

}  // namespace

void set_call_time_limit(std::chrono::milliseconds limit) { g_limit_ms = limit.count(); }

CallWatchdog::CallWatchdog(const char* call) {
  const std::chrono::milliseconds limit(g_limit_ms.load());
  thread_ = std::thread([this, call = std::string(call), limit] {
    std::unique_lock<std::mutex> lock(mutex_);
    if (returned_.wait_for(lock, limit, [this] { return done_; })) return;
    std::fprintf(stderr,
                 "\nvexcap-capture: %s did not return within %.1f s; giving up.\n"
                 "  The library retries a camera that fails to initialize without limit; check that\n"
                 "  the camera works and no other application holds it (see --call-timeout).\n",
                 call.c_str(), static_cast<double>(limit.count()) / 1000.0);
    remove_unfinished_files();
    std::fflush(stderr);
    std::_Exit(kExitCallHung);  // the library's request thread is stuck: nothing can be closed
  });
}

CallWatchdog::~CallWatchdog() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    done_ = true;
  }
  returned_.notify_one();
  thread_.join();
}

}  // namespace vexcap::tool
