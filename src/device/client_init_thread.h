// Initializes one capture client on a short-lived thread that the request thread waits for
// at most 10000 ms, so a platform initialization that hangs cannot hold the library.
#pragma once

#include <cstdint>
#include <functional>

#include "common/hresult.h"

namespace vexcap::device {

constexpr std::uint32_t kClientInitTimeoutMs = 10000;

// Runs `initialize` on its own thread. Returns its result, or 0x800705B4 when it did not end
// within the limit (the thread then finishes on its own and its result is dropped), or
// E_OUTOFMEMORY when the thread cannot start. An exception `initialize` throws ends it with
// E_OUTOFMEMORY or E_FAIL. Whatever `initialize` captures must stay valid after a time-out:
// capture shared ownership.
// `between_slices` runs on the waiting thread between the slices of its wait.
hresult run_client_initialization(std::function<hresult()> initialize,
                                  const std::function<void()>& between_slices = {},
                                  std::uint32_t timeout_ms = kClientInitTimeoutMs);

}  // namespace vexcap::device
