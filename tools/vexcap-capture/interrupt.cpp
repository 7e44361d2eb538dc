#include "interrupt.h"

#include <csignal>

namespace vexcap::tool {
namespace {

volatile std::sig_atomic_t g_interrupted = 0;

extern "C" void on_interrupt(int signal) {
  g_interrupted = 1;
  std::signal(signal, SIG_DFL);
}

}  // namespace

void catch_interrupts() {
  std::signal(SIGINT, on_interrupt);
  std::signal(SIGTERM, on_interrupt);
}

bool interrupted() { return g_interrupted != 0; }

}  // namespace vexcap::tool
