// Fails the run when an export blocks longer than the library's longest promised wait plus a
// margin: it names the call, prints every thread's stack (through gdb where there is one) and
// aborts, so a deadlock ends the run instead of hanging it.
#pragma once

#include <chrono>

#include "stress/stress_state.h"

namespace vexcap::stress {

// The RGB-stopped worker's 20000 ms is the longest wait; slow platform calls come on top.
inline constexpr std::chrono::seconds kCallLimit{30};

void run_watchdog(StressState& state);

}  // namespace vexcap::stress
