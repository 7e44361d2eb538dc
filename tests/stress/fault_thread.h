// The fault thread: what the virtual camera can do to the library, about every 100 ms, each
// fault undone before the next.
#pragma once

#include <cstdint>

#include "platform/virtual/scenario.h"
#include "stress/stress_state.h"

namespace vexcap::stress {

// Runs until the run stops; `group` is the camera it removes and brings back.
void run_fault_thread(StressState& state, const virtual_camera::GroupModel& group, std::uint64_t seed);

}  // namespace vexcap::stress
