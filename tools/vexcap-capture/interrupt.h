// Ctrl-C (SIGINT) and SIGTERM end a capture in order: the stream stops, files in progress are
// finished or removed. A second signal ends the process at once.
#pragma once

namespace vexcap::tool {

// Exit code of a run that was interrupted (the shell's 128 + SIGINT).
inline constexpr int kExitInterrupted = 130;

void catch_interrupts();
bool interrupted();

}  // namespace vexcap::tool
