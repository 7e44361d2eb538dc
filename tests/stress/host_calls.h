// The host side of the stress run: threads calling random exports with valid and invalid
// arguments, and the frame and event callbacks the library calls back.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "stress/stress_state.h"

namespace vexcap::stress {

// The 33 exports, as the table prints them.
const std::vector<std::string>& export_names();

// The callbacks report into this run.
void attach_callbacks(StressState& state);

// Calls random exports until the run stops.
void run_host_thread(StressState& state, std::uint64_t seed, std::mutex& subscription_mutex,
                     std::vector<vexcap_device_subscription*>& subscriptions);

// Gives back the records that callbacks kept, from this (another) thread.
void return_late_frames(StressState& state);

}  // namespace vexcap::stress
