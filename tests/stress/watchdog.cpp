#include "stress/watchdog.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#if defined(__linux__)
#include <unistd.h>
#endif

namespace vexcap::stress {

namespace {

void print_every_stack() {
#if defined(__linux__)
  const std::string command = "gdb -batch -p " + std::to_string(getpid()) +
                              " -ex 'thread apply all bt' 1>&2 2>/dev/null";
  if (std::system(command.c_str()) != 0) std::fprintf(stderr, "(no stacks: gdb did not run)\n");
#endif
}

}  // namespace

void run_watchdog(StressState& state) {
  const std::int64_t limit_us = std::chrono::duration_cast<std::chrono::microseconds>(kCallLimit).count();
  while (!state.finished.load()) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    const std::int64_t now = now_us();
    for (CallInFlight& slot : state.in_flight) {
      const char* name = slot.name.load();
      if (name == nullptr || now - slot.started_us.load() < limit_us) continue;
      std::fprintf(stderr, "\nWATCHDOG: %s has been blocked for %lld ms on thread %llx\n", name,
                   static_cast<long long>((now - slot.started_us.load()) / 1000),
                   static_cast<unsigned long long>(slot.thread.load()));
      print_every_stack();
      std::fflush(stderr);
      std::abort();
    }
  }
}

}  // namespace vexcap::stress
