#include "interrupt.h"

#include <csignal>

namespace vexcap::tool {
namespace {

volatile std::sig_atomic_t g_signal = 0;

extern "C" void on_interrupt(int signal) {
  if (g_signal == 0) g_signal = signal;
  std::signal(signal, SIG_DFL);
}

}  // namespace

void catch_interrupts() {
  std::signal(SIGINT, on_interrupt);
  std::signal(SIGTERM, on_interrupt);
}

bool interrupted() { return g_signal != 0; }

int interrupt_exit_code() {
  const int signal = g_signal;
  if (signal == 0) return 0;
  return signal == SIGTERM ? kExitTerminated : signal == SIGINT ? kExitInterrupted : 128 + signal;
}

}  // namespace vexcap::tool
