// The host side of the stress run: threads calling random exports with valid and invalid
// arguments, and the frame and event callbacks the library calls back.
#pragma once

#include <cstdint>
#include <mutex>
#include <random>
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

// A host thread's rare vexcap_exit or vexcap_init, racing everything else.
void exit_or_init(StressState& state, std::mt19937_64& rng);
// Ends the library and starts it again every 0.5 to 1.5 s while the hosts go on calling.
void run_lifecycle_thread(StressState& state, std::uint64_t seed);

// Gives back the records that callbacks kept, from this (another) thread.
void return_late_frames(StressState& state);

}  // namespace vexcap::stress
