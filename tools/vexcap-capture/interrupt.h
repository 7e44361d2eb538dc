// Ctrl-C (SIGINT) and SIGTERM end every command in order: a capture stops its stream and
// finishes its files, a check prints what it found so far, a watch ends. The exit code then
// tells which signal it was, as the shell would (128 + the signal's number). A second signal
// ends the process at once.
#pragma once

namespace vexcap::tool {

inline constexpr int kExitInterrupted = 130;  // SIGINT
inline constexpr int kExitTerminated = 143;   // SIGTERM

void catch_interrupts();
bool interrupted();
// 128 + the first signal's number; 0 when none came.
int interrupt_exit_code();

}  // namespace vexcap::tool
