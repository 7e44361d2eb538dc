// The process-wide diagnostic log: one line per call, "%c: %s\n" on standard output.
//
// Silent until a capture client exists (the lock's lifetime follows the clients), then off
// until the host switches output on through the diagnostic-log device property.
#pragma once

#include <cstdint>

namespace vexcap::log {

// The format strings are the library's own texts ("%ws", "%I64u", "%lu" with 32-bit
// arguments ...); they print the same lines on every C runtime. `line` names the call site
// in the source only and is not printed.
// (No printf format checking: the texts use Windows' conversions on purpose.)
void write(std::uint64_t unused, int line, char level, const char* format, ...);

// Lifetime coupling with the capture clients.
void client_constructed();  // ready, and output switched off
void client_destroyed();    // silent again

// The diagnostic-log device property: output on for 0x501, off otherwise; only while ready.
void set_output_from_property(std::uint32_t value);

bool is_ready();

// Where lines go instead of stdout (tests); null restores stdout. Not for hosts.
using Sink = void (*)(char level, const char* message, void* context);
void set_sink_for_testing(Sink sink, void* context);

}  // namespace vexcap::log

// Log at a call site; the level is 'D', 'I', 'W' or 'E'.
#define VXLOG(level, ...) ::vexcap::log::write(0, __LINE__, (level), __VA_ARGS__)
