// Runs one export under the watchdog's eye: the call is visible while in flight, its latency
// is kept per export, and a result outside the export's documented set is counted and reported.
#pragma once

#include <cstdio>
#include <vector>
#include <pthread.h>

#include "stress/stress_state.h"

namespace vexcap::stress {

// Every mapped result code; what an export with valid arguments may answer.
inline const std::vector<int> kMappedCodes = {VEXCAP_OK,
                                              VEXCAP_E_FAIL,
                                              VEXCAP_E_INVALID_STATE,
                                              VEXCAP_E_TIMEOUT,
                                              VEXCAP_E_ACCESS_DENIED,
                                              VEXCAP_E_INVALID_ARG,
                                              VEXCAP_E_NO_INTERFACE};

class InFlightClaim {
 public:
  InFlightClaim(StressState& state, const char* name) : slot_(nullptr) {
    for (CallInFlight& slot : state.in_flight) {
      const char* expected = nullptr;
      if (slot.name.compare_exchange_strong(expected, name)) {
        slot.started_us = now_us();
        slot.thread = static_cast<std::uint64_t>(pthread_self());
        slot_ = &slot;
        return;
      }
    }
  }
  ~InFlightClaim() {
    if (slot_ != nullptr) slot_->name = nullptr;
  }
  InFlightClaim(const InFlightClaim&) = delete;
  InFlightClaim& operator=(const InFlightClaim&) = delete;

 private:
  CallInFlight* slot_;
};

template <typename Call>
int timed_call(StressState& state, const char* name, const std::vector<int>& documented, Call call) {
  ExportStats& stats = state.exports.at(name);
  const std::int64_t start = now_us();
  int result;
  {
    InFlightClaim claim(state, name);
    result = call();
  }
  const std::int64_t took = now_us() - start;
  stats.calls.fetch_add(1, std::memory_order_relaxed);
  std::int64_t longest = stats.longest_us.load(std::memory_order_relaxed);
  while (took > longest && !stats.longest_us.compare_exchange_weak(longest, took)) {
  }
  bool known = false;
  for (int code : documented) known = known || code == result;
  if (!known) {
    if (stats.undocumented.fetch_add(1) < 5) std::fprintf(stderr, "%s answered %d\n", name, result);
  }
  return result;
}

}  // namespace vexcap::stress
